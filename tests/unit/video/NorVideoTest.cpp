#include "../ErrorOf.h"
#include "VideoFixture.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>

using namespace Norvane::Video;
using Norvane::Error;
using Norvane::Test::ErrorOf;

namespace {

enum class Kind { Avi, Mjpg, H264 };

struct Sort {
    Kind kind;
    const char* name;
    const char* extension;
    const char* codec; // as ffprobe names it
    int tolerance;     // of a flat patch's pixel values
};

constexpr Sort kSorts[] = {{Kind::Avi, "Avi", ".avi", "rawvideo", 0},
                           {Kind::Mjpg, "Mjpg", ".avi", "mjpeg", 8},
                           {Kind::H264, "H264", ".mp4", "h264", 12}};

template <class Option>
Option Sized(int width, int height, float rate) {
    Option option;
    option.frameRate = rate;
    option.width = static_cast<unsigned int>(width);
    option.height = static_cast<unsigned int>(height);
    return option;
}

void Open(NorVideo& video, Kind kind, const std::string& path, int width, int height, float rate = 30.0F,
          unsigned int bitrate = 2'000'000) {
    if (kind == Kind::Avi) {
        auto option = Sized<AVIOption>(width, height, rate);
        video.Open(path.c_str(), option);
    } else if (kind == Kind::Mjpg) {
        auto option = Sized<MJPGOption>(width, height, rate);
        option.quality = 95;
        video.Open(path.c_str(), option);
    } else {
        auto option = Sized<H264Option>(width, height, rate);
        option.bitrate = bitrate;
        video.Open(path.c_str(), option);
    }
}

class EveryVideo : public VideoFixture, public ::testing::WithParamInterface<Sort> {};

TEST_P(EveryVideo, PlaysBackFrameForFrameInItsOwnColours) {
    constexpr int kFrames = 12;
    for (const auto& [width, height] : {std::pair{320, 240}, {321, 243}}) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        const std::string name = std::to_string(width);
        NorVideo video;
        Open(video, GetParam().kind, Path(name), width, height, 25.5F);
        for (int i = 0; i < kFrames; ++i) {
            video.Append(Frame(width, height, i).image);
        }
        video.Close();

        const std::string file = Path(name) + GetParam().extension;
        EXPECT_EQ(Probe(file, "codec_name"), GetParam().codec);
        EXPECT_EQ(Probe(file, "r_frame_rate"), "51/2");
        EXPECT_EQ(CountFrames(file), kFrames);
        const bool isEven = GetParam().kind == Kind::H264; // by a row and a column more
        const int shownWidth = isEven ? (width + 1) / 2 * 2 : width;
        EXPECT_EQ(Probe(file, "width"), std::to_string(shownWidth));
        EXPECT_EQ(Probe(file, "height"), std::to_string(isEven ? (height + 1) / 2 * 2 : height));
        for (const int index : {0, 7, kFrames - 1}) {
            SCOPED_TRACE(index);
            const Picture sent = Frame(width, height, index);
            const std::vector<std::uint8_t> seen = Decode(file, index);
            ASSERT_GE(seen.size(), sent.bgr.size());
            const int bar = height / 2 + index * 4 % (height / 2 - 4) + 2;
            // The lowest place tells a skewed image.
            for (const auto& [x, y] :
                 {std::pair{40, 60}, {120, 60}, {200, 60}, {280, 60}, {100, bar}, {300, 236}}) {
                for (int c = 0; c < 3; ++c) {
                    EXPECT_NEAR(seen[static_cast<std::size_t>((y * shownWidth + x) * 3 + c)],
                                sent.At(x, y)[c], GetParam().tolerance)
                        << x << ", " << y << ", component " << c;
                }
            }
        }
        if (GetParam().kind == Kind::H264) {
            EXPECT_EQ(Probe(file, "color_space"), "bt709");
            EXPECT_EQ(Probe(file, "color_range"), "tv");
        }
    }
    EXPECT_EQ(Files().size(), 2U);
}

/// Pixels of one value, with forbidden memory right behind the last one.
class PixelsAtTheEdge {
public:
    PixelsAtTheEdge(std::size_t size, std::uint8_t value) : m_room((size + kPage - 1) / kPage * kPage) {
        m_memory = static_cast<std::uint8_t*>(
            mmap(nullptr, m_room + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(m_memory + m_room, kPage, PROT_NONE);
        pixels = m_memory + m_room - size;
        std::memset(pixels, value, size);
    }
    ~PixelsAtTheEdge() { munmap(m_memory, m_room + kPage); }
    PixelsAtTheEdge(const PixelsAtTheEdge&) = delete;
    PixelsAtTheEdge& operator=(const PixelsAtTheEdge&) = delete;

    std::uint8_t* pixels = nullptr;

private:
    static constexpr std::size_t kPage = 4096;
    std::size_t m_room;
    std::uint8_t* m_memory = nullptr;
};

TEST_P(EveryVideo, ReadsNothingBehindTheImage) {
    int files = 0;
    for (const auto& [width, height] : {std::pair{640, 480}, {641, 481}, {46, 3}, {40, 40}}) {
        for (const auto format : {Norvane::PixelFormat_BGR8, Norvane::PixelFormat_Mono8}) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
            const std::size_t bytes = format == Norvane::PixelFormat_BGR8 ? 3 : 1;
            const PixelsAtTheEdge edge(static_cast<std::size_t>(width * height) * bytes, 150);
            const std::string name = "edge" + std::to_string(files++);
            NorVideo video;
            Open(video, GetParam().kind, Path(name), width, height);
            video.Append(Norvane::Image::Create(static_cast<std::uint64_t>(width),
                                                static_cast<std::uint64_t>(height), 0, 0, format,
                                                edge.pixels));
            video.Close();
            const std::vector<std::uint8_t> seen = Decode(Path(name) + GetParam().extension, 0);
            ASSERT_GE(seen.size(), static_cast<std::size_t>(width * height) * 3);
            EXPECT_GE(*std::min_element(seen.begin(), seen.end()), 150 - GetParam().tolerance);
            EXPECT_LE(*std::max_element(seen.begin(), seen.end()), 150 + GetParam().tolerance);
        }
    }
}

TEST_P(EveryVideo, TakesPacketsOfMegabytes) {
    constexpr int kFrames = 8;
    NorVideo video;
    Open(video, GetParam().kind, Path("large"), 1280, 720, 2.0F, 40'000'000);
    std::mt19937 noise(1);
    Picture picture = Frame(1280, 720, 0);
    for (int i = 0; i < kFrames; ++i) {
        std::generate(picture.bgr.begin() + 1280 * 360 * 3, picture.bgr.end(),
                      [&] { return static_cast<std::uint8_t>(noise()); });
        video.Append(picture.image);
    }
    video.Close();
    const std::string file = Path("large") + GetParam().extension;
    EXPECT_GT(std::filesystem::file_size(file), 2'000'000U) << "too small to show anything";
    EXPECT_EQ(CountFrames(file), kFrames);
    EXPECT_EQ(Decode(file, kFrames - 1).size(), 1280U * 720U * 3U);
}

TEST_P(EveryVideo, PlaysUpToTheLastSecondWhenTheProgramDies) {
    for (const int rate : {4, 10, 30}) {
        SCOPED_TRACE(rate);
        // Just before a key frame is due, when most is still in memory.
        const int frames = 4 * rate - 1;
        const std::string name = "killed" + std::to_string(rate);
        const pid_t child = fork();
        if (child == 0) {
            NorVideo video;
            Open(video, GetParam().kind, Path(name), 320, 240, static_cast<float>(rate));
            for (int i = 0; i < frames; ++i) {
                video.Append(Frame(320, 240, i).image);
            }
            raise(SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string file = Path(name) + GetParam().extension;
        EXPECT_GE(CountFrames(file), frames - rate);
        EXPECT_EQ(Decode(file, 5).size(), 320U * 240U * 3U);
    }
}

TEST_P(EveryVideo, PlaysWhatFittedWhenTheDiskIsFull) {
    const pid_t child = fork();
    if (child == 0) {
        // A limit of the file's size fails a write as a full disk does.
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{200'000, 200'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        NorVideo video;
        Open(video, GetParam().kind, Path("full"), 128, 96, 10.0F, 1'000'000);
        const bool failed = ErrorOf([&] {
                                for (int i = 0; i < 2000; ++i) {
                                    video.Append(Frame(128, 96, std::rand() % 1000).image);
                                }
                            }) == Error::Io;
        const bool closed = ErrorOf([&] { video.Close(); }) == Error::Success;
        _exit(failed && closed ? 0 : failed ? 2 : 3);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "2: closing failed once more, 3: the full disk was not told";
    EXPECT_GE(CountFrames(Path("full") + GetParam().extension), 3);
}

TEST_F(VideoFixture, NothingIsLeftOfAVideoThatHasNoFrame) {
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1200, 1200}; // room for the header
        setrlimit(RLIMIT_FSIZE, &limit);
        NorVideo video;
        Open(video, Kind::H264, Path("header"), 320, 240);
        for (int i = 0; i < 3; ++i) {
            video.Append(Frame(320, 240, i).image);
        }
        _exit(ErrorOf([&] { video.Close(); }) == Error::Io ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "closing says what was lost";
    EXPECT_TRUE(Files().empty());
}

TEST_P(EveryVideo, SaysWhatItCannotDo) {
    NorVideo video;
    EXPECT_EQ(ErrorOf([&] { video.Append(Frame(64, 48, 0).image); }), Error::NotInitialized);
    EXPECT_EQ(ErrorOf([&] { Open(video, GetParam().kind, Path("missing/a"), 64, 48); }), Error::Io);
    EXPECT_EQ(ErrorOf([&] { Open(video, GetParam().kind, Path("a"), 0, 48); }), Error::InvalidParameter);
    EXPECT_EQ(ErrorOf([&] { Open(video, GetParam().kind, Path("a"), 64, 48, 0.0F); }),
              Error::InvalidParameter);

    Open(video, GetParam().kind, Path("a"), 64, 48);
    video.Append(Frame(64, 48, 0).image);
    EXPECT_EQ(ErrorOf([&] { video.Append(Frame(64, 64, 0).image); }), Error::InvalidParameter);
    video.Append(Frame(64, 48, 1).image); // and goes on
    video.Close();
    EXPECT_EQ(CountFrames(Path("a") + GetParam().extension), 2);
    video.Close();

    Open(video, GetParam().kind, Path("fast"), 64, 48, 1e20F); // as fast as a file can say
    video.Append(Frame(64, 48, 0).image);
    video.Append(Frame(64, 48, 1).image);
    video.Close();
    EXPECT_LT(std::stod(Probe(Path("fast") + GetParam().extension, "duration")), 1.0);

    Open(video, GetParam().kind, Path("empty"), 64, 48);
    video.Close();
    EXPECT_FALSE(std::filesystem::exists(Path("empty") + GetParam().extension))
        << "a file without a frame plays nowhere";
}

INSTANTIATE_TEST_SUITE_P(Sorts, EveryVideo, ::testing::ValuesIn(kSorts),
                         [](const auto& sort) { return std::string(sort.param.name); });

TEST_P(EveryVideo, KeepsItsFramesAtAnyRate) {
    for (const float rate : {std::numeric_limits<float>::min(), 1e-6F, std::numeric_limits<float>::max()}) {
        const std::string name = "at " + std::to_string(std::log10(rate));
        NorVideo video;
        Open(video, GetParam().kind, Path(name), 64, 48, rate);
        for (int i = 0; i < 5; ++i) {
            video.Append(Frame(64, 48, i).image);
        }
        video.Close();
        EXPECT_EQ(CountFrames(Path(name + GetParam().extension)), 5) << rate;
    }
}

TEST_F(VideoFixture, MotionJpegHasTheQualityThatWasAskedFor) {
    std::srand(1);
    Picture picture = Frame(320, 240, 0);
    for (std::uint8_t& value : picture.bgr) {
        value = static_cast<std::uint8_t>(value + std::rand() % 40);
    }
    std::vector<std::uintmax_t> sizes;
    for (const unsigned int quality : {20U, 50U, 75U, 100U}) {
        auto option = Sized<MJPGOption>(320, 240, 30.0F);
        option.quality = quality;
        NorVideo video;
        video.Open(Path("quality").c_str(), option);
        for (int i = 0; i < 5; ++i) {
            video.Append(picture.image);
        }
        video.Close();
        sizes.push_back(std::filesystem::file_size(Path("quality.avi")));
    }
    for (std::size_t i = 1; i < sizes.size(); ++i) {
        EXPECT_GT(sizes[i], sizes[i - 1]);
    }
}

TEST_F(VideoFixture, PartsStayBelowTheLimitAndPlayByThemselves) {
    for (const Kind kind : {Kind::Avi, Kind::Mjpg}) {
        SCOPED_TRACE(kind == Kind::Avi ? "AVI" : "MJPG");
        const std::string name = kind == Kind::Avi ? "avi" : "mjpg";
        const int frames = kind == Kind::Avi ? 20 : 900; // drawn frames make small JPEGs
        NorVideo video;
        video.SetMaximumFileSize(1);
        Open(video, kind, Path(name), 320, 240);
        for (int i = 0; i < frames; ++i) {
            video.Append(Frame(320, 240, i).image);
        }
        video.Close();
        int seen = 0;
        int parts = 0;
        for (const std::string& file : Files()) {
            if (file.find("/" + name + "-") == std::string::npos) {
                continue;
            }
            ++parts;
            EXPECT_LE(std::filesystem::file_size(file), 1'000'000U) << file;
            if (kind == Kind::Avi) { // of 230 400 bytes a frame
                EXPECT_EQ(CountFrames(file), 4) << file;
            }
            seen += CountFrames(file);
        }
        EXPECT_GE(parts, 2);
        EXPECT_EQ(seen, frames);
        EXPECT_EQ(Decode(Path(name + "-0001.avi"), 0).size(), 320U * 240U * 3U);
    }
}

TEST_F(VideoFixture, ANameIsTakenByOneFileAndByNumberedParts) {
    for (const unsigned int megabytes : {0U, 1U}) {
        const std::string name = Path("taken" + std::to_string(megabytes));
        EXPECT_FALSE(NorVideo::Exists(name.c_str()));
        NorVideo video;
        video.SetMaximumFileSize(megabytes);
        Open(video, megabytes ? Kind::H264 : Kind::Mjpg, name, 64, 64);
        EXPECT_TRUE(NorVideo::Exists(name.c_str())) << video.GetFileName();
    }
}

TEST_F(VideoFixture, AFolderThatVanishesBetweenPartsEndsTheVideo) {
    for (const Kind kind : {Kind::Avi, Kind::Mjpg}) {
        std::filesystem::create_directory(Path("gone"));
        NorVideo video;
        video.SetMaximumFileSize(1);
        Open(video, kind, Path("gone/a"), 320, 240);
        video.Append(Frame(320, 240, 0).image);
        std::filesystem::remove_all(Path("gone"));
        std::string reason;
        for (int i = 1; i < 900; ++i) {
            try {
                video.Append(Frame(320, 240, i).image);
            } catch (const Norvane::Exception& error) {
                reason = error.what();
            }
        }
        EXPECT_NE(reason.find("takes no more frames"), std::string::npos) << reason;
        EXPECT_EQ(ErrorOf([&] { video.Close(); }), Error::Success);
    }
}

TEST_F(VideoFixture, H264HoldsItsBitrate) {
    constexpr int kFrames = 240;
    constexpr unsigned int kBitrate = 800'000;
    NorVideo video;
    Open(video, Kind::H264, Path("rate"), 320, 240, 30.0F, kBitrate);
    std::srand(1);
    Picture picture = Frame(320, 240, 0);
    for (int i = 0; i < kFrames; ++i) {
        // Noise that no encoder can foresee, so that there is something to hold down.
        for (std::size_t at = picture.bgr.size() / 2; at < picture.bgr.size(); at += 3) {
            picture.bgr[at] = static_cast<std::uint8_t>(100 + std::rand() % 40);
        }
        video.Append(picture.image);
    }
    video.Close();
    const double seconds = kFrames / 30.0;
    const double measured = static_cast<double>(std::filesystem::file_size(Path("rate.mp4"))) * 8 / seconds;
    EXPECT_NEAR(measured / kBitrate, 1.0, 0.1);
}

} // namespace
