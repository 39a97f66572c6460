#include "transport/emulator/Scene.h"

#include "transport/emulator/BitmapFont.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Norvane::Transport::Emulator {
namespace {

using Rgb = std::array<double, 3>; ///< 0 to 1

constexpr double kPi = 3.14159265358979323846;

/// Maps between the sensor, where the scene is laid out, and the image.
struct Mapping {
    double scaleX, shiftX, scaleY, shiftY; ///< sensor = scale * (image + 0.5) + shift

    explicit Mapping(const ImageGeometry& g)
        : scaleX(g.reverseX ? -double(g.stepX) : g.stepX),
          shiftX(g.reverseX ? double(g.sensorWidth) - double(g.offsetX) * g.stepX
                            : double(g.offsetX) * g.stepX),
          scaleY(g.reverseY ? -double(g.stepY) : g.stepY),
          shiftY(g.reverseY ? double(g.sensorHeight) - double(g.offsetY) * g.stepY
                            : double(g.offsetY) * g.stepY) {}

    double X(std::int32_t x) const { return scaleX * (x + 0.5) + shiftX; }
    double Y(std::int32_t y) const { return scaleY * (y + 0.5) + shiftY; }

    /// The image pixels that a box of the sensor touches, some pixels wider all around.
    PixelRect Box(double left, double top, double right, double bottom, const PixelRect& limits,
                  int margin = 1) const {
        double a = (left - shiftX) / scaleX, b = (right - shiftX) / scaleX;
        double c = (top - shiftY) / scaleY, d = (bottom - shiftY) / scaleY;
        if (a > b) {
            std::swap(a, b);
        }
        if (c > d) {
            std::swap(c, d);
        }
        const auto clip = [](double value, std::int32_t low, std::int32_t high) {
            return static_cast<std::int32_t>(std::clamp(value, double(low), double(high)));
        };
        return {clip(std::floor(a) - margin, limits.left, limits.right),
                clip(std::floor(c) - margin, limits.top, limits.bottom),
                clip(std::ceil(b) + margin, limits.left, limits.right),
                clip(std::ceil(d) + margin, limits.top, limits.bottom)};
    }
};

std::uint16_t Level(double value) {
    // With the half, cutting off the fraction rounds; no call for each of millions of samples.
    return static_cast<std::uint16_t>(std::clamp(value * 65535.0 + 0.5, 0.0, 65535.5));
}

void Put(std::uint16_t* pixel, const Rgb& colour) {
    for (std::size_t i = 0; i < 3; ++i) {
        pixel[i] = Level(colour[i]);
    }
}

void Blend(std::uint16_t* pixel, const Rgb& colour, double cover) {
    for (std::size_t i = 0; i < 3; ++i) {
        pixel[i] = static_cast<std::uint16_t>(pixel[i] + cover * (double(Level(colour[i])) - pixel[i]));
    }
}

Rgb FromHue(double hue, double saturation, double value) {
    Rgb result{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double k = std::fmod(5.0 - 2.0 * double(i) + hue * 6.0, 6.0);
        result[i] = value - value * saturation * std::clamp(std::min(k, 4.0 - k), 0.0, 1.0);
    }
    return result;
}

/// Paints shapes given in sensor pixels onto a canvas.
class Painter {
public:
    Painter(Canvas& canvas, const ImageGeometry& geometry) : m_canvas(canvas), m_map(geometry) {}

    /// Calls `shade(X, Y, pixel)` with sensor coordinates for each pixel of the box.
    template <class Shade>
    void Paint(double left, double top, double right, double bottom, const Shade& shade) {
        const PixelRect box = m_map.Box(left, top, right, bottom, m_canvas.rect);
        for (std::int32_t y = box.top; y < box.bottom; ++y) {
            const double sensorY = m_map.Y(y);
            if (sensorY < top || sensorY >= bottom) {
                continue;
            }
            std::uint16_t* pixel = m_canvas.At(box.left, y);
            for (std::int32_t x = box.left; x < box.right; ++x, pixel += 3) {
                const double sensorX = m_map.X(x);
                if (sensorX >= left && sensorX < right) {
                    shade(sensorX, sensorY, pixel);
                }
            }
        }
    }
    void Fill(double left, double top, double right, double bottom, const Rgb& colour) {
        Paint(left, top, right, bottom, [&](double, double, std::uint16_t* pixel) { Put(pixel, colour); });
    }
    void Text(double left, double top, double dot, std::string_view text, const Rgb& colour) {
        for (const char character : text) {
            for (int row = 0; row < BitmapFont::kHeight; ++row) {
                for (int column = 0; column < BitmapFont::kWidth; ++column) {
                    if (BitmapFont::Dot(character, column, row)) {
                        Fill(left + column * dot, top + row * dot, left + (column + 1) * dot,
                             top + (row + 1) * dot, colour);
                    }
                }
            }
            // A character of several bytes takes one box: its continuation bytes are skipped.
            left += (static_cast<unsigned char>(character) & 0xC0) == 0x80 ? 0.0 : BitmapFont::kAdvance * dot;
        }
    }

private:
    Canvas& m_canvas;
    Mapping m_map;
};

std::string OneCharacterEach(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            result += c;
        }
    }
    return result;
}

void PaintBase(Painter& painter, double w, double h, double unit) {
    // A dark, slightly bluish wall that grows lighter downwards, with a fine grid.
    painter.Paint(0, 0, w, h, [&](double x, double y, std::uint16_t* pixel) {
        const double light = 0.13 + 0.16 * y / h + 0.05 * x / w;
        pixel[0] = Level(light * 0.92);
        pixel[1] = Level(light);
        pixel[2] = Level(light * 1.14);
    });
    const double line = std::max(1.0, unit * 0.12);
    const Rgb grid{0.36, 0.39, 0.43};
    const double spacing = 8 * unit;
    for (int i = 1; i * spacing < w; ++i) {
        painter.Fill(i * spacing, 0, i * spacing + line, h, grid);
    }
    for (int i = 1; i * spacing < h; ++i) {
        painter.Fill(0, i * spacing, w, i * spacing + line, grid);
    }
}

void PaintStar(Painter& painter, double cx, double cy, double radius) {
    constexpr int kSpokes = 36;
    painter.Paint(cx - radius, cy - radius, cx + radius, cy + radius,
                  [&](double x, double y, std::uint16_t* pixel) {
                      const double dx = x - cx, dy = y - cy, r = std::sqrt(dx * dx + dy * dy);
                      if (r > radius) {
                          return;
                      }
                      double value = 0.95;
                      if (r < radius * 0.955) {
                          // Distance to the spoke's edge in pixels along the circle, for an edge one pixel
                          // soft.
                          const double turn = std::atan2(dy, dx) / (2 * kPi) * kSpokes;
                          const double inSpoke = turn - std::floor(turn);
                          const double edge = (0.25 - std::abs(inSpoke - 0.5)) * 2 * kPi * r / kSpokes;
                          value = 0.05 + 0.9 * std::clamp(0.5 - edge, 0.0, 1.0);
                      }
                      Put(pixel, {value, value, value});
                  });
}

void PaintPatches(Painter& painter, double left, double top, double patch) {
    const double gap = patch * 0.12;
    painter.Fill(left - 2 * gap, top - 2 * gap, left + 6 * patch + gap, top + 4 * patch + gap,
                 {0.04, 0.04, 0.045});
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 6; ++column) {
            const double x = left + column * patch, y = top + row * patch;
            Rgb colour{};
            if (row == 3) {
                const double grey = 0.96 - 0.175 * column;
                colour = {grey, grey, grey};
            } else {
                const double hue = (column + row * 0.33) / 6.0;
                colour = FromHue(hue,
                                 row == 0   ? 0.95
                                 : row == 1 ? 0.62
                                            : 0.38,
                                 row == 0   ? 0.88
                                 : row == 1 ? 0.66
                                            : 0.9);
            }
            painter.Fill(x, y, x + patch - gap, y + patch - gap, colour);
        }
    }
}

void PaintRamps(Painter& painter, double left, double top, double right, double height) {
    static constexpr std::array<Rgb, 4> kTints{
        {{1, 1, 1}, {1, 0.04, 0.04}, {0.04, 1, 0.04}, {0.06, 0.12, 1}}};
    for (std::size_t i = 0; i < kTints.size(); ++i) {
        const double y = top + double(i) * height / 5;
        painter.Paint(left, y, right, y + height / 5, [&](double x, double, std::uint16_t* pixel) {
            const double level = (x - left) / (right - left);
            Put(pixel, {kTints[i][0] * level, kTints[i][1] * level, kTints[i][2] * level});
        });
    }
    painter.Paint(left, top + height * 0.8, right, top + height, [&](double x, double, std::uint16_t* pixel) {
        const double level = std::floor((x - left) / (right - left) * 16) / 15;
        Put(pixel, {level, level, level});
    });
}

/// A dark square on a light card, turned by five degrees: its edges give the sharpness of whatever looks at
/// it.
void PaintSlantedEdge(Painter& painter, double cx, double cy, double side) {
    const double card = side * 0.95, angle = 5.0 / 180.0 * kPi, c = std::cos(angle), s = std::sin(angle);
    painter.Paint(cx - card, cy - card, cx + card, cy + card, [&](double x, double y, std::uint16_t* pixel) {
        const double u = std::abs((x - cx) * c + (y - cy) * s), v = std::abs((y - cy) * c - (x - cx) * s);
        const double inside = std::clamp(side / 2 - std::max(u, v) + 0.5, 0.0, 1.0);
        const double value = 0.9 - 0.82 * inside;
        Put(pixel, {value, value, value * 0.98});
    });
}

void PaintLinePairs(Painter& painter, double left, double top, double right, double height, double dot) {
    static constexpr int kPeriods[] = {2, 3, 4, 6, 8, 12, 16};
    painter.Fill(left - dot * 2, top - dot * 2, right + dot * 2, top + height + dot * 11, {0.93, 0.93, 0.9});
    const double slot = (right - left) / double(std::size(kPeriods));
    for (std::size_t i = 0; i < std::size(kPeriods); ++i) {
        const double x0 = left + double(i) * slot;
        const int period = kPeriods[i];
        painter.Paint(x0, top, x0 + slot * 0.8, top + height, [&](double x, double, std::uint16_t* pixel) {
            const double value = std::fmod(x - std::floor(x0), period) < period / 2.0 ? 0.05 : 0.95;
            Put(pixel, {value, value, value});
        });
        painter.Text(x0, top + height + dot * 2, dot, std::to_string(period), {0.1, 0.1, 0.1});
    }
}

void PaintCheckerboard(Painter& painter, double left, double top, double cell, int columns, int rows) {
    painter.Paint(
        left, top, left + columns * cell, top + rows * cell, [&](double x, double y, std::uint16_t* pixel) {
            const bool dark = (static_cast<int>((x - left) / cell) + static_cast<int>((y - top) / cell)) & 1;
            const double value = dark ? 0.04 : 0.94;
            Put(pixel, {value, value, value});
        });
}

void PaintChart(const ImageSettings& settings, Painter& painter) {
    const double w = settings.geometry.sensorWidth, h = settings.geometry.sensorHeight;
    const double unit = std::min(w, h) / 100.0;
    PaintBase(painter, w, h, unit);
    PaintStar(painter, w * 0.19, h * 0.38, 19 * unit);
    PaintPatches(painter, w * 0.63, h * 0.12, std::min(w * 0.055, h * 0.085));
    PaintSlantedEdge(painter, w * 0.475, h * 0.28, 14 * unit);
    const double dot = std::max(1.0, unit * 0.28);
    PaintLinePairs(painter, w * 0.37, h * 0.52, w * 0.58, h * 0.10, dot);
    const double cell = std::min(w * 0.33 / 12, h * 0.2 / 6);
    PaintCheckerboard(painter, w * 0.63, h * 0.52, cell, 12, 6);
    PaintRamps(painter, w * 0.04, h * 0.76, w * 0.96, h * 0.17);
    const std::string title = OneCharacterEach(settings.title);
    const double wanted = unit * 0.55;
    const double fitting = w * 0.56 / (BitmapFont::kAdvance * std::max<double>(1.0, double(title.size())));
    painter.Text(w * 0.40, h * 0.045, std::min(wanted, fitting), title, {0.92, 0.94, 0.97});
}

void PaintPattern(const ImageSettings& settings, std::uint32_t phase, Canvas& canvas) {
    static constexpr std::uint8_t kBars[8] = {0b111, 0b110, 0b011, 0b010,
                                              0b101, 0b100, 0b001, 0b000}; // red, green, blue
    const bool moving = settings.pattern == TestPattern::GreyHorizontalRampMoving ||
                        settings.pattern == TestPattern::GreyVerticalRampMoving;
    const auto shift = static_cast<std::int32_t>(moving ? phase : 0);
    std::uint16_t* pixel = canvas.light.data();
    for (std::int32_t y = canvas.rect.top; y < canvas.rect.bottom; ++y) {
        for (std::int32_t x = canvas.rect.left; x < canvas.rect.right; ++x, pixel += 3) {
            std::uint16_t value = 0;
            switch (settings.pattern) {
            case TestPattern::White:
                value = 65535;
                break;
            case TestPattern::GreyHorizontalRamp:
            case TestPattern::GreyHorizontalRampMoving:
                value = static_cast<std::uint16_t>(((x + shift) & 0xFF) * 257);
                break;
            case TestPattern::GreyVerticalRamp:
            case TestPattern::GreyVerticalRampMoving:
                value = static_cast<std::uint16_t>(((y + shift) & 0xFF) * 257);
                break;
            case TestPattern::ColorBar: {
                const std::uint8_t bar =
                    kBars[static_cast<std::size_t>(x - canvas.rect.left) * 8 / settings.geometry.width];
                for (int i = 0; i < 3; ++i) {
                    pixel[i] = bar >> (2 - i) & 1 ? 65535 : 0;
                }
                continue;
            }
            default:
                break;
            }
            pixel[0] = pixel[1] = pixel[2] = value;
        }
    }
}

/// Signed distance in sensor pixels from the object's edge, negative inside.
double DistanceTo(const SceneObject& object, double x, double y) {
    const double dx = x - object.x, dy = y - object.y, r = object.radius;
    switch (object.shape) {
    case SceneObject::Square:
        return std::max(std::abs(dx), std::abs(dy)) - r;
    case SceneObject::Triangle: {
        // Apex up, base at the bottom of the bounding box.
        const double slope = 2.0 / std::sqrt(5.0);
        return std::max(dy - r, std::abs(dx) * slope + (-dy - r) * (slope / 2));
    }
    default:
        return std::sqrt(dx * dx + dy * dy) - r;
    }
}

} // namespace

void Canvas::Resize(const PixelRect& to) {
    rect = to;
    light.resize(3 * static_cast<std::size_t>(to.right - to.left) *
                 static_cast<std::size_t>(to.bottom - to.top));
}

void Scene::PaintBackground(const ImageSettings& settings, std::uint32_t phase, Canvas& canvas) {
    canvas.Resize({0, 0, static_cast<std::int32_t>(settings.geometry.width),
                   static_cast<std::int32_t>(settings.geometry.height)});
    if (settings.pattern != TestPattern::Off) {
        PaintPattern(settings, phase, canvas);
        return;
    }
    Painter painter(canvas, settings.geometry);
    PaintChart(settings, painter);
}

std::vector<SceneObject> Scene::ObjectsAt(const ImageGeometry& geometry, double seconds) {
    struct Path {
        SceneObject::Shape shape;
        double speedX, speedY, startX, startY, size, confidence;
    };
    static constexpr Path kPaths[] = {
        {SceneObject::Disc, 0.61, 0.43, 0.0, 0.7, 5.5, 0.93},
        {SceneObject::Square, 0.37, 0.71, 1.9, 2.6, 4.5, 0.86},
        {SceneObject::Triangle, 0.53, 0.29, 3.8, 4.4, 5.0, 0.78},
        {SceneObject::Disc, 0.83, 0.57, 5.1, 1.2, 3.5, 0.64},
    };
    const double w = geometry.sensorWidth, h = geometry.sensorHeight, unit = std::min(w, h) / 100.0;
    std::vector<SceneObject> objects;
    for (std::size_t i = 0; i < std::size(kPaths); ++i) {
        const Path& path = kPaths[i];
        // The last one is there for six seconds of ten only.
        if (i + 1 == std::size(kPaths) && std::fmod(seconds, 10.0) >= 6.0) {
            continue;
        }
        const double radius = path.size * unit;
        SceneObject object;
        object.shape = path.shape;
        object.radius = radius;
        object.x = w / 2 + (w / 2 - radius) * std::sin(path.speedX * seconds + path.startX);
        object.y = h / 2 + (h / 2 - radius) * std::sin(path.speedY * seconds + path.startY);
        object.confidence = path.confidence + 0.06 * std::sin(1.7 * seconds + double(i));
        objects.push_back(object);
    }
    return objects;
}

PixelRect Scene::BoundsOf(const SceneObject& object, const ImageGeometry& geometry) {
    const PixelRect image{0, 0, static_cast<std::int32_t>(geometry.width),
                          static_cast<std::int32_t>(geometry.height)};
    const double r = object.radius;
    return Mapping(geometry).Box(object.x - r, object.y - r, object.x + r, object.y + r, image);
}

PixelRect Scene::OutlineOf(const SceneObject& object, const ImageGeometry& geometry) {
    const PixelRect image{0, 0, static_cast<std::int32_t>(geometry.width),
                          static_cast<std::int32_t>(geometry.height)};
    const double r = object.radius;
    return Mapping(geometry).Box(object.x - r, object.y - r, object.x + r, object.y + r, image, 0);
}

void Scene::PaintObject(const SceneObject& object, const ImageGeometry& geometry, Canvas& canvas) {
    static constexpr Rgb kColours[] = {{0.88, 0.22, 0.16}, {0.20, 0.72, 0.32}, {0.22, 0.42, 0.92}};
    const Mapping map(geometry);
    const double r = object.radius + 1;
    const PixelRect box = map.Box(object.x - r, object.y - r, object.x + r, object.y + r, canvas.rect);
    const Rgb& base = kColours[object.shape];
    const double rim = std::max(2.0, object.radius * 0.08);
    const double shadeStep = 0.35 / (2 * object.radius);
    for (std::int32_t y = box.top; y < box.bottom; ++y) {
        const double sensorY = map.Y(y);
        const double shade = 1.0 - shadeStep * (sensorY - object.y + object.radius);
        const std::uint16_t inside[3] = {Level(base[0] * shade), Level(base[1] * shade),
                                         Level(base[2] * shade)};
        // The shapes are convex: a row has one run of inside pixels between two edges, and only the edges
        // need care.
        const auto paintEdge = [&](std::int32_t x) {
            const double distance = DistanceTo(object, map.X(x), sensorY);
            if (distance <= -rim) {
                return false;
            }
            if (distance < 0.5) {
                Blend(canvas.At(x, y), {0.97, 0.97, 0.95}, std::clamp(0.5 - distance, 0.0, 1.0));
            }
            return true;
        };
        std::int32_t left = box.left, right = box.right;
        while (left < right && paintEdge(left)) {
            ++left;
        }
        while (right > left && paintEdge(right - 1)) {
            --right;
        }
        std::uint16_t* pixel = canvas.At(box.left, y) + 3 * (left - box.left);
        for (std::int32_t x = left; x < right; ++x, pixel += 3) {
            std::copy_n(inside, 3, pixel);
        }
    }
}

} // namespace Norvane::Transport::Emulator
