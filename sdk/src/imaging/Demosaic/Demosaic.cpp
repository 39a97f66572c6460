#include "imaging/Demosaic/Demosaic.h"

#include "imaging/ColorRows.h"
#include "imaging/Demosaic/BandMethods.h"
#include "imaging/Demosaic/Lines.h"
#include "imaging/Demosaic/WindowKernels.h"

#include <cstring>

namespace Norvane::Imaging {
namespace {

template <class T>
void RepeatRows(const MosaicShape& shape, const MosaicSource<T>& source, ColorSink<T>& sink,
                std::size_t first, std::size_t last) {
    Scratch scratch;
    T* line = scratch.Take<T>(shape.width);
    for (std::size_t y = first; y < last; ++y) {
        source.ReadRow(y, line);
        GreyToBgr(line, shape.width, sink.BeginRow(y));
        sink.EndRow(y);
    }
}

template <class T>
using RowKernel = void (*)(const WindowRow<T>&);

/// Columns that a kernel's whole vectors cover, whatever the instruction set.
constexpr std::size_t kColumnUnit = 64;

/// The columns of each row at one of its ends, with what lies beyond the border and beside them.
template <class T>
class EdgeColumns {
public:
    EdgeColumns(Scratch& scratch, std::size_t width, std::size_t reach, std::size_t first, std::size_t count)
        : m_ring(scratch, count), m_width(width), m_reach(reach), m_first(first), m_count(count) {}

    void Add(std::ptrdiff_t y, const T* row) {
        T* line = m_ring.Line(y);
        const auto before = static_cast<std::ptrdiff_t>(m_first);
        std::memcpy(line, row + m_first, m_count * sizeof(T));
        for (std::ptrdiff_t i = 1; i <= static_cast<std::ptrdiff_t>(m_reach); ++i) {
            const auto after = static_cast<std::ptrdiff_t>(m_count) - 1 + i;
            line[-i] = row[Reflect(before - i, m_width)];
            line[after] = row[Reflect(before + after, m_width)];
        }
    }

    const T* Line(std::ptrdiff_t y) const { return m_ring.Line(y); }

private:
    LineRing<T, 8> m_ring;
    std::size_t m_width, m_reach, m_first, m_count;
};

/// Rows that lie in memory as the kernels want them: only what has neighbours beyond the border is copied.
template <class T>
void DirectRows(RowKernel<T> kernel, std::size_t reach, const MosaicShape& shape,
                const MosaicSource<T>& source, ColorSink<T>& sink, std::size_t first, std::size_t last) {
    const std::size_t width = shape.width;
    const std::size_t rightmost = width - 3 * kColumnUnit;
    Scratch scratch;
    EdgeColumns<T> left(scratch, width, reach, 0, kColumnUnit);
    EdgeColumns<T> right(scratch, width, reach, rightmost, 3 * kColumnUnit);
    const auto rowAt = [&](std::ptrdiff_t y) { return source.DirectRow(Reflect(y, shape.height)); };
    const auto begin = static_cast<std::ptrdiff_t>(first), end = static_cast<std::ptrdiff_t>(last);
    const auto away = static_cast<std::ptrdiff_t>(reach);
    for (auto y = begin; y < end; ++y) {
        for (auto row = y == begin ? y - away : y + away; row <= y + away; ++row) {
            left.Add(row, rowAt(row));
            right.Add(row, rowAt(row));
        }
        T* out = sink.BeginRow(static_cast<std::size_t>(y));
        const auto columns = [&](std::size_t from, std::size_t to, auto&& lineOf) {
            WindowRow<T> part{{}, out + 3 * from, to - from, PhaseOfRow(shape.phase, y), sink.PastCaches()};
            for (std::ptrdiff_t i = -away; i <= away; ++i) {
                part.rows[2 + i] = lineOf(y + i);
            }
            kernel(part);
        };
        // What goes past the caches is parted where a line begins. The right part is more than a vector.
        const std::size_t before = sink.PastCaches() ? ColumnsBeforeLine(out, width) : 0;
        const std::size_t inner = before + (kColumnUnit - before) / kColumnsPerLines<T> * kColumnsPerLines<T>;
        const std::size_t rest = inner + ((width - reach - inner) / kColumnUnit - 1) * kColumnUnit;
        columns(0, inner, [&](std::ptrdiff_t row) { return left.Line(row); });
        columns(inner, rest, [&](std::ptrdiff_t row) { return rowAt(row) + inner; });
        columns(rest, width, [&](std::ptrdiff_t row) { return right.Line(row) + (rest - rightmost); });
        sink.EndRow(static_cast<std::size_t>(y));
    }
}

template <class T>
void WindowRows(RowKernel<T> kernel, std::size_t reach, const MosaicShape& shape,
                const MosaicSource<T>& source, ColorSink<T>& sink, std::size_t first, std::size_t last) {
    if (shape.width >= 4 * kColumnUnit && source.DirectRow(0)) {
        DirectRows(kernel, reach, shape, source, sink, first, last);
        return;
    }
    Scratch scratch;
    MosaicWindow<T, 8> window(scratch, shape, source, reach);
    for (std::size_t row = first; row < last; ++row) {
        const auto y = static_cast<std::ptrdiff_t>(row);
        window.MoveTo(y);
        kernel(
            {{window.Line(y - 2), window.Line(y - 1), window.Line(y), window.Line(y + 1), window.Line(y + 2)},
             sink.BeginRow(row),
             shape.width,
             PhaseOfRow(shape.phase, y),
             sink.PastCaches()});
        sink.EndRow(row);
    }
}

} // namespace

template <class T>
void DemosaicRows(ColorProcessingAlgorithm algorithm, const MosaicShape& shape, const MosaicSource<T>& source,
                  ColorSink<T>& sink, std::size_t first, std::size_t last) {
    switch (algorithm) {
    case NO_COLOR_PROCESSING:
        return RepeatRows(shape, source, sink, first, last);
    case NEAREST_NEIGHBOR:
        return WindowRows(NearestRow<T>, 1, shape, source, sink, first, last);
    case NEAREST_NEIGHBOR_AVG:
        return WindowRows(NearestAverageRow<T>, 1, shape, source, sink, first, last);
    case HQ_LINEAR:
        return WindowRows(HqLinearRow<T>, 2, shape, source, sink, first, last);
    case EDGE_SENSING:
        return EdgeSensingRows<T>({shape, source, sink, first, last});
    case RIGOROUS:
        return RigorousRows<T>({shape, source, sink, first, last});
    case DIRECTIONAL_FILTER:
        return DirectionalRows<T>({shape, source, sink, first, last});
    case WEIGHTED_DIRECTIONAL_FILTER:
        return WeightedDirectionalRows<T>({shape, source, sink, first, last});
    default:
        return WindowRows(BilinearRow<T>, 2, shape, source, sink, first, last);
    }
}

template void DemosaicRows(ColorProcessingAlgorithm, const MosaicShape&, const MosaicSource<std::uint8_t>&,
                           ColorSink<std::uint8_t>&, std::size_t, std::size_t);
template void DemosaicRows(ColorProcessingAlgorithm, const MosaicShape&, const MosaicSource<std::uint16_t>&,
                           ColorSink<std::uint16_t>&, std::size_t, std::size_t);

} // namespace Norvane::Imaging
