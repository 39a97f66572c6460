#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Norvane {

/// One result of on-camera object detection, in image coordinates before any zoom.
struct InferenceBoundingBox {
    enum BoxType : std::uint16_t { Rectangle = 0, Circle = 1, RotatedRectangle = 2 };
    BoxType boxType = Rectangle;
    std::int16_t classId = 0;
    float confidence = 0.0F; ///< 0 to 1
    /// Corners of a rectangle in pixels; the bottom-right one lies outside the box.
    std::int16_t topLeftX = 0;
    std::int16_t topLeftY = 0;
    std::int16_t bottomRightX = 0;
    std::int16_t bottomRightY = 0;
};

class InferenceBoundingBoxResult {
public:
    InferenceBoundingBoxResult() = default;
    explicit InferenceBoundingBoxResult(std::vector<InferenceBoundingBox> boxes);

    /// How many boxes there are; boxes past 65535 are left out.
    std::uint16_t GetBoxCount() const noexcept;
    /// @throws Exception (InvalidParameter) when the index is not below GetBoxCount().
    InferenceBoundingBox GetBoxAt(unsigned short index) const;

private:
    std::vector<InferenceBoundingBox> m_boxes;
};

/// The values a camera attached to one image. A copy is independent of the image's buffer.
class ChunkData {
public:
    ChunkData() = default;

    /// @throws Exception (NotAvailable) when the image carries no such chunk.
    std::int64_t GetInferenceResult() const;
    double GetInferenceConfidence() const; ///< 0 to 1
    InferenceBoundingBoxResult GetInferenceBoundingBoxResult() const;
    std::int64_t GetFrameID() const;
    std::int64_t GetTimestamp() const; ///< ns
    double GetExposureTime() const;    ///< us
    double GetGain() const;            ///< dB

    struct Values;
    explicit ChunkData(std::shared_ptr<const Values> values) : m_values(std::move(values)) {}

private:
    std::shared_ptr<const Values> m_values;
};

} // namespace Norvane
