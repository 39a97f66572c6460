#include "video/CodecEncoder.h"

#include "video/FfmpegError.h"

extern "C" {
#include <libavutil/dict.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <thread>

namespace Norvane::Video {

namespace {

const AVCodec* FindEncoder(const char* name) {
    const AVCodec* codec = avcodec_find_encoder_by_name(name);
    if (!codec) {
        throw Exception(Error::NotImplemented, std::string("FFmpeg's encoder \"") + name +
                                                   "\" is missing; install the full libavcodec package");
    }
    return codec;
}

int RoundUpToEven(int length) {
    return length + length % 2;
}

unsigned int Processors() {
    return std::max(std::thread::hardware_concurrency(), 1U);
}

} // namespace

const char* H264Preset(double pixelsPerSecond, unsigned int processors) {
    // Pixels a second and processor that each preset encodes, measured with 1920 x 1080 camera scenes.
    struct Preset {
        const char* name;
        double pixelsPerSecond;
    };
    constexpr Preset kPresets[] = {{"medium", 19e6}, {"veryfast", 36e6}, {"superfast", 56e6}};
    constexpr double kShare = 0.5;
    for (const Preset& preset : kPresets) {
        if (pixelsPerSecond <= preset.pixelsPerSecond * processors * kShare) {
            return preset.name;
        }
    }
    return "ultrafast";
}

int JpegQuantiserScale(int quality) {
    // The IJG's quality scales the standard's tables by 50 / q below 50 and by 2 - q / 50 above; libavcodec
    // scales them by its quantiser / 8.
    const double q = std::clamp(quality, 1, 100);
    const double scale = q < 50 ? 50.0 / q : 2.0 - q / 50.0;
    return std::clamp(static_cast<int>(std::lround(8.0 * scale)), 1, 31);
}

CodecEncoder::CodecEncoder(const VideoFormat& format, bool isGrey)
    : m_format(format), m_bytesPerPixel(isGrey ? 1 : 3) {
    try {
        if (format.codec == Codec::MotionJpeg) {
            OpenMotionJpeg();
        } else {
            OpenH264();
        }
        PrepareConversion(isGrey);
    } catch (...) {
        Release();
        throw;
    }
}

CodecEncoder::~CodecEncoder() {
    Release();
}

void CodecEncoder::Release() {
    avcodec_free_context(&m_codec); // first: its threads read the frames
    sws_freeContext(m_toYuv);
    av_packet_free(&m_packet);
    for (AVFrame* frame : m_frames) {
        av_frame_free(&frame);
    }
    m_frames.clear();
}

void CodecEncoder::OpenMotionJpeg() {
    const AVCodec* codec = FindEncoder("mjpeg");
    m_codec = avcodec_alloc_context3(codec);
    if (!m_codec) {
        throw std::bad_alloc();
    }
    m_codec->width = m_format.width;
    m_codec->height = m_format.height;
    m_codec->pix_fmt = AV_PIX_FMT_YUVJ420P;
    m_codec->color_range = AVCOL_RANGE_JPEG;
    m_codec->colorspace = AVCOL_SPC_BT470BG;
    m_codec->flags |= AV_CODEC_FLAG_QSCALE;
    m_codec->global_quality = JpegQuantiserScale(m_format.quality) * FF_QP2LAMBDA;
    m_codec->qmin = 1;
    OpenCodec(codec, nullptr);
}

void CodecEncoder::OpenH264() {
    const AVCodec* codec = FindEncoder("libx264");
    m_codec = avcodec_alloc_context3(codec);
    if (!m_codec) {
        throw std::bad_alloc();
    }
    m_codec->width = RoundUpToEven(m_format.width);
    m_codec->height = RoundUpToEven(m_format.height);
    m_codec->pix_fmt = AV_PIX_FMT_YUV420P;
    m_codec->color_range = AVCOL_RANGE_MPEG;
    m_codec->colorspace = AVCOL_SPC_BT709;
    m_codec->color_primaries = AVCOL_PRI_BT709;
    m_codec->color_trc = AVCOL_TRC_BT709;
    m_codec->bit_rate = m_format.bitrate;
    m_codec->rc_max_rate = m_format.bitrate;
    m_codec->rc_buffer_size = m_format.bitrate;
    const double rate = av_q2d(m_format.frameRate);
    // A key frame a second: what is in the file can be played up to the last one.
    m_codec->gop_size = std::clamp(static_cast<int>(std::lround(rate)), 1, 250);
    m_codec->max_b_frames = 0;
    m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const double pixelsPerSecond = rate * m_codec->width * m_codec->height;
    AVDictionary* options = nullptr;
    const std::string preset = H264Preset(pixelsPerSecond, Processors());
    if (preset == "medium") {
        // Frames that the encoder looks ahead at are not in the file when the program dies: a third of a
        // second, where the preset would take 40 of them. The faster ones take 10 or none.
        av_dict_set_int(&options, "rc-lookahead", std::clamp(static_cast<int>(rate / 3), 1, 40), 0);
    }
    av_dict_set(&options, "preset", preset.c_str(), 0);
    const std::unique_ptr<AVDictionary*, void (*)(AVDictionary**)> owner(&options, av_dict_free);
    OpenCodec(codec, &options);
}

void CodecEncoder::OpenCodec(const AVCodec* codec, AVDictionary** options) {
    m_codec->time_base = av_inv_q(m_format.frameRate);
    m_codec->framerate = m_format.frameRate;
    m_codec->thread_count = 0; // as many as there are processors
    // Each thread holds a frame of its own back. Where that adds up to a part of a second that would be
    // missed when the program dies, the threads share a frame instead.
    constexpr double kLongestDelay = 0.25; // seconds
    if (Processors() > kLongestDelay * av_q2d(m_format.frameRate)) {
        m_codec->thread_type = FF_THREAD_SLICE;
    }
    CheckFfmpeg(avcodec_open2(m_codec, codec, options), std::string("Starting the encoder ") + codec->name +
                                                            " for " + std::to_string(m_format.width) + " x " +
                                                            std::to_string(m_format.height));
}

void CodecEncoder::PrepareConversion(bool isGrey) {
    m_packet = av_packet_alloc();
    if (!m_packet) {
        throw std::bad_alloc();
    }
    m_toYuv = sws_getContext(m_format.width, m_format.height, isGrey ? AV_PIX_FMT_GRAY8 : AV_PIX_FMT_BGR24,
                             m_format.width, m_format.height, AV_PIX_FMT_YUV420P,
                             SWS_BILINEAR | SWS_ACCURATE_RND, nullptr, nullptr, nullptr);
    if (!m_toYuv) {
        throw Exception(Error::ImageConversion, "Video frames of " + std::to_string(m_format.width) + " x " +
                                                    std::to_string(m_format.height) +
                                                    " cannot be converted to YUV");
    }
    const int matrix = m_format.codec == Codec::MotionJpeg ? SWS_CS_ITU601 : SWS_CS_ITU709;
    const int fullRange = m_format.codec == Codec::MotionJpeg ? 1 : 0;
    const int unity = 1 << 16;
    sws_setColorspaceDetails(m_toYuv, sws_getCoefficients(SWS_CS_DEFAULT), 1, sws_getCoefficients(matrix),
                             fullRange, 0, unity, unity);
}

void CodecEncoder::Describe(AVCodecParameters& parameters) const {
    CheckFfmpeg(avcodec_parameters_from_context(&parameters, m_codec), "Describing the video stream");
}

AVFrame* CodecEncoder::FreeFrame() {
    for (AVFrame* frame : m_frames) {
        if (av_frame_is_writable(frame)) {
            return frame;
        }
    }
    AVFrame* frame = av_frame_alloc();
    if (!frame) {
        throw std::bad_alloc();
    }
    m_frames.push_back(frame);
    frame->format = m_codec->pix_fmt;
    frame->width = m_codec->width;
    frame->height = m_codec->height;
    frame->color_range = m_codec->color_range;
    frame->colorspace = m_codec->colorspace;
    const int result = av_frame_get_buffer(frame, 0);
    if (result < 0) {
        av_frame_free(&m_frames.back());
        m_frames.pop_back();
    }
    CheckFfmpeg(result, "Allocating a video frame");
    return frame;
}

void CodecEncoder::Encode(PixelSource::Rows rows, std::int64_t index, const PacketSink& sink) {
    AVFrame* frame = FreeFrame();
    ConvertToYuv(rows, *frame);
    RepeatLastColumnAndRow(*frame);
    frame->pts = index;
    frame->quality = m_codec->global_quality; // the codec takes a fixed quantiser from the frame alone
    Send(frame, sink);
}

void CodecEncoder::ConvertToYuv(PixelSource::Rows rows, AVFrame& frame) {
    // libswscale takes whole vectors and so reads past the end of a row. Behind the image there may be no
    // memory: the last rows come out of a copy that has room behind it.
    constexpr int kReadPast = 64; // bytes
    const int copied = 2 + kReadPast / std::max(rows.stride, 1);
    const int direct = std::max(m_format.height - copied, 0) / 2 * 2; // a chroma row spans two
    const auto offset = static_cast<std::ptrdiff_t>(direct) * rows.stride;
    const auto bytes =
        static_cast<std::size_t>((m_format.height - direct - 1)) * static_cast<std::size_t>(rows.stride) +
        static_cast<std::size_t>(m_format.width * m_bytesPerPixel);
    m_lastRows.resize(bytes + kReadPast);
    std::memcpy(m_lastRows.data(), rows.data + offset, bytes);
    const auto convert = [&](const std::uint8_t* data, int first, int count) {
        const std::uint8_t* source[4] = {data, nullptr, nullptr, nullptr};
        const int strides[4] = {rows.stride, 0, 0, 0};
        CheckFfmpeg(sws_scale(m_toYuv, source, strides, first, count, frame.data, frame.linesize),
                    "Converting a frame to YUV");
    };
    if (direct > 0) {
        convert(rows.data, 0, direct);
    }
    convert(m_lastRows.data(), direct, m_format.height - direct);
}

void CodecEncoder::RepeatLastColumnAndRow(AVFrame& frame) const {
    std::uint8_t* luma = frame.data[0];
    const std::ptrdiff_t stride = frame.linesize[0];
    if (m_codec->width != m_format.width) {
        for (int y = 0; y < m_format.height; ++y) {
            luma[y * stride + m_format.width] = luma[y * stride + m_format.width - 1];
        }
    }
    if (m_codec->height != m_format.height) {
        std::memcpy(luma + m_format.height * stride, luma + (m_format.height - 1) * stride,
                    static_cast<std::size_t>(m_codec->width));
    }
}

void CodecEncoder::Finish(const PacketSink& sink) {
    Send(nullptr, sink);
}

void CodecEncoder::Send(AVFrame* frame, const PacketSink& sink) {
    CheckFfmpeg(avcodec_send_frame(m_codec, frame), "Encoding a video frame");
    for (;;) {
        const int result = avcodec_receive_packet(m_codec, m_packet);
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        CheckFfmpeg(result, "Encoding a video frame");
        m_packet->duration = 1;
        sink(*m_packet);
        av_packet_unref(m_packet);
    }
}

} // namespace Norvane::Video
