#pragma once

#include "video/Encoder.h"

#include <vector>

struct SwsContext;

namespace Norvane::Video {

/// Motion JPEG and H.264 by libavcodec. Colours: JPEG's full-range BT.601 for Motion JPEG, limited-range
/// BT.709 for H.264, both tagged so. An H.264 video is even in both directions: an odd image gets its last
/// column and row twice.
class CodecEncoder : public Encoder {
public:
    CodecEncoder(const VideoFormat& format, bool isGrey);
    ~CodecEncoder() override;

    void Describe(AVCodecParameters& parameters) const override;
    void Encode(PixelSource::Rows rows, std::int64_t index, const PacketSink& sink) override;
    void Finish(const PacketSink& sink) override;

private:
    void Release();
    void OpenMotionJpeg();
    void OpenH264();
    void OpenCodec(const AVCodec* codec, AVDictionary** options);
    void PrepareConversion(bool isGrey);
    /// A frame that the codec's threads do not read any more.
    AVFrame* FreeFrame();
    void ConvertToYuv(PixelSource::Rows rows, AVFrame& frame);
    void RepeatLastColumnAndRow(AVFrame& frame) const;
    void Send(AVFrame* frame, const PacketSink& sink);

    VideoFormat m_format;
    int m_bytesPerPixel;
    std::vector<std::uint8_t> m_lastRows; // of the frame at hand
    AVCodecContext* m_codec = nullptr;
    std::vector<AVFrame*> m_frames; // as many as the codec holds at a time, and one
    AVPacket* m_packet = nullptr;
    SwsContext* m_toYuv = nullptr;
};

/// libx264's preset for a stream of so many pixels a second on this machine: the most thorough one that takes
/// about half of the processors, so that display and camera keep theirs.
const char* H264Preset(double pixelsPerSecond, unsigned int processors);

/// libavcodec's JPEG quantiser scale, 1 to 31, for the quality 1 to 100 that JPEG programs use.
int JpegQuantiserScale(int quality);

} // namespace Norvane::Video
