#include "Child.h"
#include "SceneImages.h"
#include "Sections.h"

#include "norvane/video/NorVideo.h"
#include "video/CodecEncoder.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

using namespace Norvane::Video;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kRate = 30;
constexpr int kQuality = 75;
constexpr int kBitrate = 2'000'000;

enum class Kind { Uncompressed, MotionJpeg, H264 };

/// Reads frame after frame into one buffer, as ffmpeg does, and appends it.
template <class Option>
void WriteOurs(const std::string& source, const std::string& target, Option option) {
    option.frameRate = kRate;
    option.width = kWidth;
    option.height = kHeight;
    std::vector<char> pixels(std::size_t{kWidth} * kHeight * 3);
    const Norvane::ImagePtr image =
        Norvane::Image::Create(kWidth, kHeight, 0, 0, Norvane::PixelFormat_BGR8, pixels.data());
    std::ifstream frames(source, std::ios::binary);
    NorVideo video;
    video.Open(target.c_str(), option);
    while (frames.read(pixels.data(), static_cast<std::streamsize>(pixels.size()))) {
        video.Append(image);
    }
    video.Close();
}

Run RunOurs(Kind kind, const std::string& source, const std::string& target) {
    return RunChild([&] {
        switch (kind) {
        case Kind::Uncompressed:
            return WriteOurs(source, target, AVIOption{});
        case Kind::MotionJpeg: {
            MJPGOption option;
            option.quality = kQuality;
            return WriteOurs(source, target, option);
        }
        case Kind::H264: {
            H264Option option;
            option.bitrate = kBitrate;
            return WriteOurs(source, target, option);
        }
        }
    });
}

Run RunFfmpeg(Kind kind, const std::string& source, const std::string& target) {
    std::vector<std::string> command = {"ffmpeg",
                                        "-nostdin",
                                        "-y",
                                        "-v",
                                        "error",
                                        "-f",
                                        "rawvideo",
                                        "-pix_fmt",
                                        "bgr24",
                                        "-s",
                                        std::to_string(kWidth) + "x" + std::to_string(kHeight),
                                        "-r",
                                        std::to_string(kRate),
                                        "-i",
                                        source,
                                        "-sws_flags",
                                        "bilinear+accurate_rnd"};
    const auto add = [&command](const std::vector<std::string>& more) {
        command.insert(command.end(), more.begin(), more.end());
    };
    const std::string bitrate = std::to_string(kBitrate);
    switch (kind) {
    case Kind::Uncompressed:
        add({"-c:v", "rawvideo", "-pix_fmt", "bgr24", target + ".avi"});
        break;
    case Kind::MotionJpeg:
        add({"-c:v", "mjpeg", "-threads", "0", "-pix_fmt", "yuvj420p", "-q:v",
             std::to_string(JpegQuantiserScale(kQuality)), target + ".avi"});
        break;
    case Kind::H264:
        add({"-c:v",
             "libx264",
             "-threads",
             "0",
             "-pix_fmt",
             "yuv420p",
             "-preset",
             H264Preset(double{kRate} * kWidth * kHeight, std::max(std::thread::hardware_concurrency(), 1U)),
             "-b:v",
             bitrate,
             "-maxrate",
             bitrate,
             "-bufsize",
             bitrate,
             "-g",
             std::to_string(kRate),
             "-bf",
             "0",
             "-movflags",
             "frag_keyframe+empty_moov+default_base_moof",
             target + ".mp4"});
        break;
    }
    return RunCommand(command);
}

/// One kind of video; false when a run failed.
bool MeasureKind(Kind kind, const char* name, const std::string& folder, int frames, int pairs) {
    const std::string source = folder + "/frames.bgr";
    std::vector<double> ours, theirs, speed, memory, theirMemory;
    for (int pair = 0; pair < pairs; ++pair) {
        Run own;
        Run peer;
        // Who goes first changes, so that neither profits from the other's warm caches.
        for (const bool ownTurn : {pair % 2 == 0, pair % 2 != 0}) {
            const std::string target = folder + "/video";
            (ownTurn ? own : peer) =
                ownTurn ? RunOurs(kind, source, target) : RunFfmpeg(kind, source, target);
            std::filesystem::remove(target + ".avi");
            std::filesystem::remove(target + ".mp4");
        }
        if (!own.succeeded || !peer.succeeded) {
            std::printf("%s: a run failed\n", name);
            return false;
        }
        ours.push_back(frames / own.seconds);
        theirs.push_back(frames / peer.seconds);
        speed.push_back(peer.seconds / own.seconds);
        memory.push_back(own.peakMegabytes);
        theirMemory.push_back(peer.peakMegabytes);
    }
    std::printf("%-14s | %8.1f %8.1f %6.2f | %8.0f %8.0f\n", name, Median(theirs), Median(ours),
                Median(speed), Median(theirMemory), Median(memory));
    return true;
}

} // namespace

bool MeasureVideos(const std::string& folder, int frames, int pairs) {
    const std::string source = folder + "/frames.bgr";
    // In a process of its own, so that the drawn frames count in nobody's memory.
    const Run drawn = RunChild([&] {
        std::ofstream file(source, std::ios::binary);
        const SceneImages scene("BGR8", kWidth, kHeight, frames, kRate);
        for (int i = 0; i < frames; ++i) {
            const auto& pixels = scene.Pixels(i);
            file.write(reinterpret_cast<const char*>(pixels.data()),
                       static_cast<std::streamsize>(pixels.size()));
        }
        if (!file.flush()) {
            throw std::runtime_error("no room for the frames in " + source);
        }
    });
    if (!drawn.succeeded) {
        return false;
    }
    std::printf("videos of %d frames of %d x %d, medians of %d pairs of runs\n", frames, kWidth, kHeight,
                pairs);
    std::printf("%-14s | %8s %8s %6s | %8s %8s\n", "", "ffmpeg/s", "ours/s", "ratio", "ffmpeg MB", "ours MB");
    bool good = MeasureKind(Kind::Uncompressed, "uncompressed", folder, frames, pairs);
    good = MeasureKind(Kind::MotionJpeg, "Motion JPEG", folder, frames, pairs) && good;
    good = MeasureKind(Kind::H264, "H.264", folder, frames, pairs) && good;
    std::filesystem::remove(source);
    return good;
}
