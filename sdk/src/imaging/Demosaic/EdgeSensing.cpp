#include "imaging/Demosaic/BandMethods.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/EdgeSensing.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// C. A. Laroche, M. A. Prescott, "Apparatus and method for adaptively interpolating a full color image
// utilizing chrominance gradients", US patent 5,373,322 (expired). Green is the mean of the two neighbours
// along which the colour present changes least; the other colours follow green. All of it in the sample's own
// width: a difference is added as one saturating sum and one saturating difference, of which one is zero.
//
// Two neighbouring rows have their colours in opposite columns. Their samples are sorted into one line of
// colours and one of greens, so that no lane estimates a green its pixel already has.

constexpr std::ptrdiff_t kReach = 3;

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

/// The stages of a band. A pair of rows is known by its number, see Pair().
template <class T>
class EdgeSensingBand {
public:
    explicit EdgeSensingBand(const Band<T>& band)
        : m_band(band), m_width(band.shape.width), m_upperSource(m_scratch.Take<T>(m_width)),
          m_lowerSource(m_scratch.Take<T>(m_width)), m_colors(m_scratch, m_width),
          m_greens(m_scratch, m_width), m_betweenColors(m_scratch, m_width), m_estimates(m_scratch, m_width) {
    }

    void Run() {
        const auto first = static_cast<std::ptrdiff_t>(m_band.first);
        const auto last = static_cast<std::ptrdiff_t>(m_band.last);
        Sort(first - 3);
        Sort(first - 1);
        for (std::ptrdiff_t y = first - 1; y <= last; y += 2) {
            Sort(y + 2);
            EstimateGreen(y);
            if (y > first) {
                Finish(y - 1, Pair(y - 2), Pair(y));
            }
            if (y >= first && y < last) {
                Finish(y, Pair(y), Pair(y - 2));
            }
        }
    }

private:
    /// Number of the pair whose upper row is `y`; all upper rows have the same parity.
    static std::ptrdiff_t Pair(std::ptrdiff_t y) { return y >> 1; }

    /// Row `y` of the mosaic, with nothing beside it.
    const T* Source(std::ptrdiff_t y, T* line) const {
        const std::size_t row = Reflect(y, m_band.shape.height);
        const T* direct = m_band.source.DirectRow(row);
        if (!direct) {
            m_band.source.ReadRow(row, line);
        }
        return direct ? direct : line;
    }

    /// True where the row's colours are; vectors begin at even columns.
    HWY_INLINE auto ColorMask(std::ptrdiff_t y) const {
        return GreenMask(hn::ScalableTag<T>(), !PhaseOfRow(m_band.shape.phase, y).greenFirst);
    }

    void Sort(std::ptrdiff_t y) {
        const hn::ScalableTag<T> d;
        const std::size_t lanes = hn::Lanes(d);
        const auto inUpper = ColorMask(y);
        const T* upper = Source(y, m_upperSource);
        const T* lower = Source(y + 1, m_lowerSource);
        T* colors = m_colors.Line(Pair(y));
        T* greens = m_greens.Line(Pair(y));
        const bool evenInUpper = !PhaseOfRow(m_band.shape.phase, y).greenFirst;
        const auto sortOne = [&](std::ptrdiff_t x) {
            const std::size_t from = Reflect(x, m_width);
            const bool isUpper = ((x & 1) == 0) == evenInUpper;
            colors[x] = isUpper ? upper[from] : lower[from];
            greens[x] = isUpper ? lower[from] : upper[from];
        };
        const std::size_t wide = m_width & ~std::size_t{1};
        std::size_t sorted = 0;
        while (wide >= lanes && sorted < wide) {
            const std::size_t x = std::min(sorted, wide - lanes); // behind the row there may be nothing
            const auto above = hn::LoadU(d, upper + x), below = hn::LoadU(d, lower + x);
            hn::StoreU(hn::IfThenElse(inUpper, above, below), d, colors + x);
            hn::StoreU(hn::IfThenElse(inUpper, below, above), d, greens + x);
            sorted = x + lanes;
        }
        for (auto x = static_cast<std::ptrdiff_t>(sorted); x < static_cast<std::ptrdiff_t>(m_width) + kReach;
             ++x) {
            sortOne(x);
        }
        for (std::ptrdiff_t x = -kReach; x < 0; ++x) {
            sortOne(x);
        }
    }

    /// Green where the pair's colours are, also in the columns beside the image; and in the other columns the
    /// mean of the colours to the left and the right.
    void EstimateGreen(std::ptrdiff_t y) {
        const hn::ScalableTag<T> d;
        const auto inUpper = ColorMask(y);
        const std::ptrdiff_t pair = Pair(y);
        const T* colors = m_colors.Line(pair);
        const T* colorsAbove = m_colors.Line(pair - 1);
        const T* colorsBelow = m_colors.Line(pair + 1);
        const T* greens = m_greens.Line(pair);
        const T* greensAbove = m_greens.Line(pair - 1);
        const T* greensBelow = m_greens.Line(pair + 1);
        T* betweenColors = m_betweenColors.Line(pair);
        T* estimates = m_estimates.Line(pair);
        const auto lanes = static_cast<std::ptrdiff_t>(hn::Lanes(d));
        const auto width = static_cast<std::ptrdiff_t>(m_width);
        const T* nextUpper = m_band.source.DirectRow(Reflect(y + 4, m_band.shape.height));
        const T* nextLower = m_band.source.DirectRow(Reflect(y + 5, m_band.shape.height));
        for (auto x = -lanes; x <= width; x += lanes) {
            if (nextUpper && x >= 0) { // Sort() has too little to do to hide that they are far away
                hwy::Prefetch(nextUpper + x);
                hwy::Prefetch(nextLower + x);
            }
            const auto center = hn::LoadU(d, colors + x);
            const auto across = hn::AverageRound(hn::LoadU(d, greens + x - 1), hn::LoadU(d, greens + x + 1));
            // The other row of the pair is below the upper one and above the lower one.
            const auto outside =
                hn::IfThenElse(inUpper, hn::LoadU(d, greensAbove + x), hn::LoadU(d, greensBelow + x));
            const auto down = hn::AverageRound(hn::LoadU(d, greens + x), outside);
            const auto changeAcross = Distance(
                hn::AverageRound(hn::LoadU(d, colors + x - 2), hn::LoadU(d, colors + x + 2)), center);
            const auto changeDown = Distance(
                hn::AverageRound(hn::LoadU(d, colorsAbove + x), hn::LoadU(d, colorsBelow + x)), center);
            // Unsigned comparison by maximum, which every instruction set has for these widths.
            const auto larger = hn::Max(changeAcross, changeDown);
            const auto acrossWins = hn::Ne(larger, changeAcross);
            const auto downWins = hn::Ne(larger, changeDown);
            const auto cross = hn::AverageRound(across, down);
            hn::StoreU(hn::IfThenElse(acrossWins, across, hn::IfThenElse(downWins, down, cross)), d,
                       estimates + x);
            hn::StoreU(hn::AverageRound(hn::LoadU(d, colors + x - 1), hn::LoadU(d, colors + x + 1)), d,
                       betweenColors + x);
        }
    }

    /// @param pair   the row's own, which is also that of one of the rows beside it
    /// @param other  the pair of the row on the other side
    void Finish(std::ptrdiff_t y, std::ptrdiff_t pair, std::ptrdiff_t other) {
        const hn::ScalableTag<T> d;
        const auto ownColor = ColorMask(y);
        const T* greens = m_greens.Line(pair);
        const T* colors = m_colors.Line(pair);
        const T* colorsOther = m_colors.Line(other);
        const T* betweenColors = m_betweenColors.Line(pair);
        const T* betweenColorsOther = m_betweenColors.Line(other);
        const T* estimates = m_estimates.Line(pair);
        const T* estimatesOther = m_estimates.Line(other);
        const auto row = static_cast<std::size_t>(y);
        ColorSink<T>& sink = m_band.sink;
        const WindowRow<T> out{
            {}, sink.BeginRow(row), m_width, PhaseOfRow(m_band.shape.phase, y), sink.PastCaches()};
        ForColorVectors(d, out, [&](std::size_t x, auto& own, auto& green, auto& beside) NORVANE_INNER {
            const auto between = [&](const T* line) NORVANE_INNER {
                return hn::AverageRound(hn::LoadU(d, line + x - 1), hn::LoadU(d, line + x + 1));
            };
            const auto color = hn::LoadU(d, colors + x), betweenColor = hn::LoadU(d, betweenColors + x);
            const auto estimate = hn::LoadU(d, estimates + x), betweenEstimate = between(estimates);
            const auto measured = hn::LoadU(d, greens + x);
            green = hn::IfThenElse(ownColor, estimate, measured);
            own = hn::IfThenElse(ownColor, color, AddDifference(measured, betweenColor, betweenEstimate));
            // Both rows beside this one have their colours where this one has green.
            const auto plus = hn::AverageRound(hn::IfThenElse(ownColor, betweenColor, color),
                                               hn::IfThenElse(ownColor, hn::LoadU(d, betweenColorsOther + x),
                                                              hn::LoadU(d, colorsOther + x)));
            const auto minus = hn::AverageRound(
                hn::IfThenElse(ownColor, betweenEstimate, estimate),
                hn::IfThenElse(ownColor, between(estimatesOther), hn::LoadU(d, estimatesOther + x)));
            beside = AddDifference(green, plus, minus);
        });
        sink.EndRow(row);
    }

    const Band<T>& m_band;
    std::size_t m_width;
    Scratch m_scratch;
    T* m_upperSource; ///< rows to be sorted that do not lie in memory
    T* m_lowerSource;
    // By pair. The last two have a value in every column, for the row whose colour or green is not there.
    LineRing<T, 4> m_colors, m_greens;
    LineRing<T, 2> m_betweenColors, m_estimates;
};

void EdgeSensing8(const Band<std::uint8_t>& band) {
    EdgeSensingBand<std::uint8_t>(band).Run();
}
void EdgeSensing16(const Band<std::uint16_t>& band) {
    EdgeSensingBand<std::uint16_t>(band).Run();
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
