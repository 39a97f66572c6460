#include "imaging/ColorRows.h"

#include <algorithm>
#include <limits>

namespace Norvane::Imaging {
namespace {

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

/// Red, green and blue as multiples of luma and chroma in units of 2^-14, for the target's full range.
struct Factors {
    std::int64_t luma, crRed, cbGreen, crGreen, cbBlue;
    std::int64_t black;
};

Factors FactorsOf(ColorMatrix matrix, unsigned bits, double targetMax) {
    const double kr = matrix == ColorMatrix::Studio709 ? 0.2126 : 0.299;
    const double kb = matrix == ColorMatrix::Studio709 ? 0.0722 : 0.114;
    const bool studio = matrix != ColorMatrix::Full601;
    const double unit = static_cast<double>(1U << (bits - 8));
    const double lumaRange = studio ? 219 * unit : 256 * unit - 1;
    const double chromaRange = studio ? 224 * unit : 256 * unit - 1;
    const double one = 16384 * targetMax;
    const auto fixed = [](double value) {
        return static_cast<std::int64_t>(value < 0 ? value - 0.5 : value + 0.5);
    };
    return {fixed(one / lumaRange),
            fixed(one / chromaRange * 2 * (1 - kr)),
            fixed(-one / chromaRange * 2 * (1 - kb) * kb / (1 - kr - kb)),
            fixed(-one / chromaRange * 2 * (1 - kr) * kr / (1 - kr - kb)),
            fixed(one / chromaRange * 2 * (1 - kb)),
            studio ? std::int64_t{16} << (bits - 8) : 0};
}

} // namespace

template <class T>
void SwapRedBlue(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = 0; i < 3 * pixels; i += 3) {
        const T first = in[i], second = in[i + 1], third = in[i + 2];
        out[i] = third;
        out[i + 1] = second;
        out[i + 2] = first;
    }
}

template <class T>
void GreyToBgr(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        out[3 * i] = out[3 * i + 1] = out[3 * i + 2] = in[i];
    }
}

template <class T>
void BgrToGrey(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        out[i] = static_cast<T>(
            (7471U * in[3 * i] + 38470U * in[3 * i + 1] + 19595U * in[3 * i + 2] + 32768U) >> 16);
    }
}

template <class T>
void AppendAlpha(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        out[4 * i] = in[3 * i];
        out[4 * i + 1] = in[3 * i + 1];
        out[4 * i + 2] = in[3 * i + 2];
        out[4 * i + 3] = std::numeric_limits<T>::max();
    }
}

template <class T>
void DropAlpha(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        out[3 * i] = in[4 * i];
        out[3 * i + 1] = in[4 * i + 1];
        out[3 * i + 2] = in[4 * i + 2];
    }
}

template <class T>
void YcbcrToBgr(const std::uint16_t* in, std::size_t pixels, Components components, ColorMatrix matrix,
                unsigned bits, T* out) {
    const Positions at = PositionsOf(components);
    const std::int64_t top = std::numeric_limits<T>::max();
    const Factors f = FactorsOf(matrix, bits, static_cast<double>(top));
    const std::int64_t middle = std::int64_t{1} << (bits - 1);
    const auto clamp = [&](std::int64_t value) {
        return static_cast<T>(std::clamp<std::int64_t>((value + 8192) >> 14, 0, top));
    };
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint16_t* group = in + i / at.pixels * at.components;
        const std::int64_t luma = (group[at.luma[i % at.pixels]] - f.black) * f.luma;
        const std::int64_t cb = group[at.cb] - middle, cr = group[at.cr] - middle;
        out[3 * i] = clamp(luma + cb * f.cbBlue);
        out[3 * i + 1] = clamp(luma + cb * f.cbGreen + cr * f.crGreen);
        out[3 * i + 2] = clamp(luma + cr * f.crRed);
    }
}

#define NORVANE_INSTANCES(T)                                                                                 \
    template void SwapRedBlue(const T*, std::size_t, T*);                                                    \
    template void GreyToBgr(const T*, std::size_t, T*);                                                      \
    template void BgrToGrey(const T*, std::size_t, T*);                                                      \
    template void AppendAlpha(const T*, std::size_t, T*);                                                    \
    template void DropAlpha(const T*, std::size_t, T*);                                                      \
    template void YcbcrToBgr(const std::uint16_t*, std::size_t, Components, ColorMatrix, unsigned, T*);
NORVANE_INSTANCES(std::uint8_t)
NORVANE_INSTANCES(std::uint16_t)
#undef NORVANE_INSTANCES

} // namespace Norvane::Imaging
