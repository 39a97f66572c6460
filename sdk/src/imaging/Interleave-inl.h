// Three colours side by side in memory; included once per instruction set (see hwy/foreach_target.h).
#if defined(NORVANE_INTERLEAVE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVANE_INTERLEAVE_INL_H
#undef NORVANE_INTERLEAVE_INL_H
#else
#define NORVANE_INTERLEAVE_INL_H
#endif

#include "hwy/highway.h"

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Where samples go when three blocks of 16 or 64 bytes become three blocks of interleaved ones. Sample i of
/// colour c goes to position 3 i + c of 3 n; as n is no multiple of three, no two samples of one colour go to
/// the same position within their blocks. So each colour is shuffled once, and each block picks every third
/// sample of each colour.
template <class T, std::size_t kBytes>
struct InterleaveTables {
    static constexpr std::size_t kSamples = kBytes / sizeof(T);

    constexpr InterleaveTables() {
        for (std::size_t byte = 0; byte < kBytes; ++byte) {
            for (std::size_t block = 0; block < 3; ++block) {
                const std::size_t position = block * kSamples + byte / sizeof(T);
                const auto from = static_cast<std::uint8_t>(position / 3 * sizeof(T) + byte % sizeof(T));
                spread[position % 3][byte] = from;
                repeated[block][byte] = from;
            }
        }
        for (std::size_t sample = 0; sample < kSamples; ++sample) {
            third[sample % 3][sample] = static_cast<T>(~T{0});
        }
    }

    /// Which colour's samples stand where `third[Third(block, color)]` is set.
    static constexpr std::size_t Third(std::size_t block, std::size_t color) {
        return (color + 2 * block * kSamples) % 3;
    }

    alignas(kBytes) std::uint8_t spread[3][kBytes] = {}; ///< by colour
    alignas(
        kBytes) std::uint8_t repeated[3][kBytes] = {}; ///< by block, of one colour that stands for all three
    alignas(kBytes) T third[3][kSamples] = {};         ///< by the sample's number modulo three
};

#if HWY_TARGET == HWY_AVX3_DL
constexpr std::size_t kInterleaved = 64; ///< bytes over which this instruction set permutes
#else
constexpr std::size_t kInterleaved = 16;
#endif

template <class T>
constexpr InterleaveTables<T, kInterleaved> kInterleave;

#if HWY_ARCH_X86
/// A table that each of the vector's blocks has.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadTable(D d, const T* table) {
#if HWY_TARGET == HWY_AVX3_DL
    return hn::Load(d, table);
#else
    return hn::LoadDup128(d, table);
#endif
}

/// The samples' bytes in the table's order.
template <class D, class V>
HWY_INLINE V Permute(D d, V samples, const std::uint8_t* table) {
    const hn::Repartition<std::uint8_t, D> d8;
    const auto from = LoadTable(d8, table);
#if HWY_TARGET == HWY_AVX3_DL
    return V{_mm512_permutexvar_epi8(from.raw, samples.raw)};
#else
    return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, samples), from));
#endif
}

/// Stores three vectors of interleaved blocks, in the order of their blocks.
template <class D, class V, class T>
HWY_INLINE void StoreBlocks(D d, V first, V second, V third, T* out) {
#if HWY_TARGET == HWY_AVX3_DL
    hn::StoreU(first, d, out);
    hn::StoreU(second, d, out + 64 / sizeof(T));
    hn::StoreU(third, d, out + 128 / sizeof(T));
#else
    hn::detail::StoreTransposedBlocks3(first, second, third, d, out);
#endif
}
#endif

/// Writes first[0], second[0], third[0], first[1] and so on: what hn::StoreInterleaved3 does, which takes
/// nine shuffles where this takes three, and on AVX3_DL nothing else that moves bytes. T is std::uint8_t or
/// std::uint16_t, d a whole vector.
template <class D, class V, class T>
HWY_INLINE void StoreThree(D d, V first, V second, V third, T* out) {
#if HWY_ARCH_X86
    const V a = Permute(d, first, kInterleave<T>.spread[0]);
    const V b = Permute(d, second, kInterleave<T>.spread[1]);
    const V c = Permute(d, third, kInterleave<T>.spread[2]);
    const auto pick = [&](std::size_t block) HWY_ATTR {
        const auto at = [&](std::size_t color) HWY_ATTR {
            return hn::MaskFromVec(LoadTable(d, kInterleave<T>.third[kInterleave<T>.Third(block, color)]));
        };
        return hn::IfThenElse(at(0), a, hn::IfThenElse(at(1), b, c));
    };
    StoreBlocks(d, pick(0), pick(1), pick(2), out);
#else
    hn::StoreInterleaved3(first, second, third, d, out);
#endif
}

/// Writes each sample three times.
template <class D, class V, class T>
HWY_INLINE void StoreThrice(D d, V samples, T* out) {
#if HWY_ARCH_X86
    const auto& tables = kInterleave<T>;
    StoreBlocks(d, Permute(d, samples, tables.repeated[0]), Permute(d, samples, tables.repeated[1]),
                Permute(d, samples, tables.repeated[2]), out);
#else
    hn::StoreInterleaved3(samples, samples, samples, d, out);
#endif
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
