#pragma once

#include "imaging/Demosaic/Demosaic.h"

namespace Norvane::Imaging {

/// A method of several stages, each a window of lines that slides down the rows [first, last).
template <class T>
struct Band {
    const MosaicShape& shape;
    const MosaicSource<T>& source;
    ColorSink<T>& sink;
    std::size_t first, last;
};

template <class T>
void EdgeSensingRows(const Band<T>& band);
template <class T>
void DirectionalRows(const Band<T>& band);
template <class T>
void WeightedDirectionalRows(const Band<T>& band);
template <class T>
void RigorousRows(const Band<T>& band);

} // namespace Norvane::Imaging
