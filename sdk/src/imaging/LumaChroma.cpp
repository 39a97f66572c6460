#include "imaging/LumaChroma.h"

#include "imaging/Scratch.h"

#include <algorithm>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/LumaChroma.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class T>
std::size_t MatrixRow(const T* luma, const T* cb, const T* cr, std::size_t pixels, const LumaChromaFactors& f,
                      std::uint8_t* out) {
    const hn::ScalableTag<std::int32_t> d;
    const hn::Rebind<T, decltype(d)> dIn;
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    const auto factor = [&](std::int64_t v) HWY_ATTR { return hn::Set(d, static_cast<std::int32_t>(v)); };
    const auto black = factor(f.black), lumaFactor = factor(f.luma), cbBlue = factor(f.cbBlue),
               cbGreen = factor(f.cbGreen), crGreen = factor(f.crGreen), crRed = factor(f.crRed),
               middle = factor(f.middle), half = factor(8192);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        const auto load = [&](const T* from) HWY_ATTR {
            const auto samples = hn::LoadU(dIn, from + i);
            if constexpr (sizeof(T) == 1) {
                return hn::PromoteTo(d, samples);
            } else {
                return hn::PromoteTo(d, hn::ShiftRightSame(samples, f.below));
            }
        };
        const auto base = hn::Add(hn::Mul(hn::Sub(load(luma), black), lumaFactor), half);
        const auto blueness = hn::Sub(load(cb), middle), redness = hn::Sub(load(cr), middle);
        const auto down = [&](auto v) HWY_ATTR { return hn::DemoteTo(d8, hn::ShiftRight<14>(v)); };
        hn::StoreInterleaved3(
            down(hn::Add(base, hn::Mul(blueness, cbBlue))),
            down(hn::Add(base, hn::Add(hn::Mul(blueness, cbGreen), hn::Mul(redness, crGreen)))),
            down(hn::Add(base, hn::Mul(redness, crRed))), d8, out + 3 * i);
    }
    return i;
}

/// Three components for a pixel, or four for two pixels with chroma repeated; returns how many groups.
template <class T>
std::size_t SplitGroups(const T* in, std::size_t groups, std::size_t components, bool lumaFirst, T* luma,
                        T* cb, T* cr) {
    const hn::ScalableTag<T> d;
    std::size_t i = 0;
    for (; components == 3 && i + hn::Lanes(d) <= groups; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> a, b, c;
        hn::LoadInterleaved3(d, in + 3 * i, a, b, c);
        hn::StoreU(lumaFirst ? a : b, d, luma + i);
        hn::StoreU(lumaFirst ? b : a, d, cb + i);
        hn::StoreU(c, d, cr + i);
    }
    if (components == 3) {
        return i;
    }
    for (; i + hn::Lanes(d) <= groups; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> a, b, c, e;
        hn::LoadInterleaved4(d, in + 4 * i, a, b, c, e);
        const auto firstCb = lumaFirst ? b : a, firstCr = lumaFirst ? e : c;
        hn::StoreInterleaved2(lumaFirst ? a : b, lumaFirst ? c : e, d, luma + 2 * i);
        hn::StoreInterleaved2(firstCb, firstCb, d, cb + 2 * i);
        hn::StoreInterleaved2(firstCr, firstCr, d, cr + 2 * i);
    }
    return i;
}

std::size_t MatrixRow8(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t pixels, const LumaChromaFactors& f, std::uint8_t* out) {
    return MatrixRow(luma, cb, cr, pixels, f, out);
}
std::size_t MatrixRow16(const std::uint16_t* luma, const std::uint16_t* cb, const std::uint16_t* cr,
                        std::size_t pixels, const LumaChromaFactors& f, std::uint8_t* out) {
    return MatrixRow(luma, cb, cr, pixels, f, out);
}
std::size_t SplitGroups8(const std::uint8_t* in, std::size_t groups, std::size_t components, bool lumaFirst,
                         std::uint8_t* luma, std::uint8_t* cb, std::uint8_t* cr) {
    return SplitGroups(in, groups, components, lumaFirst, luma, cb, cr);
}
std::size_t SplitGroups16(const std::uint16_t* in, std::size_t groups, std::size_t components, bool lumaFirst,
                          std::uint16_t* luma, std::uint16_t* cb, std::uint16_t* cr) {
    return SplitGroups(in, groups, components, lumaFirst, luma, cb, cr);
}

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {
namespace {

HWY_EXPORT(MatrixRow8);
HWY_EXPORT(MatrixRow16);
HWY_EXPORT(SplitGroups8);
HWY_EXPORT(SplitGroups16);

/// Positions of luma and chroma in a group of pixels.
struct Positions {
    unsigned pixels, components, luma[4], cb, cr;
};

Positions PositionsOf(Components components) {
    switch (components) {
    case Components::CbYCr:
        return {1, 3, {1}, 0, 2};
    case Components::YCbYCr:
        return {2, 4, {0, 2}, 1, 3};
    case Components::CbYCrY:
        return {2, 4, {1, 3}, 0, 2};
    case Components::YYCbYYCr:
        return {4, 6, {0, 1, 3, 4}, 2, 5};
    case Components::CbYYCrYY:
        return {4, 6, {1, 2, 4, 5}, 0, 3};
    default:
        return {1, 3, {0}, 1, 2};
    }
}

/// Luma's share of red and of blue.
struct Shares {
    double red, blue;
};

Shares SharesOf(ColorMatrix matrix) {
    switch (matrix) {
    case ColorMatrix::Studio709:
        return {0.2126, 0.0722};
    case ColorMatrix::Studio2020:
        return {0.2627, 0.0593};
    default:
        return {0.299, 0.114};
    }
}

// Recommendations ITU-R BT.601, BT.709 and BT.2020 (non-constant luminance): luma's shares, and for the
// studio range 219 steps of luma above 16 and 224 of chroma, times 2^(bits - 8).
LumaChromaFactors FactorsOf(ColorMatrix matrix, unsigned bits, unsigned container, double top) {
    const auto [red, blue] = SharesOf(matrix);
    const double green = 1 - red - blue;
    const bool studio = matrix != ColorMatrix::Full601;
    const double unit = static_cast<double>(1U << (bits - 8));
    const double luma = 16384 * top / (studio ? 219 * unit : 256 * unit - 1);
    const double chroma = 16384 * top / (studio ? 224 * unit : 256 * unit - 1);
    const auto fixed = [](double v) { return static_cast<std::int64_t>(v < 0 ? v - 0.5 : v + 0.5); };
    return {studio ? std::int64_t{16} << (bits - 8) : 0,
            std::int64_t{1} << (bits - 1),
            static_cast<int>(container - bits),
            fixed(luma),
            fixed(chroma * 2 * (1 - blue)),
            fixed(-chroma * 2 * (1 - blue) * blue / green),
            fixed(-chroma * 2 * (1 - red) * red / green),
            fixed(chroma * 2 * (1 - red))};
}

template <class T>
void MatrixPixel(unsigned lumaSample, unsigned cbSample, unsigned crSample, const LumaChromaFactors& f,
                 T* out) {
    const auto number = [&f](unsigned sample) { return static_cast<std::int64_t>(sample >> f.below); };
    const std::int64_t base = (number(lumaSample) - f.black) * f.luma + 8192;
    const std::int64_t cb = number(cbSample) - f.middle, cr = number(crSample) - f.middle;
    const auto clamp = [](std::int64_t v) {
        return static_cast<T>(std::clamp<std::int64_t>(v >> 14, 0, std::numeric_limits<T>::max()));
    };
    out[0] = clamp(base + cb * f.cbBlue);
    out[1] = clamp(base + cb * f.cbGreen + cr * f.crGreen);
    out[2] = clamp(base + cr * f.crRed);
}

/// 8-bit results, in 32-bit arithmetic, which samples of up to 12 bits do not exceed.
template <class T, class Split, class Matrix>
void ToBytes(const T* in, std::size_t pixels, const Positions& at, const LumaChromaFactors& f, Split split,
             Matrix matrix, std::uint8_t* out) {
    const std::size_t groups = (pixels + at.pixels - 1) / at.pixels;
    Scratch scratch;
    T* luma = scratch.Take<T>(groups * at.pixels);
    T* cb = scratch.Take<T>(groups * at.pixels);
    T* cr = scratch.Take<T>(groups * at.pixels);
    std::size_t group =
        at.components < 6 ? split(in, groups, at.components, at.luma[0] == 0, luma, cb, cr) : 0;
    for (; group < groups; ++group) {
        const T* from = in + group * at.components;
        for (std::size_t i = 0; i < at.pixels; ++i) {
            luma[group * at.pixels + i] = from[at.luma[i]];
            cb[group * at.pixels + i] = from[at.cb];
            cr[group * at.pixels + i] = from[at.cr];
        }
    }
    for (std::size_t i = matrix(luma, cb, cr, pixels, f, out); i < pixels; ++i) {
        MatrixPixel(luma[i], cb[i], cr[i], f, out + 3 * i);
    }
}

} // namespace

void LumaChromaToBgr(const std::uint8_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     std::uint8_t* out) {
    ToBytes(in, pixels, PositionsOf(components), FactorsOf(matrix, 8, 8, 255),
            HWY_DYNAMIC_DISPATCH(SplitGroups8), HWY_DYNAMIC_DISPATCH(MatrixRow8), out);
}

void LumaChromaToBgr(const std::uint16_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     unsigned bits, std::uint8_t* out) {
    ToBytes(in, pixels, PositionsOf(components), FactorsOf(matrix, bits, 16, 255),
            HWY_DYNAMIC_DISPATCH(SplitGroups16), HWY_DYNAMIC_DISPATCH(MatrixRow16), out);
}

void LumaChromaToBgr(const std::uint16_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                     unsigned bits, std::uint16_t* out) {
    const Positions at = PositionsOf(components);
    const LumaChromaFactors f = FactorsOf(matrix, bits, 16, 65535);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint16_t* from = in + i / at.pixels * at.components;
        MatrixPixel(from[at.luma[i % at.pixels]], from[at.cb], from[at.cr], f, out + 3 * i);
    }
}

} // namespace Norvane::Imaging
#endif
