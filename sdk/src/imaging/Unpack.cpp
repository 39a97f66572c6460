#include "imaging/Unpack.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Unpack.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// How the eight samples of a group lie in 16-bit lanes once each lane holds the two bytes that its sample
/// begins in: value = (lane & direct) | (lane & field) * factor puts it at the lane's top.
struct Fields {
    std::uint8_t bytes[16]; ///< the lanes' bytes, counted from the group's first
    std::uint16_t direct[8], field[8], factor[8];
};

/// Bytes that eight samples take.
inline unsigned GroupBytes(Packing packing, unsigned bits) {
    return packing == Packing::Bits ? bits : 12;
}

inline Fields FieldsOf(Packing packing, unsigned bits) {
    Fields f{};
    for (unsigned i = 0; i < 8; ++i) {
        if (packing == Packing::Bits) {
            const unsigned shift = i * bits % 8;
            f.bytes[2 * i] = static_cast<std::uint8_t>(i * bits / 8);
            f.bytes[2 * i + 1] = static_cast<std::uint8_t>(i * bits / 8 + 1);
            f.field[i] = static_cast<std::uint16_t>(((1U << bits) - 1) << shift);
            f.factor[i] = static_cast<std::uint16_t>(1U << (16 - bits - shift));
        } else {
            // Two samples in three bytes: high bits, both low bits, high bits.
            const unsigned group = i / 2 * 3;
            f.bytes[2 * i] = static_cast<std::uint8_t>(group + 1);
            f.bytes[2 * i + 1] = static_cast<std::uint8_t>(group + (i % 2 ? 2 : 0));
            const unsigned low = (1U << (bits - 8)) - 1;
            f.direct[i] = 0xFF00;
            f.field[i] = static_cast<std::uint16_t>(low << (i % 2 ? 4 : 0));
            f.factor[i] = static_cast<std::uint16_t>(i % 2 ? 1U << (12 - bits) : 1U << (16 - bits));
        }
    }
    return f;
}

/// What UnpackFields needs of one packing, for whole vectors. Each 16-byte block takes one group of eight
/// samples: first the 32-bit words around it, then its bytes.
struct FieldTables {
    HWY_ALIGN std::int32_t words[HWY_MAX_BYTES / 4];
    HWY_ALIGN std::uint8_t bytes[HWY_MAX_BYTES];
    HWY_ALIGN std::uint16_t direct[8], field[8], factor[8];

    FieldTables(Packing packing, unsigned bits) {
        const Fields f = FieldsOf(packing, bits);
        const std::size_t lanes = hn::Lanes(hn::ScalableTag<std::uint16_t>());
        for (std::size_t block = 0; block < lanes / 8; ++block) {
            const std::size_t begin = block * GroupBytes(packing, bits);
            for (std::size_t i = 0; i < 4; ++i) {
                words[block * 4 + i] = static_cast<std::int32_t>(std::min(begin / 4 + i, lanes / 2 - 1));
            }
            for (std::size_t i = 0; i < 16; ++i) {
                bytes[block * 16 + i] = static_cast<std::uint8_t>(f.bytes[i] + begin % 4);
            }
        }
        std::copy_n(f.direct, 8, direct);
        std::copy_n(f.field, 8, field);
        std::copy_n(f.factor, 8, factor);
    }
};

/// Made once: a row of a camera's image takes little longer than they do.
const FieldTables& TablesOf(Packing packing, unsigned bits) {
    static const FieldTables plain10(Packing::Bits, 10), plain12(Packing::Bits, 12);
    static const FieldTables gev10(Packing::Gev10, 10), gev12(Packing::Gev12, 12);
    if (packing == Packing::Bits) {
        return bits == 10 ? plain10 : plain12;
    }
    return packing == Packing::Gev10 ? gev10 : gev12;
}

template <class D, class V>
HWY_INLINE void StoreFullScale(D, V top, unsigned, std::uint8_t* out) {
    const hn::RebindToSigned<D> di;
    const hn::Rebind<std::uint8_t, D> d8;
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di, hn::ShiftRight<8>(top))), d8, out);
}

template <class D, class V>
HWY_INLINE void StoreFullScale(D d, V top, unsigned bits, std::uint16_t* out) {
    const V low = bits == 10 ? hn::ShiftRight<10>(top) : hn::ShiftRight<12>(top);
    hn::StoreU(hn::Or(top, low), d, out);
}

/// Unpacks from the first sample on, which begins on a byte; returns how many samples, the rest is near the
/// end.
template <class T>
std::size_t UnpackFields(const PackedSamples& source, std::size_t count, T* out) {
    const hn::ScalableTag<std::uint16_t> d;
    const hn::Repartition<std::uint8_t, decltype(d)> d8;
    const hn::Repartition<std::uint32_t, decltype(d)> d32;
    const std::size_t lanes = hn::Lanes(d);
    const unsigned groupBytes = GroupBytes(source.packing, source.bits);
    const FieldTables& tables = TablesOf(source.packing, source.bits);
    const auto direct = hn::LoadDup128(d, tables.direct), field = hn::LoadDup128(d, tables.field);
    const auto factor = hn::LoadDup128(d, tables.factor);
    const auto wordIndices = hn::SetTableIndices(d32, tables.words);
    const auto byteIndices = hn::Load(d8, tables.bytes);

    const std::uint8_t* begin = source.bytes;
    const auto readable = static_cast<std::size_t>(source.end - begin);
    const auto step = [&](std::size_t i) HWY_ATTR {
        const auto words32 = hn::BitCast(d32, hn::LoadU(d8, begin + i / 8 * groupBytes));
        const auto gathered = hn::BitCast(d8, hn::TableLookupLanes(words32, wordIndices));
        const auto lane = hn::BitCast(d, hn::TableLookupBytes(gathered, byteIndices));
        const auto top = hn::Or(hn::And(lane, direct), hn::Mul(hn::And(lane, field), factor));
        StoreFullScale(d, top, source.bits, out + i);
    };
    const auto fits = [&](std::size_t i) { return i / 8 * groupBytes + 2 * lanes <= readable; };
    std::size_t i = 0;
    for (; i + lanes <= count && fits(i); i += lanes) {
        step(i);
    }
    const std::size_t groups = count / 8 * 8;
    if (i < groups && groups >= lanes && fits(groups - lanes)) {
        step(groups - lanes); // some of these for the second time
        i = groups;
    }
    return i;
}

std::size_t UnpackFields8(const PackedSamples& s, std::size_t count, std::uint8_t* out) {
    return UnpackFields(s, count, out);
}
std::size_t UnpackFields16(const PackedSamples& s, std::size_t count, std::uint16_t* out) {
    return UnpackFields(s, count, out);
}

/// 16-bit words of `bits` bits (fewer than 16 where T has 16) to full scale; words above that are the largest
/// value.
template <class T>
std::size_t ScaleWords(const std::uint8_t* words, unsigned bits, std::size_t count, T* out) {
    const hn::ScalableTag<std::uint16_t> d;
    const hn::Repartition<std::uint8_t, decltype(d)> d8;
    const hn::Rebind<std::uint8_t, decltype(d)> half;
    const hn::RebindToSigned<decltype(d)> di;
    const std::size_t lanes = hn::Lanes(d);
    const auto top = hn::Set(d, static_cast<std::uint16_t>((1U << bits) - 1));
    const auto up = static_cast<int>(16 - bits), down = static_cast<int>(2 * bits - 16);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto value = hn::Min(hn::BitCast(d, hn::LoadU(d8, words + 2 * i)), top);
        const auto high = hn::ShiftLeftSame(value, up);
        if constexpr (sizeof(T) == 1) {
            hn::StoreU(hn::DemoteTo(half, hn::BitCast(di, hn::ShiftRight<8>(high))), half, out + i);
        } else {
            hn::StoreU(hn::Or(high, hn::ShiftRightSame(value, down)), d, out + i);
        }
    }
    return i;
}

std::size_t ScaleWords8(const std::uint8_t* words, unsigned bits, std::size_t count, std::uint8_t* out) {
    return ScaleWords(words, bits, count, out);
}
std::size_t ScaleWords16(const std::uint8_t* words, unsigned bits, std::size_t count, std::uint16_t* out) {
    return ScaleWords(words, bits, count, out);
}

std::size_t WidenBytes(const std::uint8_t* bytes, std::size_t count, std::uint16_t* out) {
    const hn::ScalableTag<std::uint16_t> d;
    const hn::Rebind<std::uint8_t, decltype(d)> half;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto value = hn::PromoteTo(d, hn::LoadU(half, bytes + i));
        hn::StoreU(hn::Or(value, hn::ShiftLeft<8>(value)), d, out + i);
    }
    return i;
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {
namespace {

HWY_EXPORT(UnpackFields8);
HWY_EXPORT(UnpackFields16);
HWY_EXPORT(ScaleWords8);
HWY_EXPORT(ScaleWords16);
HWY_EXPORT(WidenBytes);

std::size_t FieldsInVectors(const PackedSamples& s, std::size_t count, std::uint8_t* out) {
    return HWY_DYNAMIC_DISPATCH(UnpackFields8)(s, count, out);
}
std::size_t FieldsInVectors(const PackedSamples& s, std::size_t count, std::uint16_t* out) {
    return HWY_DYNAMIC_DISPATCH(UnpackFields16)(s, count, out);
}
std::size_t WordsInVectors(const PackedSamples& s, std::size_t count, std::uint8_t* out) {
    return HWY_DYNAMIC_DISPATCH(ScaleWords8)(s.bytes, s.bits, count, out);
}
std::size_t WordsInVectors(const PackedSamples& s, std::size_t count, std::uint16_t* out) {
    if (s.bits == 16) {
        std::memcpy(out, s.bytes, 2 * count);
        return count;
    }
    return HWY_DYNAMIC_DISPATCH(ScaleWords16)(s.bytes, s.bits, count, out);
}
std::size_t BytesInVectors(const PackedSamples& s, std::size_t count, std::uint8_t* out) {
    std::memcpy(out, s.bytes, count);
    return count;
}
std::size_t BytesInVectors(const PackedSamples& s, std::size_t count, std::uint16_t* out) {
    return HWY_DYNAMIC_DISPATCH(WidenBytes)(s.bytes, count, out);
}

/// Unpacks from the first sample on, which begins on a byte, as far as vectors reach; the caller does the
/// rest one by one.
template <class T>
std::size_t UnpackInVectors(const PackedSamples& s, std::size_t count, T* out) {
    switch (s.packing) {
    case Packing::Byte:
    case Packing::BytePlanes:
        return BytesInVectors(s, count, out);
    case Packing::Word:
    case Packing::WordPlanes:
        return WordsInVectors(s, count, out);
    case Packing::Bits:
        return s.bits == 10 || s.bits == 12 ? FieldsInVectors(s, count, out) : 0;
    case Packing::Gev10:
    case Packing::Gev12:
        return FieldsInVectors(s, count, out);
    default:
        return 0;
    }
}

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
    // Vectors begin where a byte does, or a group of two samples in three bytes.
    const bool gev = source.packing == Packing::Gev10 || source.packing == Packing::Gev12;
    PackedSamples s = source;
    for (; count > 0 && s.bitOffset % (gev ? 24 : 8) != 0; --count) {
        *out++ = FullScale<T>(SampleAt(s, 0), s.bits);
        s.bitOffset += gev ? 12 : s.bits;
    }
    s.bytes += s.bitOffset / 8;
    s.bitOffset = 0;
    for (std::size_t i = UnpackInVectors(s, count, out); i < count; ++i) {
        out[i] = FullScale<T>(SampleAt(s, i), BitsAt(s, i));
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
#endif
