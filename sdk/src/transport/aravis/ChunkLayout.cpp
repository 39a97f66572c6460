#include "transport/aravis/ChunkLayout.h"

namespace Norvane::Transport {
namespace {

constexpr std::size_t kTrailerSize = 8;

std::uint32_t Get32(const std::uint8_t* bytes, ChunkByteOrder order) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = (value << 8) | bytes[order == ChunkByteOrder::BigEndian ? i : 3 - i];
    }
    return value;
}

} // namespace

ChunkLayout ParseChunks(const std::uint8_t* payload, std::size_t size, std::size_t imageBytes,
                        ChunkByteOrder order) {
    ChunkLayout layout;
    std::size_t end = size;
    while (end > imageBytes) {
        if (end < kTrailerSize) {
            layout.valid = false;
            break;
        }
        const std::uint32_t id = Get32(payload + end - 8, order);
        const std::uint32_t length = Get32(payload + end - 4, order);
        if (length > end - kTrailerSize) {
            layout.valid = false;
            break;
        }
        const std::size_t start = end - kTrailerSize - length;
        if (start < imageBytes) {
            // Only the image may reach in here, and then it begins the payload.
            layout.valid = layout.valid && start == 0;
            break;
        }
        layout.chunks.emplace(id, GenApi::ChunkView{payload + start, length});
        end = start;
    }
    return layout;
}

} // namespace Norvane::Transport
