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

/// Where samples go when three 16-byte blocks become three blocks of interleaved ones. Sample i of colour c
/// goes to position 3 i + c of 3 n; as n is no multiple of three, no two samples of one colour go to the same
/// position within their blocks. So each colour is shuffled once, and each block picks every third sample of
/// each colour.
template <class T>
struct InterleaveTables {
    static constexpr std::size_t kSamples = 16 / sizeof(T);

    constexpr InterleaveTables() {
        for (std::size_t byte = 0; byte < 16; ++byte) {
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

    alignas(16) std::uint8_t spread[3][16] = {};   ///< by colour
    alignas(16) std::uint8_t repeated[3][16] = {}; ///< by block, of one colour that stands for all three
    alignas(16) T third[3][kSamples] = {};         ///< by the sample's number modulo three
};

template <class T>
constexpr InterleaveTables<T> kInterleave;

/// Writes first[0], second[0], third[0], first[1] and so on: what hn::StoreInterleaved3 does, which takes
/// nine shuffles where this takes three. T is std::uint8_t or std::uint16_t, d a whole vector.
template <class D, class V, class T>
HWY_INLINE void StoreThree(D d, V first, V second, V third, T* out) {
#if HWY_ARCH_X86
    const hn::Repartition<std::uint8_t, D> d8;
    constexpr const InterleaveTables<T>& tables = kInterleave<T>;
    const auto spread = [&](V samples, std::size_t color) HWY_ATTR {
        return hn::BitCast(
            d, hn::TableLookupBytes(hn::BitCast(d8, samples), hn::LoadDup128(d8, tables.spread[color])));
    };
    const V a = spread(first, 0), b = spread(second, 1), c = spread(third, 2);
    const auto pick = [&](std::size_t block) HWY_ATTR {
        const auto at = [&](std::size_t color) HWY_ATTR {
            return hn::MaskFromVec(hn::LoadDup128(d, tables.third[tables.Third(block, color)]));
        };
        return hn::IfThenElse(at(0), a, hn::IfThenElse(at(1), b, c));
    };
    hn::detail::StoreTransposedBlocks3(pick(0), pick(1), pick(2), d, out);
#else
    hn::StoreInterleaved3(first, second, third, d, out);
#endif
}

/// Writes each sample three times.
template <class D, class V, class T>
HWY_INLINE void StoreThrice(D d, V samples, T* out) {
#if HWY_ARCH_X86
    const hn::Repartition<std::uint8_t, D> d8;
    const auto block = [&](std::size_t i) HWY_ATTR {
        return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, samples),
                                                   hn::LoadDup128(d8, kInterleave<T>.repeated[i])));
    };
    hn::detail::StoreTransposedBlocks3(block(0), block(1), block(2), d, out);
#else
    hn::StoreInterleaved3(samples, samples, samples, d, out);
#endif
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
