#pragma once

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// The rows below hold `pixels` pixels; T is std::uint8_t or std::uint16_t. "Bgr" is blue, green, red in
/// turn.

/// Exchanges the first and the third of each three samples; `in` may be `out`.
template <class T>
void SwapRedBlue(const T* in, std::size_t pixels, T* out);

/// Each sample three times.
template <class T>
void GreyToBgr(const T* in, std::size_t pixels, T* out);

/// Luma of ITU-R BT.601, rounded.
template <class T>
void BgrToGrey(const T* in, std::size_t pixels, T* out);

/// Appends an opaque alpha to each pixel.
template <class T>
void AppendAlpha(const T* in, std::size_t pixels, T* out);

/// Drops the fourth sample of each pixel.
template <class T>
void DropAlpha(const T* in, std::size_t pixels, T* out);

} // namespace Norvane::Imaging
