#include "transport/emulator/ChunkLayout.h"

#include <algorithm>

namespace Norvane::Transport::Emulator::ChunkLayout {
namespace {

void Put32(std::uint8_t* at, std::uint32_t value, bool bigEndian) {
    for (unsigned i = 0; i < 4; ++i) {
        at[i] = static_cast<std::uint8_t>(value >> 8 * (bigEndian ? 3 - i : i));
    }
}

std::uint32_t Get32(const std::uint8_t* at, bool bigEndian) {
    std::uint32_t value = 0;
    for (unsigned i = 0; i < 4; ++i) {
        value |= std::uint32_t{at[i]} << 8 * (bigEndian ? 3 - i : i);
    }
    return value;
}

} // namespace

std::size_t Size(const Chunks& chunks) {
    std::size_t size = kTrailer;
    for (const auto& [id, data] : chunks) {
        size += data.size() + kTrailer;
    }
    return size;
}

std::size_t Append(std::uint8_t* payload, std::size_t imageBytes, const Chunks& chunks, bool bigEndian) {
    std::uint8_t* at = payload + imageBytes;
    const auto close = [&](std::uint32_t id, std::size_t length) {
        Put32(at, id, bigEndian);
        Put32(at + 4, static_cast<std::uint32_t>(length), bigEndian);
        at += kTrailer;
    };
    close(kImageId, imageBytes);
    for (const auto& [id, data] : chunks) {
        at = std::copy(data.begin(), data.end(), at);
        close(id, data.size());
    }
    return static_cast<std::size_t>(at - payload);
}

std::map<std::uint64_t, GenApi::ChunkView> Parse(const std::uint8_t* payload, std::size_t bytes,
                                                 bool bigEndian) {
    std::map<std::uint64_t, GenApi::ChunkView> chunks;
    while (bytes > 0) {
        if (bytes < kTrailer) {
            return {};
        }
        const std::uint32_t id = Get32(payload + bytes - 8, bigEndian);
        const std::uint32_t length = Get32(payload + bytes - 4, bigEndian);
        bytes -= kTrailer;
        if (length > bytes) {
            return {};
        }
        bytes -= length;
        chunks[id] = {payload + bytes, length};
    }
    return chunks;
}

} // namespace Norvane::Transport::Emulator::ChunkLayout
