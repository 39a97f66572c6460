#pragma once

#include "norvane/Image.h"
#include "norvane/PixelFormat.h"

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Where a demosaicing method takes its mosaic from. Called on several threads at once.
template <class T>
class MosaicSource {
public:
    /// Writes row `y` of the mosaic, `width` samples, to `line`.
    virtual void ReadRow(std::size_t y, T* line) const = 0;
    /// Row `y` where it lies in memory as ReadRow would write it; null for all rows or for none.
    virtual const T* DirectRow(std::size_t y) const = 0;

protected:
    ~MosaicSource() = default;
};

/// Where the colour rows go. One band calls it on one thread, row by row.
template <class T>
class ColorSink {
public:
    /// Memory for row `y`: 3 * width samples, blue, green, red in turn.
    virtual T* BeginRow(std::size_t y) = 0;
    virtual void EndRow(std::size_t y) = 0;
    /// Whether rows had better be written with stores that do not read the memory's lines first; who uses
    /// them leaves it to the sink's owner to make them visible to other threads.
    virtual bool PastCaches() const = 0;

protected:
    ~ColorSink() = default;
};

struct MosaicShape {
    std::size_t width, height;
    BayerPhase phase; ///< with red and blue exchanged the sinks get red, green, blue
};

/// Demosaics the rows [first, last). Outside of the image lies its reflection about the outermost pixels'
/// centres, which keeps the order of the colours. T is std::uint8_t or std::uint16_t; samples use T's whole
/// range. DEFAULT and IPP are BILINEAR; NO_COLOR_PROCESSING repeats each sample three times.
template <class T>
void DemosaicRows(ColorProcessingAlgorithm algorithm, const MosaicShape& shape, const MosaicSource<T>& source,
                  ColorSink<T>& sink, std::size_t first, std::size_t last);

/// Rows that a thread takes at least, so that those which two bands both compute cost little.
constexpr std::size_t kDemosaicGrain = 32;

} // namespace Norvane::Imaging
