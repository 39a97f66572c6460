#include "imaging/Demosaic/Demosaic.h"

#include "imaging/ColorRows.h"
#include "imaging/Demosaic/BandMethods.h"
#include "imaging/Demosaic/Lines.h"
#include "imaging/Demosaic/WindowKernels.h"

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
void WindowRows(void (*kernel)(const WindowRow<T>&), std::size_t reach, const MosaicShape& shape,
                const MosaicSource<T>& source, ColorSink<T>& sink, std::size_t first, std::size_t last) {
    Scratch scratch;
    MosaicWindow<T, 8> window(scratch, shape, source, reach);
    for (std::size_t row = first; row < last; ++row) {
        const auto y = static_cast<std::ptrdiff_t>(row);
        window.MoveTo(y);
        kernel(
            {{window.Line(y - 2), window.Line(y - 1), window.Line(y), window.Line(y + 1), window.Line(y + 2)},
             sink.BeginRow(row),
             shape.width,
             PhaseOfRow(shape.phase, y)});
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
        return WindowRows(BilinearRow<T>, 1, shape, source, sink, first, last);
    }
}

template void DemosaicRows(ColorProcessingAlgorithm, const MosaicShape&, const MosaicSource<std::uint8_t>&,
                           ColorSink<std::uint8_t>&, std::size_t, std::size_t);
template void DemosaicRows(ColorProcessingAlgorithm, const MosaicShape&, const MosaicSource<std::uint16_t>&,
                           ColorSink<std::uint16_t>&, std::size_t, std::size_t);

std::size_t DemosaicGrain(ColorProcessingAlgorithm) noexcept {
    return 32;
}

} // namespace Norvane::Imaging
