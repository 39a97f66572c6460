#pragma once

#include "norvane/ChunkData.h"

#include <optional>

namespace Norvane {

/// What one image's chunks held; an empty value is a chunk that the image did not carry.
struct ChunkData::Values {
    std::optional<std::int64_t> frameId;
    std::optional<std::int64_t> timestampNs;
    std::optional<double> exposureTimeUs;
    std::optional<double> gainDb;
    std::optional<std::int64_t> inferenceResult;
    std::optional<double> inferenceConfidence;
    std::optional<InferenceBoundingBoxResult> boundingBoxes;
};

} // namespace Norvane
