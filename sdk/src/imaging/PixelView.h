#pragma once

#include "imaging/PixelFormats.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Pixels in memory that somebody else keeps alive.
struct PixelView {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0; ///< bytes that may be read
    PixelFormatEnums format = PixelFormat_Undefined;
    std::uint32_t pfncCode = 0; ///< for messages about formats that `format` cannot name
    std::uint32_t width = 0, height = 0;
    std::size_t stride = 0; ///< bytes from row to row; 0 when rows follow one another bit by bit
};

/// The same to write into; rows start on bytes.
struct PixelTarget {
    std::uint8_t* data = nullptr;
    PixelFormatEnums format = PixelFormat_Undefined;
    std::uint32_t width = 0, height = 0;
    std::size_t stride = 0;
};

/// The format's layout when the view can be read from end to end.
/// @throws Exception (ImageConversion) for an unknown format or an empty image, (InvalidBuffer) when the
///         pixels are fewer than the geometry says.
const PixelLayout& RequireReadable(const PixelView& view, const char* purpose);

} // namespace Norvane::Imaging
