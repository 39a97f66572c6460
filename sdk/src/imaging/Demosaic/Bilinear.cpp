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
    // Both means of four belong to colour sites. That of the corners is taken in the lane of the green site
    // beside, which has two of the corners above and below itself, so that one calculation makes both.
    const std::ptrdiff_t far = row.phase.greenFirst ? 2 : -2;
    ForColorVectors(d, row, [&](std::size_t x, auto& own, auto& green, auto& other) NORVANE_INNER {
        const auto center = LoadOnce(d, here + x);
        const auto west = LoadOnce(d, here + x - 1), east = LoadOnce(d, here + x + 1);
        const auto north = LoadOnce(d, above + x), south = LoadOnce(d, below + x);
        const auto down = hn::AverageRound(north, south);
        const auto third = hn::IfThenElse(greenMask, LoadOnce(d, above + x + far), west);
        const auto fourth = hn::IfThenElse(greenMask, LoadOnce(d, below + x + far), east);
        const auto mean = MeanOfFour(d, north, south, down, third, fourth, hn::AverageRound(third, fourth));
        own = hn::IfThenElse(greenMask, hn::AverageRound(west, east), center);
        green = hn::IfThenElse(greenMask, center, mean);
        other = hn::IfThenElse(greenMask, down, SwapPairs(d, mean));
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
