#include "imaging/Demosaic/BandMethods.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Demosaic/Rigorous.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Demosaic/Float-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

// The differences between green and colour along rows and columns are first freed of noise and aliases by a
// local linear estimate (L. Zhang, X. Wu, "Color demosaicking via directional linear minimum mean
// square-error estimation", IEEE Transactions on Image Processing 14(12), 2005), and then joined from the
// four sides with weights that fall with the cube of the differences' change (after I. Pekkucuksen, Y.
// Altunbasak, "Gradient based threshold free color filter array interpolation", ICIP 2010). Red and blue
// follow along the diagonal and the axis on which they change less.

/// The low pass of Zhang and Wu, as shares of one: its middle and the taps beside it.
constexpr float kLowPass[5] = {26.0F / 128, 23.0F / 128, 15.0F / 128, 9.0F / 128, 4.0F / 128};
constexpr std::ptrdiff_t kTaps = 4;

template <class T>
class RigorousBand {
public:
    explicit RigorousBand(const Band<T>& band)
        : m_band(band), m_width(band.shape.width), m_differences(m_scratch, band),
          m_smoothAcross(m_scratch, m_width), m_smoothDown(m_scratch, m_width),
          m_noiseAcross(m_scratch, m_width), m_noiseDown(m_scratch, m_width),
          m_cleanAcross(m_scratch, m_width), m_cleanDown(m_scratch, m_width),
          m_changeAcross(m_scratch, m_width), m_changeDown(m_scratch, m_width),
          m_sumAcross(m_scratch, m_width), m_sumDown(m_scratch, m_width), m_own(m_scratch, m_width),
          m_alongRow(m_scratch, m_width), m_green(m_scratch, m_width), m_other(m_scratch, m_width) {}

    void Run() {
        for (std::size_t row = m_band.first; row < m_band.last; ++row) {
            Output(static_cast<std::ptrdiff_t>(row));
        }
    }

private:
    hn::Mask<FloatTag> GreenSites(std::ptrdiff_t y) const {
        return DirectionalDifferences<T>::FloatGreenMask(PhaseOfRow(m_band.shape.phase, y));
    }

    /// Middle plus the pairs around it, each times its share; sample(k) is the one k steps away.
    template <class Sample>
    static HWY_INLINE FloatVec LowPass(Sample&& sample) {
        const FloatTag d;
        FloatVec sum = hn::Mul(hn::Set(d, kLowPass[0]), sample(0));
        for (std::ptrdiff_t k = 1; k <= kTaps; ++k) {
            sum = hn::Add(sum, hn::Mul(hn::Set(d, kLowPass[k]), hn::Add(sample(-k), sample(k))));
        }
        return sum;
    }

    static HWY_INLINE FloatVec Square(FloatVec v) { return hn::Mul(v, v); }

    /// The smooth part of the differences, and the square of what is left.
    void NeedSmooth(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_smoothAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            m_differences.Need(y - kTaps, y + kTaps);
            const float* across = m_differences.Across(y);
            const float* down = m_differences.Down(y);
            float* smoothAcross = m_smoothAcross.Line(y);
            float* smoothDown = m_smoothDown.Line(y);
            float* noiseAcross = m_noiseAcross.Line(y);
            float* noiseDown = m_noiseDown.Line(y);
            const FloatTag d;
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto s = LowPass([&](std::ptrdiff_t k) HWY_ATTR { return At(across, x + k); });
                hn::StoreU(s, d, smoothAcross + x);
                hn::StoreU(Square(hn::Sub(At(across, x), s)), d, noiseAcross + x);
            });
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto s =
                    LowPass([&](std::ptrdiff_t k) HWY_ATTR { return At(m_differences.Down(y + k), x); });
                hn::StoreU(s, d, smoothDown + x);
                hn::StoreU(Square(hn::Sub(At(down, x), s)), d, noiseDown + x);
            });
        });
    }

    /// Mean of the smooth part plus that share of the deviation from it which is not noise.
    template <class Smooth, class Noise>
    static HWY_INLINE FloatVec Estimate(FloatVec difference, Smooth&& smooth, Noise&& noise) {
        const FloatTag d;
        FloatVec mean = smooth(-kTaps), noisePower = noise(-kTaps);
        for (std::ptrdiff_t k = 1 - kTaps; k <= kTaps; ++k) {
            mean = hn::Add(mean, smooth(k));
            noisePower = hn::Add(noisePower, noise(k));
        }
        mean = hn::Mul(mean, hn::Set(d, 1.0F / (2 * kTaps + 1)));
        FloatVec power = Square(hn::Sub(smooth(-kTaps), mean));
        for (std::ptrdiff_t k = 1 - kTaps; k <= kTaps; ++k) {
            power = hn::Add(power, Square(hn::Sub(smooth(k), mean)));
        }
        const auto share = hn::Div(power, hn::Add(hn::Add(power, noisePower), hn::Set(d, 0.01F)));
        return hn::Add(mean, hn::Mul(share, hn::Sub(difference, mean)));
    }

    void NeedClean(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_cleanAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedSmooth(y - kTaps, y + kTaps);
            const float* across = m_differences.Across(y);
            const float* down = m_differences.Down(y);
            const float* smooth = m_smoothAcross.Line(y);
            const float* noise = m_noiseAcross.Line(y);
            float* cleanAcross = m_cleanAcross.Line(y);
            float* cleanDown = m_cleanDown.Line(y);
            const FloatTag d;
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(Estimate(
                               At(across, x), [&](std::ptrdiff_t k) HWY_ATTR { return At(smooth, x + k); },
                               [&](std::ptrdiff_t k) HWY_ATTR { return At(noise, x + k); }),
                           d, cleanAcross + x);
            });
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(Estimate(
                               At(down, x),
                               [&](std::ptrdiff_t k) HWY_ATTR { return At(m_smoothDown.Line(y + k), x); },
                               [&](std::ptrdiff_t k) HWY_ATTR { return At(m_noiseDown.Line(y + k), x); }),
                           d, cleanDown + x);
            });
        });
    }

    /// Change of the differences across each site; downwards summed over three columns.
    void NeedChanges(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_changeAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            m_differences.Need(y - 1, y + 1);
            const float* across = m_differences.Across(y);
            const float* above = m_differences.Down(y - 1);
            const float* below = m_differences.Down(y + 1);
            float* changeAcross = m_changeAcross.Line(y);
            float* changeDown = m_changeDown.Line(y);
            float* sumDown = m_sumDown.Line(y);
            const FloatTag d;
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(hn::Abs(hn::Sub(At(across, x - 1), At(across, x + 1))), d, changeAcross + x);
                hn::StoreU(hn::Abs(hn::Sub(At(above, x), At(below, x))), d, changeDown + x);
            });
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(hn::Add(hn::Add(At(changeDown, x - 1), At(changeDown, x + 1)), At(changeDown, x)),
                           d, sumDown + x);
            });
        });
    }

    /// Change along the row, summed over three rows.
    void NeedSumAcross(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_sumAcross.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedChanges(y - 4, y + 4);
            const float* above = m_changeAcross.Line(y - 1);
            const float* here = m_changeAcross.Line(y);
            const float* below = m_changeAcross.Line(y + 1);
            float* out = m_sumAcross.Line(y);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                hn::StoreU(hn::Add(hn::Add(At(above, x), At(below, x)), At(here, x)), FloatTag(), out + x);
            });
        });
    }

    /// Green minus own colour at colour sites, green everywhere, and how much rows count against columns.
    void NeedOwn(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_own.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedClean(y - 2, y + 2);
            NeedSumAcross(y, y);
            const float* sumAcross = m_sumAcross.Line(y);
            const float* cleanAcross = m_cleanAcross.Line(y);
            const float* mosaic = m_differences.Mosaic(y);
            const auto greenMask = GreenSites(y);
            float* own = m_own.Line(y);
            float* alongRow = m_alongRow.Line(y);
            float* green = m_green.Line(y);
            const FloatTag d;
            const auto one = hn::Set(d, 1.0F), half = hn::Set(d, 0.5F), quarter = hn::Set(d, 0.25F);
            const auto share = hn::Set(d, 1.0F / 1.75F), least = hn::Set(d, 0.1F);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto weight = [&](const auto& change) HWY_ATTR {
                    FloatVec sum = least;
                    for (std::ptrdiff_t k = 0; k <= 4; ++k) {
                        sum = hn::Add(sum, change(k));
                    }
                    return hn::Div(one, hn::Mul(hn::Mul(sum, sum), sum));
                };
                const auto mean = [&](FloatVec a, FloatVec b, FloatVec c) HWY_ATTR {
                    return hn::Add(hn::Add(a, hn::Mul(half, b)), hn::Mul(quarter, c));
                };
                const auto west = weight([&](std::ptrdiff_t k) HWY_ATTR { return At(sumAcross, x - k); });
                const auto east = weight([&](std::ptrdiff_t k) HWY_ATTR { return At(sumAcross, x + k); });
                const auto north =
                    weight([&](std::ptrdiff_t k) HWY_ATTR { return At(m_sumDown.Line(y - k), x); });
                const auto south =
                    weight([&](std::ptrdiff_t k) HWY_ATTR { return At(m_sumDown.Line(y + k), x); });
                const auto atWest = mean(At(cleanAcross, x), At(cleanAcross, x - 1), At(cleanAcross, x - 2));
                const auto atEast = mean(At(cleanAcross, x), At(cleanAcross, x + 1), At(cleanAcross, x + 2));
                const auto down = [&](std::ptrdiff_t k) HWY_ATTR { return At(m_cleanDown.Line(y + k), x); };
                const auto atNorth = mean(down(0), down(-1), down(-2));
                const auto atSouth = mean(down(0), down(1), down(2));
                const auto sides = hn::Add(west, east);
                const auto all = hn::Add(sides, hn::Add(north, south));
                const auto sum = hn::Add(hn::Add(hn::Mul(west, atWest), hn::Mul(east, atEast)),
                                         hn::Add(hn::Mul(north, atNorth), hn::Mul(south, atSouth)));
                const auto difference = hn::Div(hn::Mul(share, sum), all);
                const auto center = At(mosaic, x);
                hn::StoreU(difference, d, own + x);
                hn::StoreU(hn::Div(sides, all), d, alongRow + x);
                hn::StoreU(hn::IfThenElse(greenMask, center, hn::Add(center, difference)), d, green + x);
            });
        });
    }

    /// Green minus other colour at colour sites: along the diagonal on which it changes less, sharpened by
    /// the next samples out.
    void NeedOther(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_other.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR {
            NeedOwn(y - 3, y + 3);
            const float* up3 = m_own.Line(y - 3);
            const float* up1 = m_own.Line(y - 1);
            const float* down1 = m_own.Line(y + 1);
            const float* down3 = m_own.Line(y + 3);
            const float* greenUp = m_green.Line(y - 1);
            const float* green = m_green.Line(y);
            const float* greenDown = m_green.Line(y + 1);
            float* out = m_other.Line(y);
            const FloatTag d;
            const auto half = hn::Set(d, 0.5F), two = hn::Set(d, 2.0F), share = hn::Set(d, 1.0F / 32);
            ForFloatVectors(m_width, [&](std::ptrdiff_t x) HWY_ATTR {
                const auto northWest = At(up1, x - 1), northEast = At(up1, x + 1);
                const auto southWest = At(down1, x - 1), southEast = At(down1, x + 1);
                const auto center = At(green, x);
                const auto change = [&](FloatVec a, FloatVec b, FloatVec greenA, FloatVec greenB) HWY_ATTR {
                    const auto greens =
                        hn::Add(hn::Abs(hn::Sub(greenA, center)), hn::Abs(hn::Sub(greenB, center)));
                    return Square(hn::Add(hn::Add(hn::Abs(hn::Sub(a, b)), greens), two));
                };
                const auto falling = change(northWest, southEast, At(greenUp, x - 1), At(greenDown, x + 1));
                const auto rising = change(northEast, southWest, At(greenUp, x + 1), At(greenDown, x - 1));
                const auto onFalling = hn::Add(northWest, southEast),
                           onRising = hn::Add(northEast, southWest);
                const auto diagonal =
                    hn::Div(hn::Mul(half, hn::Add(hn::Mul(rising, onFalling), hn::Mul(falling, onRising))),
                            hn::Add(falling, rising));
                const auto sides = [&](const float* line, std::ptrdiff_t step)
                                       HWY_ATTR { return hn::Add(At(line, x - step), At(line, x + step)); };
                const auto far =
                    hn::Add(hn::Add(sides(up3, 1), sides(down3, 1)), hn::Add(sides(up1, 3), sides(down1, 3)));
                // The linear filter of twelve samples less the plain mean of the four nearest.
                const auto sharper = hn::Mul(share, hn::Sub(hn::Mul(two, hn::Add(onFalling, onRising)), far));
                hn::StoreU(hn::Add(diagonal, sharper), d, out + x);
            });
        });
    }

    void Output(std::ptrdiff_t y) {
        NeedOther(y - 1, y + 1);
        const auto greenMask = GreenSites(y);
        const float* mosaic = m_differences.Mosaic(y);
        const float* greenLine = m_green.Line(y);
        const float* own = m_own.Line(y);
        const float* ownAbove = m_own.Line(y - 1);
        const float* ownBelow = m_own.Line(y + 1);
        const float* other = m_other.Line(y);
        const float* otherAbove = m_other.Line(y - 1);
        const float* otherBelow = m_other.Line(y + 1);
        const float* alongRow = m_alongRow.Line(y);
        const FloatTag d;
        const auto half = hn::Set(d, 0.5F);
        StoreFloatRow(
            m_band, y,
            [&](std::ptrdiff_t x, FloatVec& outOwn, FloatVec& outGreen, FloatVec& outOther) HWY_ATTR {
                // In the rows beside, the two colours have changed places.
                const auto rowShare = At(alongRow, x);
                const auto mean = [&](const float* beside, const float* above, const float* below) HWY_ATTR {
                    const auto onRow = hn::Mul(half, hn::Add(At(beside, x - 1), At(beside, x + 1)));
                    const auto onColumn = hn::Mul(half, hn::Add(At(above, x), At(below, x)));
                    return hn::Add(onColumn, hn::Mul(rowShare, hn::Sub(onRow, onColumn)));
                };
                const auto green = At(greenLine, x);
                outGreen = green;
                outOwn = hn::IfThenElse(greenMask, hn::Sub(green, mean(own, otherAbove, otherBelow)),
                                        At(mosaic, x));
                outOther =
                    hn::Sub(green, hn::IfThenElse(greenMask, mean(other, ownAbove, ownBelow), At(other, x)));
            });
    }

    Scratch m_scratch;
    const Band<T>& m_band;
    std::size_t m_width;
    DirectionalDifferences<T> m_differences;
    FloatStage m_smoothAcross, m_smoothDown, m_noiseAcross, m_noiseDown, m_cleanAcross, m_cleanDown,
        m_changeAcross, m_changeDown, m_sumAcross, m_sumDown, m_own, m_alongRow, m_green, m_other;
};

template <class T>
void Rigorous(const Band<T>& band) {
    RigorousBand<T>(band).Run();
}

void Rigorous8(const Band<std::uint8_t>& band) {
    Rigorous(band);
}
void Rigorous16(const Band<std::uint16_t>& band) {
    Rigorous(band);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {

HWY_EXPORT(Rigorous8);
HWY_EXPORT(Rigorous16);

template <>
void RigorousRows(const Band<std::uint8_t>& band) {
    HWY_DYNAMIC_DISPATCH(Rigorous8)(band);
}
template <>
void RigorousRows(const Band<std::uint16_t>& band) {
    HWY_DYNAMIC_DISPATCH(Rigorous16)(band);
}

} // namespace Norvane::Imaging
#endif
