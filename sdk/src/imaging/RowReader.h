#pragma once

#include "imaging/PixelView.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Reads an image row by row in one of two shapes, whatever its format: one sample per pixel (mono, Bayer,
/// raw), or blue, green and red samples in turn (everything with colour of its own). Samples are bytes or
/// 16-bit words and fill their type's range: a shallower value is spread so that full scale stays full scale,
/// a deeper one loses its low bits. Alpha is left out. Reading is const and safe on several threads.
class RowReader {
public:
    /// @throws as RequireReadable does.
    RowReader(const PixelView& view, const char* purpose);

    const PixelLayout& Layout() const noexcept { return *m_layout; }
    bool IsColor() const noexcept { return m_layout->components != Components::One; }
    unsigned SamplesPerPixel() const noexcept { return IsColor() ? 3 : 1; }

    /// One row of width * SamplesPerPixel() samples. T is std::uint8_t or std::uint16_t.
    template <class T>
    void Read(std::size_t y, T* out) const;

    /// Whether ReadJoined may be called: one sample per pixel, and no bit between one row and the next.
    bool RowsAreJoined() const noexcept;
    /// `rows` rows from `y` on, as if they were one.
    template <class T>
    void ReadJoined(std::size_t y, std::size_t rows, T* out) const;

    /// The row's components as the numbers they are, one plane's where there are planes.
    void ReadNumbers(std::size_t y, std::uint16_t* out) const;

    /// The row's own bytes when they already are what Read would give for T; else null, and so for every
    /// row.
    template <class T>
    const T* Direct(std::size_t y) const noexcept;

private:
    template <class T>
    void ReadColor(std::size_t y, T* out) const;

    PixelView m_view;
    const PixelLayout* m_layout;
};

} // namespace Norvane::Imaging
