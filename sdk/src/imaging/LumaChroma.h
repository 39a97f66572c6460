#pragma once

#include "imaging/PixelFormats.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Blue, green and red as multiples of luma and chroma, in units of 2^-14; the numbers that mean no luma and
/// no chroma; and how many bits lie below a sample's number.
struct LumaChromaFactors {
    std::int64_t black, middle;
    int below;
    std::int64_t luma, cbBlue, cbGreen, crGreen, crRed;
};

/// Turns one row of luma and chroma into blue, green and red in turn, `pixels` of each. `in` holds the row's
/// components in the order that `components` names, of which a chroma sample serves all pixels of its group.
/// The result is rounded, to 8 or 16 bits full scale.
void LumaChromaToBgr(const std::uint8_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     std::uint8_t* out);
/// The same from samples of `bits` bits, 8 to 12, which are the uppermost of 16; what lies below them is
/// ignored. A byte is rounded once, at the end: the matrix doubles what a chroma sample would lose before it.
void LumaChromaToBgr(const std::uint16_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     unsigned bits, std::uint8_t* out);
/// The same, to 16 bits.
void LumaChromaToBgr(const std::uint16_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     unsigned bits, std::uint16_t* out);

} // namespace Norvane::Imaging
