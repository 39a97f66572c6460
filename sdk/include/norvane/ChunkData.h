#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Norvane {

/// One result of on-camera object detection, in image coordinates before any zoom.
struct InferenceBoundingBox {
    /// The shape that the corners stand for.
    enum BoxType : std::uint16_t { Rectangle = 0, Circle = 1, RotatedRectangle = 2 };
    BoxType boxType = Rectangle; ///< as the camera says
    std::int16_t classId = 0;    ///< the network's number of what was found
    float confidence = 0.0F;     ///< 0 to 1
    /// @name Corners of a rectangle
    /// In pixels; the bottom-right one lies outside the box.
    /// @{
    std::int16_t topLeftX = 0;     ///< left
    std::int16_t topLeftY = 0;     ///< top
    std::int16_t bottomRightX = 0; ///< right
    std::int16_t bottomRightY = 0; ///< bottom
    /// @}
};

/// All boxes of one image.
class InferenceBoundingBoxResult {
public:
    /// No boxes.
    InferenceBoundingBoxResult() = default;
    /// In the camera's order.
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
    /// No chunks.
    ChunkData() = default;

    /// The class that a classification found.
    /// @throws Exception (NotAvailable) when the image carries no such chunk; so do all the others.
    std::int64_t GetInferenceResult() const;
    double GetInferenceConfidence() const; ///< 0 to 1
    /// What a detection found.
    InferenceBoundingBoxResult GetInferenceBoundingBoxResult() const;
    std::int64_t GetFrameID() const;   ///< the camera's count of images
    std::int64_t GetTimestamp() const; ///< ns
    double GetExposureTime() const;    ///< us
    double GetGain() const;            ///< dB

    /// The library's own form of the values.
    struct Values;
    /// For the library, which reads the chunks.
    explicit ChunkData(std::shared_ptr<const Values> values) : m_values(std::move(values)) {}

private:
    std::shared_ptr<const Values> m_values;
};

} // namespace Norvane
