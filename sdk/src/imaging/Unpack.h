#pragma once

#include "imaging/PixelFormats.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Where samples lie: the first one `bitOffset` bits after `bytes`; nothing at or after `end` is read.
struct PackedSamples {
    const std::uint8_t* bytes;
    const std::uint8_t* end;
    std::size_t bitOffset; ///< only Packing::Bits and the Gev packings take others than multiples of 8
    Packing packing;
    unsigned bits; ///< of one sample
};

/// Unpacks `count` samples to T's full range (std::uint8_t or std::uint16_t).
template <class T>
void UnpackFullScale(const PackedSamples& source, std::size_t count, T* out);

/// Unpacks `count` samples as the numbers they are.
void UnpackNumbers(const PackedSamples& source, std::size_t count, std::uint16_t* out);

} // namespace Norvane::Imaging
