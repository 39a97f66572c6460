#pragma once

#include "norvane/genapi/NodeMapFactory.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace Norvane::Transport {

enum class ChunkByteOrder { BigEndian, LittleEndian };

struct ChunkLayout {
    std::map<std::uint64_t, GenApi::ChunkView> chunks; ///< without the image itself
    bool valid = true; ///< false when the chunks do not fill the payload behind the image
};

/// Splits a received payload into its chunks. Each chunk is followed by its 32-bit identifier and 32-bit
/// length, so they are read from the end; what stands at the start is the image, as a chunk or bare (GigE
/// Vision 2.0, 25.7, big endian; USB3 Vision 1.0, 5.5, little endian).
/// @param imageBytes bytes of the image at the start of the payload
ChunkLayout ParseChunks(const std::uint8_t* payload, std::size_t size, std::size_t imageBytes,
                        ChunkByteOrder order);

} // namespace Norvane::Transport
