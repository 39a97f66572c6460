#pragma once

#include "imaging/Demosaic/Lines.h"

namespace Norvane::Imaging {

/// What a kernel that looks at a few rows around the current one gets and gives.
template <class T>
struct WindowRow {
    const T* rows[5]; ///< the rows y - 2 to y + 2; a kernel that reaches one row uses the middle three
    T* out;           ///< 3 * width samples
    std::size_t width;
    RowPhase phase;
    bool pastCaches; ///< see ColorSink::PastCaches
};

/// Own mosaic sample of each colour out of the 2 x 2 window that begins at the pixel.
template <class T>
void NearestRow(const WindowRow<T>& row);
/// The same, green as the rounded mean of the window's two.
template <class T>
void NearestAverageRow(const WindowRow<T>& row);
/// Rounded mean of the two or four nearest samples of each colour. Reads two samples to each side.
template <class T>
void BilinearRow(const WindowRow<T>& row);
/// Linear filters of five by five samples that use the gradient of the colour present.
template <class T>
void HqLinearRow(const WindowRow<T>& row);

} // namespace Norvane::Imaging
