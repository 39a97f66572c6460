#pragma once

#include "video/PixelSource.h"
#include "video/VideoFormat.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <functional>
#include <memory>

namespace Norvane::Video {

using PacketSink = std::function<void(AVPacket&)>;

/// Makes packets out of rows of pixels. Time stamps count frames. Owned by the writer, used by its thread.
class Encoder {
public:
    virtual ~Encoder() = default;

    /// What the container must know of the stream.
    virtual void Describe(AVCodecParameters& parameters) const = 0;
    /// Encodes frame number `index`; packets may come later than their frame. @throws Exception.
    virtual void Encode(PixelSource::Rows rows, std::int64_t index, const PacketSink& sink) = 0;
    /// Hands out what is still inside. The encoder takes no frame after that.
    virtual void Finish(const PacketSink& sink) = 0;

    /// @throws Exception when this machine's FFmpeg lacks the codec or refuses the size.
    static std::unique_ptr<Encoder> Create(const VideoFormat& format, bool isGrey);
};

} // namespace Norvane::Video
