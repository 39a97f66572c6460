// Vector helpers of the demosaicing kernels; included once per instruction set (see hwy/foreach_target.h).
#if defined(NORVANE_DEMOSAIC_VECTOR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVANE_DEMOSAIC_VECTOR_INL_H
#undef NORVANE_DEMOSAIC_VECTOR_INL_H
#else
#define NORVANE_DEMOSAIC_VECTOR_INL_H
#endif

#include "hwy/highway.h"
#include "imaging/Demosaic/WindowKernels.h"

#include <cstring>

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

/// Calls `pixels(x, own, green, other)` for each vector of the row and stores what it gives: the row's own
/// colour (red in a red row), green, and the colour of the rows beside it.
template <class D, class T, class Function>
HWY_INLINE void ForColorVectors(D d, const WindowRow<T>& row, Function&& pixels) {
    using V = hn::Vec<D>;
    constexpr std::size_t kMost = HWY_MAX_BYTES / sizeof(T);
    const std::size_t lanes = hn::Lanes(d);
    const auto store = [&](std::size_t x, T* out) HWY_ATTR {
        V own, green, other;
        pixels(x, own, green, other);
        if (row.phase.redRow) {
            hn::StoreInterleaved3(other, green, own, d, out);
        } else {
            hn::StoreInterleaved3(own, green, other, d, out);
        }
    };
    std::size_t x = 0;
    for (; x + lanes <= row.width; x += lanes) {
        store(x, row.out + 3 * x);
    }
    if (x < row.width) {
        HWY_ALIGN T last[3 * kMost];
        store(x, last);
        std::memcpy(row.out + 3 * x, last, 3 * (row.width - x) * sizeof(T));
    }
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
