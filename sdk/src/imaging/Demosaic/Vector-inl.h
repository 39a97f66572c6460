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

#include <cstring>
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

/// (a + b + c + e + 2) / 4 without widening, given the rounded means of a, b and of c, e: those are too large
/// together by what the last bits tell.
template <class D, class V>
HWY_INLINE V MeanOfFour(D d, V a, V b, V meanAB, V c, V e, V meanCE) {
    const V excess = hn::And(hn::And(hn::Or(hn::Xor(a, b), hn::Xor(c, e)), hn::Xor(meanAB, meanCE)),
                             hn::Set(d, hn::TFromD<D>{1}));
    return hn::Sub(hn::AverageRound(meanAB, meanCE), excess);
}

/// Of a function object in a row's inner loop. Called once per vector it would load its constants each time.
#define NORVANE_INNER HWY_ATTR __attribute__((always_inline))

/// Calls `pixels(x, own, green, other)` for each vector of the row and stores what it gives: the row's own
/// colour (red in a red row), green, and the colour of the rows beside it.
template <class D, class T, class Function>
HWY_INLINE void ForColorVectors(D d, const WindowRow<T>& row, Function&& pixels) {
    using V = hn::Vec<D>;
    constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(T);
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t width = row.width;
    T* const out = row.out;
    HWY_ALIGN T last[3 * kMost];
    const auto all = [&](auto redRow) NORVANE_INNER {
        for (std::size_t x = 0; x < width; x += lanes) {
            V own, green, other;
            pixels(x, own, green, other);
            const bool whole = x + lanes <= width;
            StoreThree(d, redRow ? other : own, green, redRow ? own : other, whole ? out + 3 * x : last);
            if (!whole) {
                std::memcpy(out + 3 * x, last, 3 * (width - x) * sizeof(T));
            }
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
