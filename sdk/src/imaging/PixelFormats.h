#pragma once

#include "norvane/PixelFormat.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// How one component lies in memory.
enum class Packing : std::uint8_t {
    Byte,       ///< one byte each
    SignedByte, ///< one byte each, two's complement; zero is mid grey
    Word,       ///< 16 bits little endian, the value in the low bits
    Bits,       ///< PFNC's "p": significantBits-wide fields, lowest bit first, without gaps
    Gev10,      ///< GigE Vision's 10Packed: two values in three bytes, the low bits in the middle one
    Gev12,      ///< GigE Vision's 12Packed, likewise
    Dword10,    ///< three 10-bit fields in 32 bits, the first one lowest
    Bits565,    ///< 5, 6 and 5 bits in 16, the first one lowest
    BytePlanes, ///< three planes of bytes
    WordPlanes, ///< three planes of 16 bits little endian
};

/// Which components a pixel has, and in which order they follow one another.
enum class Components : std::uint8_t {
    One,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    YCbCr,
    CbYCr,
    YCbYCr,   ///< 4:2:2
    CbYCrY,   ///< 4:2:2
    YYCbYYCr, ///< 4:1:1
    CbYYCrYY, ///< 4:1:1
};

/// How luma and chroma become RGB: ITU-R BT.601, BT.709 or BT.2020, full or studio range (16 to 235 of 256).
enum class ColorMatrix : std::uint8_t { None, Full601, Studio601, Studio709, Studio2020 };

struct PixelLayout {
    PixelFormatInfo info;
    Packing packing;
    Components components;
    ColorMatrix matrix;
};

/// Null for a format the library does not know.
const PixelLayout* FindLayout(PixelFormatEnums format) noexcept;

/// Components of one row, and bytes they take; a group of pixels that shares chroma counts as a whole.
std::size_t ComponentsPerRow(const PixelLayout& layout, std::size_t width) noexcept;
std::size_t RowBytes(const PixelLayout& layout, std::size_t width) noexcept;
/// Bytes of an image whose rows are `stride` bytes apart, the last one without padding; with stride 0 pixels
/// follow one another without regard to rows. Saturates instead of overflowing.
std::uint64_t BytesNeeded(const PixelLayout& layout, std::uint32_t width, std::uint32_t height,
                          std::size_t stride) noexcept;
/// 1, or 3 for the planar formats.
unsigned PlaneCount(const PixelLayout& layout) noexcept;

} // namespace Norvane::Imaging
