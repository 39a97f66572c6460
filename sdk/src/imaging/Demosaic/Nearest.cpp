#include "imaging/Demosaic/WindowKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/Nearest.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

template <bool kAverage, class T>
void Nearest(const WindowRow<T>& row) {
    const hn::ScalableTag<T> d;
    const auto greenMask = GreenMask(d, row.phase.greenFirst);
    const T* here = row.rows[2];
    const T* below = row.rows[3];
    ForColorVectors(d, row, [&](std::size_t x, auto& own, auto& green, auto& other) NORVANE_INNER {
        const auto center = hn::LoadU(d, here + x), east = hn::LoadU(d, here + x + 1);
        const auto south = hn::LoadU(d, below + x), southEast = hn::LoadU(d, below + x + 1);
        own = hn::IfThenElse(greenMask, east, center);
        other = hn::IfThenElse(greenMask, south, southEast);
        if (kAverage) {
            green =
                hn::IfThenElse(greenMask, hn::AverageRound(center, southEast), hn::AverageRound(east, south));
        } else {
            green = hn::IfThenElse(greenMask, center, east);
        }
    });
}

void Nearest8(const WindowRow<std::uint8_t>& row) {
    Nearest<false>(row);
}
void Nearest16(const WindowRow<std::uint16_t>& row) {
    Nearest<false>(row);
}
void NearestAverage8(const WindowRow<std::uint8_t>& row) {
    Nearest<true>(row);
}
void NearestAverage16(const WindowRow<std::uint16_t>& row) {
    Nearest<true>(row);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(Nearest8);
HWY_EXPORT(Nearest16);
HWY_EXPORT(NearestAverage8);
HWY_EXPORT(NearestAverage16);

template <>
void NearestRow(const WindowRow<std::uint8_t>& row) {
    HWY_DYNAMIC_DISPATCH(Nearest8)(row);
}
template <>
void NearestRow(const WindowRow<std::uint16_t>& row) {
    HWY_DYNAMIC_DISPATCH(Nearest16)(row);
}
template <>
void NearestAverageRow(const WindowRow<std::uint8_t>& row) {
    HWY_DYNAMIC_DISPATCH(NearestAverage8)(row);
}
template <>
void NearestAverageRow(const WindowRow<std::uint16_t>& row) {
    HWY_DYNAMIC_DISPATCH(NearestAverage16)(row);
}

} // namespace Norvane::Imaging
#endif
