#pragma once

#include "transport/emulator/ImageSettings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Norvane::Transport::Emulator {

/// What the camera's network makes of the scene.
struct InferenceResult {
    struct Box {
        std::int16_t classId = 0;
        float confidence = 0.0F; ///< 0 to 1
        std::int16_t left = 0, top = 0, right = 0,
                     bottom = 0; ///< pixels of the image; right and bottom lie outside
    };

    std::vector<Box> boxes;   ///< of detection
    std::int64_t classId = 0; ///< of classification: the object nearest to the image's centre
    double confidence = 0.0;
};

/// Looks at the image `seconds` after power-up. Boxes below the confidence, outside the image or past the
/// count are left out.
InferenceResult Infer(const ImageGeometry& geometry, double seconds, double leastConfidence,
                      std::size_t mostBoxes);

inline constexpr std::size_t kMostBoxes = 64;
inline constexpr std::uint32_t kBoxBytes =
    4 + 16 * kMostBoxes; ///< of the encoded list, which always has the full length

/// The boxes as the chunk holds them, little-endian: u16 version 1, u16 count, then per box u16 type 0, i16
/// class, f32 confidence, i16 left, top, right, bottom; zeros behind the last.
std::vector<std::uint8_t> EncodeBoxes(const std::vector<InferenceResult::Box>& boxes);

} // namespace Norvane::Transport::Emulator
