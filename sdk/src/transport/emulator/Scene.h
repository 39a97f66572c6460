#pragma once

#include "transport/emulator/ImageSettings.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Norvane::Transport::Emulator {

/// A rectangle of image pixels; right and bottom lie outside.
struct PixelRect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;

    bool IsEmpty() const { return left >= right || top >= bottom; }
    bool Meets(const PixelRect& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

/// Linear RGB, three 16-bit values a pixel, of a rectangle of the image.
struct Canvas {
    PixelRect rect;
    std::vector<std::uint16_t> light;

    void Resize(const PixelRect& to);
    std::uint16_t* At(std::int32_t x, std::int32_t y) {
        return light.data() + 3 * (static_cast<std::size_t>(y - rect.top) *
                                       static_cast<std::size_t>(rect.right - rect.left) +
                                   static_cast<std::size_t>(x - rect.left));
    }
};

/// One thing that moves through the scene, in sensor pixels.
struct SceneObject {
    enum Shape { Disc = 0, Square = 1, Triangle = 2 };
    Shape shape = Disc; ///< also the class that inference reports
    double x = 0.0, y = 0.0, radius = 0.0;
    double confidence = 0.0; ///< 0 to 1, what inference reports
};

/// What stands before the emulated sensor: a test chart with a Siemens star, colour patches, ramps, a slanted
/// edge, line pairs and text, and objects that move in front of it. Pure functions of geometry and time.
class Scene {
public:
    /// Paints the whole chart, or a test pattern, as the geometry shows it. `phase` moves the moving
    /// patterns.
    static void PaintBackground(const ImageSettings& settings, std::uint32_t phase, Canvas& canvas);

    /// The objects `seconds` after power-up. Their number changes with time.
    static std::vector<SceneObject> ObjectsAt(const ImageGeometry& geometry, double seconds);
    /// The image pixels that painting an object may alter, clipped to the image.
    static PixelRect BoundsOf(const SceneObject& object, const ImageGeometry& geometry);
    /// The image pixels of the box around an object, clipped to the image.
    static PixelRect OutlineOf(const SceneObject& object, const ImageGeometry& geometry);
    /// Paints an object as far as it lies on the canvas.
    static void PaintObject(const SceneObject& object, const ImageGeometry& geometry, Canvas& canvas);
};

} // namespace Norvane::Transport::Emulator
