#pragma once

#include "norvane/genapi/NodeMapFactory.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The payload of a camera with chunks: data, then its 32-bit ID and 32-bit length, one after the other, the
/// image first (GigE Vision 2.0, section 13.5: big-endian; USB3 Vision 1.0, section 5.3: little-endian).
namespace ChunkLayout {

inline constexpr std::uint32_t kImageId = 0x00000001;
inline constexpr std::size_t kTrailer = 8; ///< bytes of ID and length

using Chunks = std::vector<std::pair<std::uint32_t, std::vector<std::uint8_t>>>;

/// Bytes that Append will add behind an image.
std::size_t Size(const Chunks& chunks);
/// Closes the image of `imageBytes` at `payload` and writes the chunks behind it. @returns the payload's
/// bytes
std::size_t Append(std::uint8_t* payload, std::size_t imageBytes, const Chunks& chunks, bool bigEndian);
/// Walks a payload from its end. Empty when it is cut off or a length leads outside.
std::map<std::uint64_t, GenApi::ChunkView> Parse(const std::uint8_t* payload, std::size_t bytes,
                                                 bool bigEndian);

} // namespace ChunkLayout
} // namespace Norvane::Transport::Emulator
