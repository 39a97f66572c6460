#include "imaging/ColorRows.h"

#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/ColorRows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "imaging/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Norvane::Imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Each loop does whole vectors and says how far it came; the rest of a row is left to the caller.

template <class T>
std::size_t Swap(const T* in, std::size_t pixels, T* out) {
    const hn::ScalableTag<T> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> a, b, c;
        hn::LoadInterleaved3(d, in + 3 * i, a, b, c);
        StoreThree(d, c, b, a, out + 3 * i);
    }
    return i;
}

template <class T>
std::size_t Repeat(const T* in, std::size_t pixels, T* out) {
    const hn::ScalableTag<T> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        StoreThrice(d, hn::LoadU(d, in + i), out + 3 * i);
    }
    return i;
}

template <class T>
std::size_t Luma(const T* in, std::size_t pixels, T* out) {
    const hn::ScalableTag<std::uint32_t> d32;
    const hn::RebindToSigned<decltype(d32)> di;
    const hn::Rebind<T, decltype(d32)> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> blue, green, red;
        hn::LoadInterleaved3(d, in + 3 * i, blue, green, red);
        const auto times = [&](auto v, std::uint32_t share)
                               HWY_ATTR { return hn::Mul(hn::PromoteTo(d32, v), hn::Set(d32, share)); };
        const auto sum = hn::Add(hn::Add(times(blue, 7471), times(green, 38470)),
                                 hn::Add(times(red, 19595), hn::Set(d32, 32768)));
        hn::StoreU(hn::DemoteTo(d, hn::BitCast(di, hn::ShiftRight<16>(sum))), d, out + i);
    }
    return i;
}

template <class T>
std::size_t ThreeToFour(const T* in, std::size_t pixels, T* out) {
    const hn::ScalableTag<T> d;
    const auto opaque = hn::Set(d, std::numeric_limits<T>::max());
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> a, b, c;
        hn::LoadInterleaved3(d, in + 3 * i, a, b, c);
        hn::StoreInterleaved4(a, b, c, opaque, d, out + 4 * i);
    }
    return i;
}

template <class T>
std::size_t FourToThree(const T* in, std::size_t pixels, T* out) {
    const hn::ScalableTag<T> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= pixels; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> a, b, c, alpha;
        hn::LoadInterleaved4(d, in + 4 * i, a, b, c, alpha);
        StoreThree(d, a, b, c, out + 3 * i);
    }
    return i;
}

#define NORVANE_ROWS(Name)                                                                                   \
    std::size_t Name##8(const std::uint8_t* in, std::size_t n, std::uint8_t* out) {                          \
        return Name(in, n, out);                                                                             \
    }                                                                                                        \
    std::size_t Name##16(const std::uint16_t* in, std::size_t n, std::uint16_t* out) {                       \
        return Name(in, n, out);                                                                             \
    }
NORVANE_ROWS(Swap)
NORVANE_ROWS(Repeat)
NORVANE_ROWS(Luma)
NORVANE_ROWS(ThreeToFour)
NORVANE_ROWS(FourToThree)
#undef NORVANE_ROWS

} // namespace Norvane::Imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Norvane::Imaging {
namespace {

#define NORVANE_ROWS(Name)                                                                                   \
    HWY_EXPORT(Name##8);                                                                                     \
    HWY_EXPORT(Name##16);                                                                                    \
    std::size_t Name(const std::uint8_t* in, std::size_t n, std::uint8_t* out) {                             \
        return HWY_DYNAMIC_DISPATCH(Name##8)(in, n, out);                                                    \
    }                                                                                                        \
    std::size_t Name(const std::uint16_t* in, std::size_t n, std::uint16_t* out) {                           \
        return HWY_DYNAMIC_DISPATCH(Name##16)(in, n, out);                                                   \
    }
NORVANE_ROWS(Swap)
NORVANE_ROWS(Repeat)
NORVANE_ROWS(Luma)
NORVANE_ROWS(ThreeToFour)
NORVANE_ROWS(FourToThree)
#undef NORVANE_ROWS

} // namespace

template <class T>
void SwapRedBlue(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = Swap(in, pixels, out); i < pixels; ++i) {
        const T first = in[3 * i], second = in[3 * i + 1], third = in[3 * i + 2];
        out[3 * i] = third;
        out[3 * i + 1] = second;
        out[3 * i + 2] = first;
    }
}

template <class T>
void GreyToBgr(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = Repeat(in, pixels, out); i < pixels; ++i) {
        out[3 * i] = out[3 * i + 1] = out[3 * i + 2] = in[i];
    }
}

template <class T>
void BgrToGrey(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = Luma(in, pixels, out); i < pixels; ++i) {
        out[i] = static_cast<T>(
            (7471U * in[3 * i] + 38470U * in[3 * i + 1] + 19595U * in[3 * i + 2] + 32768U) >> 16);
    }
}

template <class T>
void AppendAlpha(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = ThreeToFour(in, pixels, out); i < pixels; ++i) {
        out[4 * i] = in[3 * i];
        out[4 * i + 1] = in[3 * i + 1];
        out[4 * i + 2] = in[3 * i + 2];
        out[4 * i + 3] = std::numeric_limits<T>::max();
    }
}

template <class T>
void DropAlpha(const T* in, std::size_t pixels, T* out) {
    for (std::size_t i = FourToThree(in, pixels, out); i < pixels; ++i) {
        out[3 * i] = in[4 * i];
        out[3 * i + 1] = in[4 * i + 1];
        out[3 * i + 2] = in[4 * i + 2];
    }
}

template void SwapRedBlue(const std::uint8_t*, std::size_t, std::uint8_t*);
template void SwapRedBlue(const std::uint16_t*, std::size_t, std::uint16_t*);
template void GreyToBgr(const std::uint8_t*, std::size_t, std::uint8_t*);
template void GreyToBgr(const std::uint16_t*, std::size_t, std::uint16_t*);
template void BgrToGrey(const std::uint8_t*, std::size_t, std::uint8_t*);
template void BgrToGrey(const std::uint16_t*, std::size_t, std::uint16_t*);
template void AppendAlpha(const std::uint8_t*, std::size_t, std::uint8_t*);
template void AppendAlpha(const std::uint16_t*, std::size_t, std::uint16_t*);
template void DropAlpha(const std::uint8_t*, std::size_t, std::uint8_t*);
template void DropAlpha(const std::uint16_t*, std::size_t, std::uint16_t*);

} // namespace Norvane::Imaging
#endif
