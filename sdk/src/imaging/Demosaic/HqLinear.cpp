#include "imaging/Demosaic/WindowKernels.h"

#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/HqLinear.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// H. S. Malvar, L. He, R. Cutler, "High-quality linear interpolation for demosaicing of Bayer-patterned color
// images", ICASSP 2004, figure 2; the factors below are the figure's times two, over sixteen. Each wide lane
// holds one even and the following odd column, so that no lane computes a colour its pixel already has.

/// Even and odd columns of one row, widened.
template <class V>
struct Columns {
    V even, odd;
};

template <class DW, class T>
HWY_INLINE Columns<hn::Vec<DW>> LoadColumns(DW dw, const T* from) {
    const hn::RebindToUnsigned<DW> du;
    const auto both = hn::BitCast(du, hn::LoadU(hn::Repartition<T, DW>(), from));
    const auto low = hn::Set(du, static_cast<hn::TFromD<decltype(du)>>(static_cast<T>(~T{0})));
    return {hn::BitCast(dw, hn::And(both, low)), hn::BitCast(dw, hn::ShiftRight<8 * sizeof(T)>(both))};
}

/// What surrounds one site: the site itself, sums of opposite neighbours one and two steps away, and corners.
template <class V>
struct Around {
    V center, beside, upright, besideFar, uprightFar, corners;
};

template <class DW, class V = hn::Vec<DW>>
HWY_INLINE void ColorSite(DW dw, const Around<V>& a, V& own, V& green, V& other) {
    const auto far = hn::Add(a.besideFar, a.uprightFar);
    const auto near = hn::Add(a.beside, a.upright);
    own = a.center;
    green = hn::ShiftRight<3>(
        hn::Add(hn::Sub(hn::Add(hn::ShiftLeft<2>(a.center), hn::Add(near, near)), far), hn::Set(dw, 4)));
    const auto threeCenters = hn::Add(hn::Add(a.center, a.center), a.center);
    other = hn::ShiftRight<4>(
        hn::Add(hn::Sub(hn::ShiftLeft<2>(hn::Add(threeCenters, a.corners)), hn::Add(hn::Add(far, far), far)),
                hn::Set(dw, 8)));
}

template <class DW, class V = hn::Vec<DW>>
HWY_INLINE void GreenSite(DW dw, const Around<V>& a, V& own, V& green, V& other) {
    green = a.center;
    // 10 * center - 2 * corners + rounding, common to both.
    const auto tenCenters = hn::Add(hn::ShiftLeft<3>(a.center), hn::Add(a.center, a.center));
    const auto common = hn::Add(hn::Sub(tenCenters, hn::Add(a.corners, a.corners)), hn::Set(dw, 8));
    own = hn::ShiftRight<4>(hn::Add(hn::Add(common, hn::ShiftLeft<3>(a.beside)),
                                    hn::Sub(a.uprightFar, hn::Add(a.besideFar, a.besideFar))));
    other = hn::ShiftRight<4>(hn::Add(hn::Add(common, hn::ShiftLeft<3>(a.upright)),
                                      hn::Sub(a.besideFar, hn::Add(a.uprightFar, a.uprightFar))));
}

template <class T, bool kGreenFirst>
void HqLinear(const WindowRow<T>& row) {
    using Wide = std::conditional_t<sizeof(T) == 1, std::int16_t, std::int32_t>;
    const hn::ScalableTag<T> d;
    const hn::Repartition<Wide, decltype(d)> dw;
    const hn::RebindToUnsigned<decltype(dw)> du;
    using V = hn::Vec<decltype(dw)>;
    const auto top = hn::Set(dw, static_cast<Wide>(static_cast<T>(~T{0})));
    const auto join = [&](V even, V odd) NORVANE_INNER {
        even = hn::Min(hn::Max(even, hn::Zero(dw)), top);
        odd = hn::Min(hn::Max(odd, hn::Zero(dw)), top);
        return hn::BitCast(d,
                           hn::Or(hn::BitCast(du, even), hn::ShiftLeft<8 * sizeof(T)>(hn::BitCast(du, odd))));
    };
    ForColorVectors(d, row, [&](std::size_t x, auto& own, auto& green, auto& other) NORVANE_INNER {
        const auto west = LoadColumns(dw, row.rows[2] + x - 2);
        const auto here = LoadColumns(dw, row.rows[2] + x);
        const auto east = LoadColumns(dw, row.rows[2] + x + 2);
        const auto sum = [&](int step, std::ptrdiff_t offset) NORVANE_INNER {
            const auto up = LoadColumns(dw, row.rows[2 - step] + x + offset);
            const auto down = LoadColumns(dw, row.rows[2 + step] + x + offset);
            return Columns<V>{hn::Add(up.even, down.even), hn::Add(up.odd, down.odd)};
        };
        const auto nearWest = sum(1, -2), near = sum(1, 0), nearEast = sum(1, 2), far = sum(2, 0);
        const Around<V> atEven{here.even, hn::Add(west.odd, here.odd),
                               near.even, hn::Add(west.even, east.even),
                               far.even,  hn::Add(nearWest.odd, near.odd)};
        const Around<V> atOdd{here.odd, hn::Add(here.even, east.even),
                              near.odd, hn::Add(west.odd, east.odd),
                              far.odd,  hn::Add(near.even, nearEast.even)};
        V ownEven, greenEven, otherEven, ownOdd, greenOdd, otherOdd;
        if constexpr (kGreenFirst) {
            GreenSite(dw, atEven, ownEven, greenEven, otherEven);
            ColorSite(dw, atOdd, ownOdd, greenOdd, otherOdd);
        } else {
            ColorSite(dw, atEven, ownEven, greenEven, otherEven);
            GreenSite(dw, atOdd, ownOdd, greenOdd, otherOdd);
        }
        own = join(ownEven, ownOdd);
        green = join(greenEven, greenOdd);
        other = join(otherEven, otherOdd);
    });
}

void HqLinear8(const WindowRow<std::uint8_t>& row) {
    row.phase.greenFirst ? HqLinear<std::uint8_t, true>(row) : HqLinear<std::uint8_t, false>(row);
}
void HqLinear16(const WindowRow<std::uint16_t>& row) {
    row.phase.greenFirst ? HqLinear<std::uint16_t, true>(row) : HqLinear<std::uint16_t, false>(row);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(HqLinear8);
HWY_EXPORT(HqLinear16);

template <>
void HqLinearRow(const WindowRow<std::uint8_t>& row) {
    HWY_DYNAMIC_DISPATCH(HqLinear8)(row);
}
template <>
void HqLinearRow(const WindowRow<std::uint16_t>& row) {
    HWY_DYNAMIC_DISPATCH(HqLinear16)(row);
}

} // namespace Norvane::Imaging
#endif
