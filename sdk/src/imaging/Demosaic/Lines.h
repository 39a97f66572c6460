#pragma once

#include "imaging/Demosaic/Demosaic.h"
#include "imaging/Scratch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Norvane::Imaging {

/// Index of the pixel that stands at `index` of a row or column of `count` pixels when the image is reflected
/// about the centres of its outermost pixels: ... 2 1 [0 1 2 ...]. Keeps odd and even apart where count > 1.
inline std::size_t Reflect(std::ptrdiff_t index, std::size_t count) {
    if (count == 1) {
        return 0;
    }
    const auto period = 2 * (static_cast<std::ptrdiff_t>(count) - 1);
    index %= period;
    if (index < 0) {
        index += period;
    }
    return static_cast<std::size_t>(std::min(index, period - index));
}

/// Samples beside a line that may be read and written: what a method looks at beyond the border, and what a
/// whole vector reaches past the last pixel.
constexpr std::size_t kLinePadding = 128;

constexpr std::size_t kCacheLine = 64; ///< bytes; also of the longest vector

/// After how many columns of colours the lines begin anew.
template <class T>
constexpr std::size_t kColumnsPerLines = kCacheLine / sizeof(T);

/// How many of a row's `width` columns come before the first one whose pixel begins a cache line; 0 where
/// that is an odd one or there is none.
template <class T>
std::size_t ColumnsBeforeLine(const T* out, std::size_t width) {
    constexpr std::size_t kThird = 43; // 3 * 43 is 1 modulo 64 and 32
    const std::size_t columns =
        (0 - reinterpret_cast<std::uintptr_t>(out) / sizeof(T)) * kThird % kColumnsPerLines<T>;
    return columns % 2 == 0 && columns < width ? columns : 0;
}

/// The red-green-blue order of one mosaic row.
struct RowPhase {
    bool greenFirst; ///< even columns are green
    bool redRow;     ///< the other columns are red, else blue
};

inline RowPhase PhaseOfRow(BayerPhase phase, std::ptrdiff_t y) {
    const bool odd = y & 1;
    switch (phase) {
    case BayerPhase::GR:
        return odd ? RowPhase{false, false} : RowPhase{true, true};
    case BayerPhase::GB:
        return odd ? RowPhase{false, true} : RowPhase{true, false};
    case BayerPhase::BG:
        return odd ? RowPhase{true, true} : RowPhase{false, false};
    default:
        return odd ? RowPhase{true, false} : RowPhase{false, true};
    }
}

/// A window of `Count` (a power of two) padded lines that slides down the image. Line(y) is valid for the
/// last Count rows asked for; y may lie outside of the image.
template <class T, std::size_t Count>
class LineRing {
public:
    LineRing(Scratch& scratch, std::size_t width)
        : m_pitch((width + 2 * kLinePadding + 127) / 128 * 128), m_memory(scratch.Take<T>(m_pitch * Count)) {}

    T* Line(std::ptrdiff_t y) const {
        return m_memory + (static_cast<std::size_t>(y) & (Count - 1)) * m_pitch + kLinePadding;
    }

private:
    static_assert((Count & (Count - 1)) == 0);
    std::size_t m_pitch;
    T* m_memory;
};

/// Extends a line by `reach` reflected samples at both ends.
template <class T>
void ReflectEnds(T* line, std::size_t width, std::size_t reach) {
    const auto w = static_cast<std::ptrdiff_t>(width);
    for (std::ptrdiff_t i = 1; i <= static_cast<std::ptrdiff_t>(reach); ++i) {
        line[-i] = line[Reflect(-i, width)];
        line[w - 1 + i] = line[Reflect(w - 1 + i, width)];
    }
}

/// The mosaic lines around the row that a method works on.
template <class T, std::size_t Count>
class MosaicWindow {
public:
    /// @param reach  rows above and below the current one, and samples to both sides of it
    MosaicWindow(Scratch& scratch, const MosaicShape& shape, const MosaicSource<T>& source, std::size_t reach)
        : m_ring(scratch, shape.width), m_shape(shape), m_source(source), m_reach(reach) {}

    /// Makes the rows y - reach to y + reach readable; y grows by one from call to call.
    void MoveTo(std::ptrdiff_t y) {
        const auto reach = static_cast<std::ptrdiff_t>(m_reach);
        for (std::ptrdiff_t row = m_started ? y + reach : y - reach; row <= y + reach; ++row) {
            T* line = m_ring.Line(row);
            m_source.ReadRow(Reflect(row, m_shape.height), line);
            ReflectEnds(line, m_shape.width, m_reach);
        }
        m_started = true;
    }

    const T* Line(std::ptrdiff_t y) const { return m_ring.Line(y); }

private:
    LineRing<T, Count> m_ring;
    const MosaicShape& m_shape;
    const MosaicSource<T>& m_source;
    std::size_t m_reach;
    bool m_started = false;
};

} // namespace Norvane::Imaging
