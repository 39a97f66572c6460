#pragma once

#include "video/Encoder.h"

#include <vector>

namespace Norvane::Video {

/// Uncompressed frames: grey (Y800) or BGR, rows from the top, each packet lying over the pixels themselves.
class RawEncoder : public Encoder {
public:
    RawEncoder(const VideoFormat& format, bool isGrey);

    void Describe(AVCodecParameters& parameters) const override;
    void Encode(PixelSource::Rows rows, std::int64_t index, const PacketSink& sink) override;
    void Finish(const PacketSink&) override {}

private:
    VideoFormat m_format;
    bool m_isGrey;
    int m_rowBytes;                   // rows on their way to the container lie without padding
    std::vector<std::uint8_t> m_rows; // used for images whose rows are padded
};

} // namespace Norvane::Video
