#pragma once

#include "norvane/Image.h"

#include <cstdint>
#include <vector>

namespace Norvane::Test {

/// A mosaic whose samples fill T's range, without padding.
template <class T>
struct Mosaic {
    int width, height;
    BayerPhase phase;
    std::vector<T> samples;
};

/// The demosaicing methods once more, pixel by pixel and without vectors, bands or windows of lines: what the
/// library's kernels have to agree with bit for bit. Returns blue, green, red in turn.
template <class T>
std::vector<T> ScalarDemosaic(ColorProcessingAlgorithm algorithm, const Mosaic<T>& mosaic);

} // namespace Norvane::Test
