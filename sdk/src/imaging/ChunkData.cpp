#include "imaging/ChunkValues.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <limits>
#include <string>

namespace Norvane {
namespace {

template <class T>
const T& Require(const ChunkData::Values* values, std::optional<T> ChunkData::Values::*member,
                 const char* name) {
    if (!values || !(values->*member)) {
        throw Exception(Error::NotAvailable, std::string("The image carries no chunk ") + name +
                                                 "; enable it with ChunkSelector and ChunkEnable");
    }
    return *(values->*member);
}

} // namespace

InferenceBoundingBoxResult::InferenceBoundingBoxResult(std::vector<InferenceBoundingBox> boxes)
    : m_boxes(std::move(boxes)) {}

std::uint16_t InferenceBoundingBoxResult::GetBoxCount() const noexcept {
    constexpr std::size_t kMost = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(std::min(m_boxes.size(), kMost));
}

InferenceBoundingBox InferenceBoundingBoxResult::GetBoxAt(unsigned short index) const {
    if (index >= GetBoxCount()) {
        throw Exception(Error::InvalidParameter, "Bounding box " + std::to_string(index) +
                                                     " does not exist, there are " +
                                                     std::to_string(GetBoxCount()));
    }
    return m_boxes[index];
}

std::int64_t ChunkData::GetInferenceResult() const {
    return Require(m_values.get(), &Values::inferenceResult, "InferenceResult");
}

double ChunkData::GetInferenceConfidence() const {
    return Require(m_values.get(), &Values::inferenceConfidence, "InferenceConfidence");
}

InferenceBoundingBoxResult ChunkData::GetInferenceBoundingBoxResult() const {
    return Require(m_values.get(), &Values::boundingBoxes, "InferenceBoundingBoxResult");
}

std::int64_t ChunkData::GetFrameID() const {
    return Require(m_values.get(), &Values::frameId, "FrameID");
}

std::int64_t ChunkData::GetTimestamp() const {
    return Require(m_values.get(), &Values::timestampNs, "Timestamp");
}

double ChunkData::GetExposureTime() const {
    return Require(m_values.get(), &Values::exposureTimeUs, "ExposureTime");
}

double ChunkData::GetGain() const {
    return Require(m_values.get(), &Values::gainDb, "Gain");
}

} // namespace Norvane
