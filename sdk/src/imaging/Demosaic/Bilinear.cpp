#include "imaging/Demosaic/WindowKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/Bilinear.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

template <class T>
void Bilinear(const WindowRow<T>& row) {
    const hn::ScalableTag<T> d;
    const auto greenMask = GreenMask(d, row.phase.greenFirst);
    const T* above = row.rows[1];
    const T* here = row.rows[2];
    const T* below = row.rows[3];
    ForColorVectors(d, row, [&](std::size_t x, auto& own, auto& green, auto& other) NORVANE_INNER {
        const auto center = hn::LoadU(d, here + x);
        const auto west = hn::LoadU(d, here + x - 1), east = hn::LoadU(d, here + x + 1);
        const auto north = hn::LoadU(d, above + x), south = hn::LoadU(d, below + x);
        const auto across = hn::AverageRound(west, east);
        const auto down = hn::AverageRound(north, south);
        const auto cross = MeanOfFour(d, west, east, across, north, south, down);
        const auto northWest = hn::LoadU(d, above + x - 1), northEast = hn::LoadU(d, above + x + 1);
        const auto southWest = hn::LoadU(d, below + x - 1), southEast = hn::LoadU(d, below + x + 1);
        const auto corners = MeanOfFour(d, northWest, northEast, hn::AverageRound(northWest, northEast),
                                        southWest, southEast, hn::AverageRound(southWest, southEast));
        own = hn::IfThenElse(greenMask, across, center);
        green = hn::IfThenElse(greenMask, center, cross);
        other = hn::IfThenElse(greenMask, down, corners);
    });
}

void Bilinear8(const WindowRow<std::uint8_t>& row) {
    Bilinear(row);
}
void Bilinear16(const WindowRow<std::uint16_t>& row) {
    Bilinear(row);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(Bilinear8);
HWY_EXPORT(Bilinear16);

template <>
void BilinearRow(const WindowRow<std::uint8_t>& row) {
    HWY_DYNAMIC_DISPATCH(Bilinear8)(row);
}
template <>
void BilinearRow(const WindowRow<std::uint16_t>& row) {
    HWY_DYNAMIC_DISPATCH(Bilinear16)(row);
}

} // namespace Norvane::Imaging
#endif
