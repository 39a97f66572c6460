#include "imaging/Pack.h"

namespace Norvane::Imaging {
namespace {

void PackBits(const std::uint16_t* numbers, std::size_t count, unsigned bits, std::uint8_t* out) {
    std::uint32_t pending = 0;
    unsigned held = 0;
    for (std::size_t i = 0; i < count; ++i) {
        pending |= std::uint32_t{numbers[i]} << held;
        for (held += bits; held >= 8; held -= 8) {
            *out++ = static_cast<std::uint8_t>(pending);
            pending >>= 8;
        }
    }
    if (held != 0) {
        *out = static_cast<std::uint8_t>(pending);
    }
}

/// Two numbers in three bytes: high bits, both low bits, high bits.
void PackPairs(const std::uint16_t* numbers, std::size_t count, unsigned bits, std::uint8_t* out) {
    const unsigned low = bits - 8;
    const unsigned lowMask = (1U << low) - 1;
    for (std::size_t i = 0; i < count; i += 2, out += 3) {
        const unsigned first = numbers[i];
        const bool pair = i + 1 < count;
        const unsigned second = pair ? numbers[i + 1] : 0;
        out[0] = static_cast<std::uint8_t>(first >> low);
        out[1] = static_cast<std::uint8_t>((first & lowMask) | (second & lowMask) << 4);
        if (pair) {
            out[2] = static_cast<std::uint8_t>(second >> low);
        }
    }
}

} // namespace

void PackNumbers(const std::uint16_t* numbers, std::size_t count, Packing packing, unsigned bits,
                 std::uint8_t* out) {
    if (packing == Packing::Bits) {
        PackBits(numbers, count, bits, out);
    } else {
        PackPairs(numbers, count, bits, out);
    }
}

} // namespace Norvane::Imaging
