#include "video/Encoder.h"

#include "video/CodecEncoder.h"
#include "video/RawEncoder.h"

namespace Norvane::Video {

std::unique_ptr<Encoder> Encoder::Create(const VideoFormat& format, bool isGrey) {
    if (format.codec == Codec::Uncompressed) {
        return std::make_unique<RawEncoder>(format, isGrey);
    }
    return std::make_unique<CodecEncoder>(format, isGrey);
}

} // namespace Norvane::Video
