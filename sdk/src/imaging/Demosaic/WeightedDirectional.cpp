#include "imaging/Demosaic/BandMethods.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/WeightedDirectional.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Float-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// I. Pekkucuksen, Y. Altunbasak, "Gradient based threshold free color filter array interpolation", ICIP 2010:
// green is the colour present plus the difference's means to the four sides, each weighted by how little the
// difference changes there. The differences are then interpolated.

template <class T>
class WeightedDirectionalBand {
public:
    explicit WeightedDirectionalBand(const Band<T>& band)
        : m_band(band), m_width(band.shape.width), m_differences(m_scratch, band),
          m_changeAcross(m_scratch, m_width), m_changeDown(m_scratch, m_width), m_across(m_scratch, m_width),
          m_down(m_scratch, m_width), m_own(m_scratch, m_width), m_other(m_scratch, m_width) {}

    void Run() {
        for (std::size_t row = m_band.first; row < m_band.last; ++row) {
            Output(static_cast<std::ptrdiff_t>(row));
        }
    }

private:
    static HWY_INLINE FloatVec Five(FloatVec a, FloatVec b, FloatVec c, FloatVec e, FloatVec f) {
        return hn::Add(hn::Add(hn::Add(a, e), hn::Add(b, f)), c);
    }

    /// Change of the differences across each site; downwards summed over five columns.
    void NeedChanges(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_changeAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            m_differences.Need(y - 1, y + 1);
            const float* across = m_differences.Across(y);
            const float* above = m_differences.Down(y - 1);
            const float* below = m_differences.Down(y + 1);
            float* changeAcross = m_changeAcross.Line(y);
            float* changeDown = m_changeDown.Line(y);
            float* down = m_down.Line(y);
            const FloatTag d;
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(hn::Abs(hn::Sub(At(across, x - 1), At(across, x + 1))), d, changeAcross + x);
                hn::StoreU(hn::Abs(hn::Sub(At(above, x), At(below, x))), d, changeDown + x);
            });
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(Five(At(changeDown, x - 2), At(changeDown, x - 1), At(changeDown, x),
                                At(changeDown, x + 1), At(changeDown, x + 2)),
                           d, down + x);
            });
        });
    }

    /// Change along the row, summed over five rows.
    void NeedAcross(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_across.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedChanges(y - 4, y + 4);
            const auto line = [&](std::ptrdiff_t dy) { return m_changeAcross.Line(y + dy); };
            float* out = m_across.Line(y);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(
                    Five(At(line(-2), x), At(line(-1), x), At(line(0), x), At(line(1), x), At(line(2), x)),
                    FloatTag(), out + x);
            });
        });
    }

    /// Green minus own colour at colour sites.
    void NeedOwn(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_own.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedAcross(y, y);
            m_differences.Need(y - 4, y + 4);
            const float* across = m_across.Line(y);
            const float* difference = m_differences.Across(y);
            const auto change = [&](std::ptrdiff_t dy) { return m_down.Line(y + dy); };
            const auto down = [&](std::ptrdiff_t dy) { return m_differences.Down(y + dy); };
            float* out = m_own.Line(y);
            const FloatTag d;
            const auto fifth = hn::Set(d, 0.2F), one = hn::Set(d, 1.0F), least = hn::Set(d, 0.1F);
            const auto weight = [&](FloatVec sum) HWY_ATTR {
                const auto s = hn::Add(sum, least);
                return hn::Div(one, hn::Mul(s, s));
            };
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto alongRow = [&](const float* line, std::ptrdiff_t step) HWY_ATTR {
                    return Five(At(line, x), At(line, x + step), At(line, x + 2 * step),
                                At(line, x + 3 * step), At(line, x + 4 * step));
                };
                const auto alongColumn = [&](const auto& line, std::ptrdiff_t step) HWY_ATTR {
                    return Five(At(line(0), x), At(line(step), x), At(line(2 * step), x),
                                At(line(3 * step), x), At(line(4 * step), x));
                };
                const auto north = weight(alongColumn(change, -1)), south = weight(alongColumn(change, 1));
                const auto west = weight(alongRow(across, -1)), east = weight(alongRow(across, 1));
                const auto upright =
                    hn::Add(hn::Mul(north, alongColumn(down, -1)), hn::Mul(south, alongColumn(down, 1)));
                const auto beside =
                    hn::Add(hn::Mul(west, alongRow(difference, -1)), hn::Mul(east, alongRow(difference, 1)));
                const auto weights = hn::Add(hn::Add(north, south), hn::Add(west, east));
                hn::StoreU(hn::Div(hn::Mul(fifth, hn::Add(upright, beside)), weights), d, out + x);
            });
        });
    }

    /// Green minus other colour at colour sites, out of the twelve nearest that have it.
    void NeedOther(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_other.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOwn(y - 3, y + 3);
            const float* up3 = m_own.Line(y - 3);
            const float* up1 = m_own.Line(y - 1);
            const float* down1 = m_own.Line(y + 1);
            const float* down3 = m_own.Line(y + 3);
            float* out = m_other.Line(y);
            const FloatTag d;
            const auto ten = hn::Set(d, 10.0F), share = hn::Set(d, 1.0F / 32);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto sides = [&](const float* line, std::ptrdiff_t step)
                                       HWY_ATTR { return hn::Add(At(line, x - step), At(line, x + step)); };
                const auto near = hn::Add(sides(up1, 1), sides(down1, 1));
                const auto far =
                    hn::Add(hn::Add(sides(up3, 1), sides(down3, 1)), hn::Add(sides(up1, 3), sides(down1, 3)));
                hn::StoreU(hn::Mul(share, hn::Sub(hn::Mul(ten, near), far)), d, out + x);
            });
        });
    }

    void Output(std::ptrdiff_t y) {
        NeedOther(y - 1, y + 1);
        const auto greenMask = DirectionalDifferences<T>::FloatGreenMask(PhaseOfRow(m_band.shape.phase, y));
        const float* mosaic = m_differences.Mosaic(y);
        const float* own = m_own.Line(y);
        const float* ownAbove = m_own.Line(y - 1);
        const float* ownBelow = m_own.Line(y + 1);
        const float* other = m_other.Line(y);
        const float* otherAbove = m_other.Line(y - 1);
        const float* otherBelow = m_other.Line(y + 1);
        const FloatTag d;
        const auto quarter = hn::Set(d, 0.25F);
        StoreFloatRow(
            m_band, y,
            [&](std::ptrdiff_t x, FloatVec& outOwn, FloatVec& outGreen, FloatVec& outOther) HWY_ATTR {
                // In the rows beside, the two colours have changed places.
                const auto mean = [&](const float* beside, const float* above, const float* below) HWY_ATTR {
                    return hn::Mul(quarter, hn::Add(hn::Add(At(beside, x - 1), At(beside, x + 1)),
                                                    hn::Add(At(above, x), At(below, x))));
                };
                const auto center = At(mosaic, x);
                const auto green = hn::IfThenElse(greenMask, center, hn::Add(center, At(own, x)));
                outGreen = green;
                outOwn = hn::IfThenElse(greenMask, hn::Sub(green, mean(own, otherAbove, otherBelow)), center);
                outOther =
                    hn::Sub(green, hn::IfThenElse(greenMask, mean(other, ownAbove, ownBelow), At(other, x)));
            });
    }

    Scratch m_scratch;
    const Band<T>& m_band;
    std::size_t m_width;
    DirectionalDifferences<T> m_differences;
    FloatStage m_changeAcross, m_changeDown, m_across, m_down, m_own, m_other;
};

template <class T>
void WeightedDirectional(const Band<T>& band) {
    WeightedDirectionalBand<T>(band).Run();
}

void WeightedDirectional8(const Band<std::uint8_t>& band) {
    WeightedDirectional(band);
}
void WeightedDirectional16(const Band<std::uint16_t>& band) {
    WeightedDirectional(band);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(WeightedDirectional8);
HWY_EXPORT(WeightedDirectional16);

template <>
void WeightedDirectionalRows(const Band<std::uint8_t>& band) {
    HWY_DYNAMIC_DISPATCH(WeightedDirectional8)(band);
}
template <>
void WeightedDirectionalRows(const Band<std::uint16_t>& band) {
    HWY_DYNAMIC_DISPATCH(WeightedDirectional16)(band);
}

} // namespace Norvane::Imaging
#endif
