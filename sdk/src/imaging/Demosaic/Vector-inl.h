// Vector helpers of the demosaicing kernels; included once per instruction set (see hwy/foreach_target.h).
#if defined(NORVANE_DEMOSAIC_VECTOR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVANE_DEMOSAIC_VECTOR_INL_H
#undef NORVANE_DEMOSAIC_VECTOR_INL_H
#else
#define NORVANE_DEMOSAIC_VECTOR_INL_H
#endif

#include "hwy/highway.h"
#include "imaging/Demosaic/WindowKernels.h"
#include "imaging/Interleave-inl.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// True in the columns whose mosaic sample is green; vectors begin at even columns.
template <class D>
HWY_INLINE auto GreenMask(D d, bool greenFirst) {
    using T = hn::TFromD<D>;
    const auto odd = hn::And(hn::Iota(d, T{0}), hn::Set(d, T{1}));
    return hn::Eq(odd, hn::Set(d, greenFirst ? T{0} : T{1}));
}

/// Each even lane's value and the next one's change places.
template <class D, class V>
HWY_INLINE V SwapPairs(D d, V v) {
    const hn::Repartition<std::uint8_t, D> d8;
    const auto from = hn::Xor(hn::Iota(d8, 0), hn::Set(d8, sizeof(hn::TFromD<D>)));
    return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, v), hn::And(from, hn::Set(d8, 15))));
}

/// (a + b + c + e + 2) / 4 without widening, given the rounded means of a, b and of c, e: those are too large
/// together by what the last bits tell.
template <class D, class V>
HWY_INLINE V MeanOfFour(D d, V a, V b, V meanAB, V c, V e, V meanCE) {
    const V excess = hn::And(hn::And(hn::Or(hn::Xor(a, b), hn::Xor(c, e)), hn::Xor(meanAB, meanCE)),
                             hn::Set(d, hn::TFromD<D>{1}));
    return hn::Sub(hn::AverageRound(meanAB, meanCE), excess);
}

/// A vector of samples that several operations use. Left to itself the compiler makes each of them read
/// memory again.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadOnce(D d, const T* from) {
    hn::Vec<D> v = hn::LoadU(d, from);
#if HWY_ARCH_X86 && HWY_COMPILER_GCC
    asm("" : "+v"(v.raw));
#endif
    return v;
}

/// Of a function object in a row's inner loop. Called once per vector it would load its constants each time.
#define NORVANE_INNER HWY_ATTR __attribute__((always_inline))

constexpr std::size_t kLine = 64; ///< bytes of a cache line, and of the longest vector

/// How many of a row's `width` columns come before the first one whose pixel begins a cache line; 0 where
/// that is an odd one or there is none.
template <class T>
HWY_INLINE std::size_t ColumnsBeforeLine(const T* out, std::size_t width) {
    constexpr std::size_t kSamples = kLine / sizeof(T), kThird = 43; // 3 * 43 is 1 modulo 64 and 32
    const std::size_t columns = (0 - reinterpret_cast<std::uintptr_t>(out) / sizeof(T)) * kThird % kSamples;
    return columns % 2 == 0 && columns < width ? columns : 0;
}

/// Calls `pixels(x, own, green, other)` for each vector of the row and stores what it gives: the row's own
/// colour (red in a red row), green, and the colour of the rows beside it.
template <class D, class T, class Function>
HWY_INLINE void ForColorVectors(D d, const WindowRow<T>& row, Function&& pixels) {
    using V = hn::Vec<D>;
    constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(T);
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t width = row.width;
    T* const out = row.out;
    const std::size_t before = row.pastCaches ? ColumnsBeforeLine(out, width) : 0;
    const bool stream = row.pastCaches && reinterpret_cast<std::uintptr_t>(out + 3 * before) % kLine == 0;
    HWY_ALIGN T part[3 * kMost];
    const auto finish = [&](std::size_t x, std::size_t count) HWY_ATTR {
        if (count < lanes || x < before) {
            std::memcpy(out + 3 * x, part, 3 * count * sizeof(T));
        } else {
            for (std::size_t i = 0; i < 3 * lanes; i += lanes) {
                hn::Stream(hn::Load(d, part + i), d, out + 3 * x + i);
            }
        }
    };
    const auto all = [&](auto redRow) NORVANE_INNER {
        std::size_t x = 0;
        for (const std::size_t end : {before, width}) {
            for (; x < end; x += lanes) {
                // Vectors that begin at a cache line do not end with the row, and behind it there may be
                // nothing to read: the last one then covers some columns again.
                const bool again = before > 0 && x + lanes > width && width % 2 == 0 && width >= lanes;
                x = again ? width - lanes : x;
                V own, green, other;
                pixels(x, own, green, other);
                const bool whole = x + lanes <= end;
                T* const to = whole && (again || !stream) ? out + 3 * x : part;
                StoreThree(d, redRow ? other : own, green, redRow ? own : other, to);
                if (to == part) {
                    finish(x, std::min(lanes, end - x));
                }
            }
            x = end;
        }
    };
    if (row.phase.redRow) {
        all(std::true_type());
    } else {
        all(std::false_type());
    }
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
