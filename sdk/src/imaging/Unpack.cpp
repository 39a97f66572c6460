#include "imaging/Unpack.h"

#include <algorithm>
#include <cstring>

namespace Norvane::Imaging {
namespace {

/// Spreads a number of `bits` bits over T's range by repeating it below itself, or drops its low bits.
template <class T>
T FullScale(unsigned value, unsigned bits) {
    constexpr unsigned kDigits = 8 * sizeof(T);
    if (bits >= kDigits) {
        return static_cast<T>(value >> (bits - kDigits));
    }
    unsigned shift = kDigits - bits;
    unsigned result = value << shift;
    while (shift >= bits) {
        shift -= bits;
        result |= value << shift;
    }
    return static_cast<T>(result | value >> (bits - shift));
}

unsigned Load16(const std::uint8_t* bytes) {
    return bytes[0] | unsigned{bytes[1]} << 8;
}

/// The `index`-th sample as a number.
unsigned SampleAt(const PackedSamples& s, std::size_t index) {
    switch (s.packing) {
    case Packing::Byte:
    case Packing::BytePlanes:
        return s.bytes[s.bitOffset / 8 + index];
    case Packing::SignedByte:
        return s.bytes[s.bitOffset / 8 + index] ^ 0x80U;
    case Packing::Word:
    case Packing::WordPlanes:
        return std::min(Load16(s.bytes + s.bitOffset / 8 + 2 * index), (1U << s.bits) - 1);
    case Packing::Bits: {
        const std::size_t bit = s.bitOffset + index * s.bits;
        const std::uint8_t* byte = s.bytes + bit / 8;
        unsigned word = *byte;
        for (unsigned i = 1; i < (bit % 8 + s.bits + 7) / 8; ++i) {
            word |= unsigned{byte[i]} << (8 * i);
        }
        return word >> (bit % 8) & ((1U << s.bits) - 1);
    }
    case Packing::Gev10:
    case Packing::Gev12: {
        const std::size_t position = s.bitOffset / 12 + index;
        const std::uint8_t* group = s.bytes + position / 2 * 3;
        const unsigned low = group[1] >> (position % 2 ? 4 : 0) & (s.packing == Packing::Gev10 ? 3U : 15U);
        return unsigned{group[position % 2 ? 2 : 0]} << (s.bits - 8) | low;
    }
    case Packing::Dword10: {
        const std::uint8_t* pixel = s.bytes + s.bitOffset / 8 + index / 3 * 4;
        return (Load16(pixel) | Load16(pixel + 2) << 16) >> (10 * (index % 3)) & 0x3FF;
    }
    case Packing::Bits565: {
        const unsigned pixel = Load16(s.bytes + s.bitOffset / 8 + index / 3 * 2);
        return index % 3 == 0 ? pixel & 31 : index % 3 == 1 ? pixel >> 5 & 63 : pixel >> 11;
    }
    }
    return 0;
}

unsigned BitsAt(const PackedSamples& s, std::size_t index) {
    return s.packing == Packing::Bits565 && index % 3 != 1 ? 5 : s.bits;
}

} // namespace

template <class T>
void UnpackFullScale(const PackedSamples& source, std::size_t count, T* out) {
    if (source.packing == Packing::Byte && sizeof(T) == 1) {
        std::memcpy(out, source.bytes + source.bitOffset / 8, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = FullScale<T>(SampleAt(source, i), BitsAt(source, i));
    }
}

template void UnpackFullScale(const PackedSamples&, std::size_t, std::uint8_t*);
template void UnpackFullScale(const PackedSamples&, std::size_t, std::uint16_t*);

void UnpackNumbers(const PackedSamples& source, std::size_t count, std::uint16_t* out) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = static_cast<std::uint16_t>(SampleAt(source, i));
    }
}

} // namespace Norvane::Imaging
