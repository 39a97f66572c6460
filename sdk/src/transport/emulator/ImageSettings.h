#pragma once

#include "transport/emulator/PixelWriters.h"
#include "transport/emulator/ToneSettings.h"

#include <cstdint>
#include <string>

namespace Norvane::Transport::Emulator {

enum class TestPattern : int {
    Off = 0, ///< the scene
    Black = 1,
    White = 2,
    GreyVerticalRamp = 3,
    GreyHorizontalRamp = 4,
    GreyVerticalRampMoving = 5,
    GreyHorizontalRampMoving = 6,
    ColorBar = 9,
};

/// Which part of the sensor an image shows.
struct ImageGeometry {
    std::uint32_t sensorWidth = 0, sensorHeight = 0;
    std::uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0; ///< pixels of the image
    std::uint32_t stepX = 1, stepY = 1;                            ///< sensor pixels per image pixel
    bool reverseX = false, reverseY = false;

    bool operator==(const ImageGeometry&) const = default;
};

/// All that decides how an image looks, apart from its number and time.
struct ImageSettings {
    ImageGeometry geometry;
    const EmulatedFormat* format = nullptr;
    TestPattern pattern = TestPattern::Off;
    ToneSettings tone;
    std::string title; ///< shown in the scene

    std::size_t RowBytes() const { return format->RowBytes(geometry.width); }
    std::size_t ImageBytes() const { return RowBytes() * geometry.height; }
};

} // namespace Norvane::Transport::Emulator
