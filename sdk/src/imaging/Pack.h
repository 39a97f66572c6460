#pragma once

#include "imaging/PixelFormats.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Writes `count` numbers as a bit packing (Bits, Gev10 or Gev12) stores them, from a byte's first bit on;
/// bits left over in the last byte are zero. The reverse of UnpackNumbers.
void PackNumbers(const std::uint16_t* numbers, std::size_t count, Packing packing, unsigned bits,
                 std::uint8_t* out);

} // namespace Norvane::Imaging
