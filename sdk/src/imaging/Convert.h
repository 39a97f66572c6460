#pragma once

#include "imaging/PixelView.h"
#include "norvane/Image.h"

namespace Norvane::Imaging {

/// Whether ConvertPixels can write `format`: unpacked mono, Bayer, RGB and BGR of 8 to 16 bits.
bool IsConversionTarget(PixelFormatEnums format) noexcept;

/// Converts `source` into `target`, which has the same width and height; equal formats are copied. Spread
/// over the row workers; working memory is kept from call to call.
/// @throws Exception (ImageConversion) for a pair of formats that cannot be converted or sizes that differ,
///         (InvalidBuffer) when the pixels are fewer than the geometry says.
void ConvertPixels(const PixelView& source, const PixelTarget& target, ColorProcessingAlgorithm algorithm);

} // namespace Norvane::Imaging
