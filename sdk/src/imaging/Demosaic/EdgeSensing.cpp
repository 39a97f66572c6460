#include "imaging/Demosaic/BandMethods.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/EdgeSensing.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// C. A. Laroche, M. A. Prescott, "Apparatus and method for adaptively interpolating a full color image
// utilizing chrominance gradients", US patent 5,373,322 (expired). Green is the mean of the two neighbours
// along which the colour present changes least; the other colours follow green. All of it in the sample's own
// width: a difference is added as one saturating sum and one saturating difference, of which one is zero.

constexpr std::size_t kReach = 3;

template <class V>
HWY_INLINE V Distance(V a, V b) {
    return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

/// base + plus - minus, kept in range.
template <class V>
HWY_INLINE V AddDifference(V base, V plus, V minus) {
    return hn::SaturatedSub(hn::SaturatedAdd(base, hn::SaturatedSub(plus, minus)),
                            hn::SaturatedSub(minus, plus));
}

template <class T, class Window>
HWY_INLINE void GreenLine(const Window& window, std::ptrdiff_t y, const MosaicShape& shape, T* green) {
    const hn::ScalableTag<T> d;
    const T* here = window.Line(y);
    const T* above = window.Line(y - 1);
    const T* below = window.Line(y + 1);
    const T* farAbove = window.Line(y - 2);
    const T* farBelow = window.Line(y + 2);
    const auto greenMask = GreenMask(d, PhaseOfRow(shape.phase, y).greenFirst);
    // Two columns beside the image are enough for the colours, and an even number keeps the mask.
    const auto end = static_cast<std::ptrdiff_t>(shape.width) + 1;
    for (std::ptrdiff_t x = -2; x < end; x += static_cast<std::ptrdiff_t>(hn::Lanes(d))) {
        const auto center = hn::LoadU(d, here + x);
        const auto west = hn::LoadU(d, here + x - 1), east = hn::LoadU(d, here + x + 1);
        const auto north = hn::LoadU(d, above + x), south = hn::LoadU(d, below + x);
        const auto across = hn::AverageRound(west, east);
        const auto down = hn::AverageRound(north, south);
        const auto cross = hn::AverageRound(across, down);
        const auto changeAcross =
            Distance(hn::AverageRound(hn::LoadU(d, here + x - 2), hn::LoadU(d, here + x + 2)), center);
        const auto changeDown =
            Distance(hn::AverageRound(hn::LoadU(d, farAbove + x), hn::LoadU(d, farBelow + x)), center);
        // Unsigned comparison by maximum, which every instruction set has for these widths.
        const auto larger = hn::Max(changeAcross, changeDown);
        const auto acrossWins = hn::Ne(larger, changeAcross);
        const auto downWins = hn::Ne(larger, changeDown);
        const auto estimate = hn::IfThenElse(acrossWins, across, hn::IfThenElse(downWins, down, cross));
        hn::StoreU(hn::IfThenElse(greenMask, center, estimate), d, green + x);
    }
}

template <class T>
void EdgeSensing(const Band<T>& band) {
    const hn::ScalableTag<T> d;
    const MosaicShape& shape = band.shape;
    Scratch scratch;
    MosaicWindow<T, 8> window(scratch, shape, band.source, kReach);
    LineRing<T, 4> greens(scratch, shape.width);
    const auto first = static_cast<std::ptrdiff_t>(band.first);
    for (auto y = first; y < static_cast<std::ptrdiff_t>(band.last); ++y) {
        window.MoveTo(y);
        for (auto row = y == first ? y - 1 : y + 1; row <= y + 1; ++row) {
            GreenLine(window, row, shape, greens.Line(row));
        }
        const T* above = window.Line(y - 1);
        const T* here = window.Line(y);
        const T* below = window.Line(y + 1);
        const T* greenAbove = greens.Line(y - 1);
        const T* greenHere = greens.Line(y);
        const T* greenBelow = greens.Line(y + 1);
        const RowPhase phase = PhaseOfRow(shape.phase, y);
        const auto greenMask = GreenMask(d, phase.greenFirst);
        const auto row = static_cast<std::size_t>(y);
        const WindowRow<T> out{{}, band.sink.BeginRow(row), shape.width, phase, band.sink.PastCaches()};
        ForColorVectors(d, out, [&](std::size_t x, auto& own, auto& green, auto& other) NORVANE_INNER {
            const auto corners = [&](const T* up, const T* down) NORVANE_INNER {
                // Rounded twice; the difference of two such means is what counts.
                return hn::AverageRound(
                    hn::AverageRound(hn::LoadU(d, up + x - 1), hn::LoadU(d, up + x + 1)),
                    hn::AverageRound(hn::LoadU(d, down + x - 1), hn::LoadU(d, down + x + 1)));
            };
            const auto pair = [&](const T* one, const T* two) NORVANE_INNER {
                return hn::AverageRound(hn::LoadU(d, one + x), hn::LoadU(d, two + x));
            };
            green = hn::LoadU(d, greenHere + x);
            own = hn::IfThenElse(
                greenMask, AddDifference(green, pair(here - 1, here + 1), pair(greenHere - 1, greenHere + 1)),
                hn::LoadU(d, here + x));
            const auto plus = hn::IfThenElse(greenMask, pair(above, below), corners(above, below));
            const auto minus =
                hn::IfThenElse(greenMask, pair(greenAbove, greenBelow), corners(greenAbove, greenBelow));
            other = AddDifference(green, plus, minus);
        });
        band.sink.EndRow(row);
    }
}

void EdgeSensing8(const Band<std::uint8_t>& band) {
    EdgeSensing(band);
}
void EdgeSensing16(const Band<std::uint16_t>& band) {
    EdgeSensing(band);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(EdgeSensing8);
HWY_EXPORT(EdgeSensing16);

template <>
void EdgeSensingRows(const Band<std::uint8_t>& band) {
    HWY_DYNAMIC_DISPATCH(EdgeSensing8)(band);
}
template <>
void EdgeSensingRows(const Band<std::uint16_t>& band) {
    HWY_DYNAMIC_DISPATCH(EdgeSensing16)(band);
}

} // namespace Norvane::Imaging
#endif
