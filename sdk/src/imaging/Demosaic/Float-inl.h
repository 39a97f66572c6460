// What the methods that work in floating point share; included once per instruction set (see
// hwy/foreach_target.h).
#if defined(NORVANE_DEMOSAIC_FLOAT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVANE_DEMOSAIC_FLOAT_INL_H
#undef NORVANE_DEMOSAIC_FLOAT_INL_H
#else
#define NORVANE_DEMOSAIC_FLOAT_INL_H
#endif

#include "hwy/highway.h"
#include "imaging/Demosaic/BandMethods.h"
#include "imaging/Demosaic/Vector-inl.h"

#include <limits>

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

using FloatTag = hn::ScalableTag<float>;
using FloatVec = hn::Vec<FloatTag>;

/// How far a method may look from a pixel, all its stages together.
constexpr std::ptrdiff_t kFloatReach = 16;
/// Lines that a stage keeps: more than the rows between the newest one and the oldest that is still looked
/// at.
constexpr std::size_t kFloatLines = 32;

HWY_INLINE FloatVec At(const float* line, std::ptrdiff_t x) {
    return hn::LoadU(FloatTag(), line + x);
}

/// Calls `f(x)` for vectors that cover the image's columns and the reach on both sides. The outermost of
/// these columns come out meaningless where a stage looks beside them; no pixel depends on those.
template <class Function>
HWY_INLINE void ForFloatVectors(std::size_t width, Function&& f) {
    const auto end = static_cast<std::ptrdiff_t>(width) + kFloatReach;
    for (std::ptrdiff_t x = -kFloatReach; x < end; x += static_cast<std::ptrdiff_t>(hn::Lanes(FloatTag()))) {
        f(x);
    }
}

/// One stage's lines. Rows are made in order, each when it is first needed.
class FloatStage {
public:
    FloatStage(Scratch& scratch, std::size_t width) : m_ring(scratch, width) {}

    float* Line(std::ptrdiff_t y) const { return m_ring.Line(y); }

    /// Makes the rows up to `last` with make(y), from `first` on when it is the first time.
    template <class Make>
    void Need(std::ptrdiff_t first, std::ptrdiff_t last, Make&& make) {
        if (!m_started) {
            m_next = first;
            m_started = true;
        }
        for (; m_next <= last; ++m_next) {
            make(m_next);
        }
    }

private:
    LineRing<float, kFloatLines> m_ring;
    std::ptrdiff_t m_next = 0;
    bool m_started = false;
};

/// The mosaic in units of one 256th of full scale, reflected outside of the image, and the differences
/// between green and the colour present, as seen along rows and along columns. Both estimate the missing one
/// of the two by the neighbours' mean, corrected by the second derivative of the one present (J. F. Hamilton,
/// J. E. Adams, US patent 5,629,734, expired).
template <class T>
class DirectionalDifferences {
public:
    DirectionalDifferences(Scratch& scratch, const Band<T>& band)
        : m_band(band), m_samples(scratch.Take<T>(band.shape.width + 2 * kLinePadding) + kLinePadding),
          m_mosaic(scratch, band.shape.width), m_across(scratch, band.shape.width),
          m_down(scratch, band.shape.width) {}

    void Need(std::ptrdiff_t first, std::ptrdiff_t last) {
        m_mosaic.Need(first - 2, last + 2, [this](std::ptrdiff_t y) HWY_ATTR { ReadRow(y); });
        m_across.Need(first, last, [this](std::ptrdiff_t y) HWY_ATTR { Subtract(y); });
    }

    const float* Mosaic(std::ptrdiff_t y) const { return m_mosaic.Line(y); }
    const float* Across(std::ptrdiff_t y) const { return m_across.Line(y); }
    const float* Down(std::ptrdiff_t y) const { return m_down.Line(y); }

private:
    HWY_INLINE void ReadRow(std::ptrdiff_t y) {
        const FloatTag d;
        const hn::Rebind<T, FloatTag> dt;
        const hn::Rebind<std::int32_t, FloatTag> di;
        const std::size_t width = m_band.shape.width;
        m_band.source.ReadRow(Reflect(y, m_band.shape.height), m_samples);
        ReflectEnds(m_samples, width, kFloatReach);
        float* line = m_mosaic.Line(y);
        const auto unit = hn::Set(d, sizeof(T) == 1 ? 1.0F : 1.0F / 256);
        ForFloatVectors(width, [&](std::ptrdiff_t x) HWY_ATTR {
            const auto wide = hn::PromoteTo(di, hn::LoadU(dt, m_samples + x));
            hn::StoreU(hn::Mul(hn::ConvertTo(d, wide), unit), d, line + x);
        });
    }

    HWY_INLINE void Subtract(std::ptrdiff_t y) {
        const FloatTag d;
        const float* here = m_mosaic.Line(y);
        const float* up1 = m_mosaic.Line(y - 1);
        const float* up2 = m_mosaic.Line(y - 2);
        const float* down1 = m_mosaic.Line(y + 1);
        const float* down2 = m_mosaic.Line(y + 2);
        float* across = m_across.Line(y);
        float* down = m_down.Line(y);
        const auto half = hn::Set(d, 0.5F), quarter = hn::Set(d, 0.25F);
        // The sign makes it green minus colour at both kinds of sites.
        const auto sign = hn::IfThenElse(FloatGreenMask(PhaseOfRow(m_band.shape.phase, y)), hn::Set(d, -1.0F),
                                         hn::Set(d, 1.0F));
        ForFloatVectors(m_band.shape.width, [&](std::ptrdiff_t x) HWY_ATTR {
            const auto center = At(here, x);
            const auto estimate = [&](FloatVec near, FloatVec far) HWY_ATTR {
                // near / 2 + (2 * center - far) / 4 - center
                return hn::Mul(sign, hn::Sub(hn::Sub(hn::Mul(near, half), hn::Mul(far, quarter)),
                                             hn::Mul(center, half)));
            };
            hn::StoreU(estimate(hn::Add(At(here, x - 1), At(here, x + 1)),
                                hn::Add(At(here, x - 2), At(here, x + 2))),
                       d, across + x);
            hn::StoreU(estimate(hn::Add(At(up1, x), At(down1, x)), hn::Add(At(up2, x), At(down2, x))), d,
                       down + x);
        });
    }

public:
    static HWY_INLINE hn::Mask<FloatTag> FloatGreenMask(RowPhase phase) {
        const FloatTag d;
        const hn::RebindToSigned<FloatTag> di;
        const auto odd = hn::And(hn::Iota(di, 0), hn::Set(di, 1));
        return hn::MaskFromVec(
            hn::BitCast(d, hn::VecFromMask(di, hn::Eq(odd, hn::Set(di, phase.greenFirst ? 0 : 1)))));
    }

private:
    const Band<T>& m_band;
    T* m_samples;
    FloatStage m_mosaic, m_across, m_down;
};

/// Stores one output row out of `pixels(x, own, green, other)`, rounded and kept in range.
template <class T, class Function>
HWY_INLINE void StoreFloatRow(const Band<T>& band, std::ptrdiff_t y, Function&& pixels) {
    const FloatTag d;
    const hn::Rebind<T, FloatTag> dt;
    const hn::Rebind<std::int32_t, FloatTag> di;
    const std::size_t width = band.shape.width;
    const std::size_t lanes = hn::Lanes(d);
    const bool redRow = PhaseOfRow(band.shape.phase, y).redRow;
    const auto row = static_cast<std::size_t>(y);
    const auto unit = hn::Set(d, sizeof(T) == 1 ? 1.0F : 256.0F);
    const auto top = hn::Set(d, static_cast<float>(std::numeric_limits<T>::max()));
    const auto round = [&](FloatVec value) HWY_ATTR {
        const auto inRange = hn::Min(hn::Max(hn::Mul(value, unit), hn::Zero(d)), top);
        return hn::DemoteTo(dt, hn::ConvertTo(di, hn::Add(inRange, hn::Set(d, 0.5F))));
    };
    const auto store = [&](std::size_t x, T* out) HWY_ATTR {
        FloatVec own, green, other;
        pixels(static_cast<std::ptrdiff_t>(x), own, green, other);
        if (redRow) {
            hn::StoreInterleaved3(round(other), round(green), round(own), dt, out);
        } else {
            hn::StoreInterleaved3(round(own), round(green), round(other), dt, out);
        }
    };
    T* out = band.sink.BeginRow(row);
    std::size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        store(x, out + 3 * x);
    }
    if (x < width) {
        HWY_ALIGN T last[3 * HWY_MAX_BYTES / sizeof(float)];
        store(x, last);
        std::memcpy(out + 3 * x, last, 3 * (width - x) * sizeof(T));
    }
    band.sink.EndRow(row);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
