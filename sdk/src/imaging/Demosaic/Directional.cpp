#include "imaging/Demosaic/BandMethods.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/Directional.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Float-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// D. Menon, S. Andriani, G. Calvagno, "Demosaicing with directional filtering and a posteriori decision",
// IEEE Transactions on Image Processing 16(1), 2007, with the refining step. Colours are carried as
// differences from green: of the row's own colour, and of the other one.

template <class T>
class DirectionalBand {
public:
    explicit DirectionalBand(const Band<T>& band)
        : m_band(band), m_width(band.shape.width), m_differences(m_scratch, band),
          m_changeAcross(m_scratch, m_width), m_changeDown(m_scratch, m_width), m_choice(m_scratch, m_width),
          m_own(m_scratch, m_width), m_otherAtGreen(m_scratch, m_width), m_other(m_scratch, m_width),
          m_ownRefined(m_scratch, m_width), m_otherRefined(m_scratch, m_width) {}

    void Run() {
        for (std::size_t row = m_band.first; row < m_band.last; ++row) {
            Output(static_cast<std::ptrdiff_t>(row));
        }
    }

private:
    hn::Mask<FloatTag> GreenSites(std::ptrdiff_t y) const {
        return DirectionalDifferences<T>::FloatGreenMask(PhaseOfRow(m_band.shape.phase, y));
    }

    /// How much the differences change from one site of a colour to the next, to the right and downwards.
    void NeedChanges(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_changeAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            m_differences.Need(y, y + 2);
            const float* across = m_differences.Across(y);
            const float* down = m_differences.Down(y);
            const float* below = m_differences.Down(y + 2);
            float* changeAcross = m_changeAcross.Line(y);
            float* changeDown = m_changeDown.Line(y);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const FloatTag d;
                hn::StoreU(hn::Abs(hn::Sub(At(across, x), At(across, x + 2))), d, changeAcross + x);
                hn::StoreU(hn::Abs(hn::Sub(At(down, x), At(below, x))), d, changeDown + x);
            });
        });
    }

    /// The direction of each site, 1 along the row and 0 along the column, and the own colour's difference.
    void NeedOwn(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_choice.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedChanges(y - 2, y + 2);
            const auto a = [&](std::ptrdiff_t dy) { return m_changeAcross.Line(y + dy); };
            const auto v = [&](std::ptrdiff_t dy) { return m_changeDown.Line(y + dy); };
            const float* across = m_differences.Across(y);
            const float* down = m_differences.Down(y);
            const auto greenMask = GreenSites(y);
            float* choice = m_choice.Line(y);
            float* own = m_own.Line(y);
            const FloatTag d;
            const auto three = hn::Set(d, 3.0F), one = hn::Set(d, 1.0F);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto sum = [](FloatVec p, FloatVec q, FloatVec r, FloatVec s)
                                     HWY_ATTR { return hn::Add(hn::Add(p, q), hn::Add(r, s)); };
                const auto alongRow =
                    hn::Add(hn::Add(hn::Mul(three, hn::Add(At(a(0), x), At(a(0), x - 2))),
                                    sum(At(a(-2), x), At(a(-2), x - 2), At(a(2), x), At(a(2), x - 2))),
                            hn::Add(At(a(-1), x - 1), At(a(1), x - 1)));
                const auto alongColumn = hn::Add(
                    hn::Add(hn::Mul(three, hn::Add(At(v(0), x), At(v(-2), x))),
                            sum(At(v(0), x - 2), At(v(-2), x - 2), At(v(0), x + 2), At(v(-2), x + 2))),
                    hn::Add(At(v(-1), x - 1), At(v(-1), x + 1)));
                const auto rowWins = hn::Ge(alongColumn, alongRow);
                hn::StoreU(hn::IfThenElse(rowWins, one, hn::Zero(d)), d, choice + x);
                hn::StoreU(hn::Neg(hn::IfThenElse(rowWins, At(across, x), At(down, x))), d, own + x);
            });
            FillGreenSites(own, greenMask);
        });
    }

    /// The own colour's difference at green sites: the mean of both neighbours'.
    HWY_INLINE void FillGreenSites(float* own, hn::Mask<FloatTag> greenMask) {
        const FloatTag d;
        const auto half = hn::Set(d, 0.5F);
        ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
            // A green site's neighbours are colour sites, which this leaves as they are.
            const auto mean = hn::Mul(half, hn::Add(At(own, x - 1), At(own, x + 1)));
            hn::StoreU(hn::IfThenElse(greenMask, mean, At(own, x)), d, own + x);
        });
    }

    /// The other colour's difference at green sites, from the rows above and below, whose own colour it is.
    void NeedOtherAtGreen(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_otherAtGreen.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOwn(y - 1, y + 1);
            MeanOfRows(m_own.Line(y - 1), m_own.Line(y + 1), m_otherAtGreen.Line(y));
        });
    }

    HWY_INLINE void MeanOfRows(const float* above, const float* below, float* out) {
        const FloatTag d;
        const auto half = hn::Set(d, 0.5F);
        ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
            hn::StoreU(hn::Mul(half, hn::Add(At(above, x), At(below, x))), d, out + x);
        });
    }

    /// The other colour's difference everywhere; at colour sites along the chosen direction.
    void NeedOther(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_other.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOtherAtGreen(y - 1, y + 1);
            const auto greenMask = GreenSites(y);
            const float* own = m_own.Line(y);
            const float* ownAbove = m_own.Line(y - 1);
            const float* ownBelow = m_own.Line(y + 1);
            const float* other = m_otherAtGreen.Line(y);
            const float* otherAbove = m_otherAtGreen.Line(y - 1);
            const float* otherBelow = m_otherAtGreen.Line(y + 1);
            const float* choice = m_choice.Line(y);
            float* out = m_other.Line(y);
            const FloatTag d;
            const auto half = hn::Set(d, 0.5F);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto alongRow = hn::Add(hn::Sub(At(other, x - 1), At(own, x - 1)),
                                              hn::Sub(At(other, x + 1), At(own, x + 1)));
                // In the rows beside, the two colours have changed places.
                const auto alongColumn = hn::Add(hn::Sub(At(ownAbove, x), At(otherAbove, x)),
                                                 hn::Sub(At(ownBelow, x), At(otherBelow, x)));
                const auto rowWins = hn::Gt(At(choice, x), half);
                const auto atColor =
                    hn::Add(At(own, x), hn::Mul(half, hn::IfThenElse(rowWins, alongRow, alongColumn)));
                hn::StoreU(hn::IfThenElse(greenMask, At(other, x), atColor), d, out + x);
            });
        });
    }

    /// Refined green: the own colour's difference, smoothed along the chosen direction.
    void NeedOwnRefined(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_ownRefined.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOther(y - 1, y + 1);
            const float* own = m_own.Line(y);
            const float* above = m_other.Line(y - 1);
            const float* below = m_other.Line(y + 1);
            const float* choice = m_choice.Line(y);
            float* out = m_ownRefined.Line(y);
            const FloatTag d;
            const auto half = hn::Set(d, 0.5F), third = hn::Set(d, 1.0F / 3);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto rowWins = hn::Gt(At(choice, x), half);
                const auto sides = hn::IfThenElse(rowWins, hn::Add(At(own, x - 1), At(own, x + 1)),
                                                  hn::Add(At(above, x), At(below, x)));
                hn::StoreU(hn::Mul(third, hn::Add(sides, At(own, x))), d, out + x);
            });
            FillGreenSites(out, GreenSites(y));
        });
    }

    void NeedOtherRefined(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_otherRefined.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOwnRefined(y - 1, y + 1);
            MeanOfRows(m_ownRefined.Line(y - 1), m_ownRefined.Line(y + 1), m_otherRefined.Line(y));
        });
    }

    void Output(std::ptrdiff_t y) {
        NeedOtherRefined(y - 1, y + 1);
        const auto greenMask = GreenSites(y);
        const float* mosaic = m_differences.Mosaic(y);
        const float* own = m_ownRefined.Line(y);
        const float* ownAbove = m_ownRefined.Line(y - 1);
        const float* ownBelow = m_ownRefined.Line(y + 1);
        const float* other = m_otherRefined.Line(y);
        const float* otherAbove = m_otherRefined.Line(y - 1);
        const float* otherBelow = m_otherRefined.Line(y + 1);
        const float* ownBefore = m_own.Line(y);
        const float* otherBefore = m_other.Line(y);
        const float* choice = m_choice.Line(y);
        const FloatTag d;
        const auto half = hn::Set(d, 0.5F), third = hn::Set(d, 1.0F / 3);
        StoreFloatRow(
            m_band, y,
            [&](std::ptrdiff_t x, FloatVec& outOwn, FloatVec& outGreen, FloatVec& outOther) HWY_ATTR {
                const auto center = At(mosaic, x);
                const auto alongRow = hn::Add(hn::Sub(At(other, x - 1), At(own, x - 1)),
                                              hn::Sub(At(other, x + 1), At(own, x + 1)));
                const auto alongColumn = hn::Add(hn::Sub(At(ownAbove, x), At(otherAbove, x)),
                                                 hn::Sub(At(ownBelow, x), At(otherBelow, x)));
                const auto sides = hn::IfThenElse(hn::Gt(At(choice, x), half), alongRow, alongColumn);
                const auto before = hn::Sub(At(otherBefore, x), At(ownBefore, x));
                const auto otherLessOwn = hn::Mul(third, hn::Add(sides, before));
                outGreen = hn::IfThenElse(greenMask, center, hn::Sub(center, At(own, x)));
                outOwn = hn::IfThenElse(greenMask, hn::Add(center, At(own, x)), center);
                outOther = hn::Add(center, hn::IfThenElse(greenMask, At(other, x), otherLessOwn));
            });
    }

    Scratch m_scratch;
    const Band<T>& m_band;
    std::size_t m_width;
    DirectionalDifferences<T> m_differences;
    FloatStage m_changeAcross, m_changeDown, m_choice, m_own, m_otherAtGreen, m_other, m_ownRefined,
        m_otherRefined;
};

template <class T>
void Directional(const Band<T>& band) {
    DirectionalBand<T>(band).Run();
}

void Directional8(const Band<std::uint8_t>& band) {
    Directional(band);
}
void Directional16(const Band<std::uint16_t>& band) {
    Directional(band);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(Directional8);
HWY_EXPORT(Directional16);

template <>
void DirectionalRows(const Band<std::uint8_t>& band) {
    HWY_DYNAMIC_DISPATCH(Directional8)(band);
}
template <>
void DirectionalRows(const Band<std::uint16_t>& band) {
    HWY_DYNAMIC_DISPATCH(Directional16)(band);
}

} // namespace Norvane::Imaging
#endif
