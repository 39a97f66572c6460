#include "transport/emulator/Renderer.h"

#include "transport/emulator/BitmapFont.h"
#include "transport/emulator/FrameCode.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace Norvane::Transport::Emulator {

void Renderer::Prepare(std::shared_ptr<const ImageSettings> settings) {
    if (settings == m_settings) {
        return;
    }
    const bool samePicture = m_settings && m_settings->geometry == settings->geometry &&
                             m_settings->pattern == settings->pattern && m_settings->title == settings->title;
    const bool sameBytes =
        samePicture && m_settings->format == settings->format && m_settings->tone == settings->tone;
    m_settings = std::move(settings);
    if (!samePicture) {
        Scene::PaintBackground(*m_settings, 0, m_background);
    }
    if (!sameBytes) {
        // A test pattern comes from behind the sensor: gain and exposure do not touch it.
        m_curves =
            MakeToneCurves(m_settings->pattern == TestPattern::Off ? m_settings->tone : ToneSettings{});
        m_writer.emplace(*m_settings->format, m_curves);
        PaintBase();
    }
}

void Renderer::PaintBase() {
    const std::size_t stride = m_settings->RowBytes();
    m_base.resize(m_settings->ImageBytes());
    for (std::uint32_t y = 0; y < m_settings->geometry.height; ++y) {
        m_writer->Write(m_background.At(0, static_cast<std::int32_t>(y)), 0, y, m_settings->geometry.width,
                        m_base.data() + y * stride);
    }
    ++m_epoch;
}

void Renderer::Draw(std::uint64_t frameId, double seconds, std::uint8_t* data, Drawn& drawn) {
    if (m_settings->pattern == TestPattern::GreyHorizontalRampMoving ||
        m_settings->pattern == TestPattern::GreyVerticalRampMoving) {
        Scene::PaintBackground(*m_settings, static_cast<std::uint32_t>(frameId), m_background);
        PaintBase();
    }
    if (drawn.epoch != m_epoch) {
        std::memcpy(data, m_base.data(), m_base.size());
        drawn.epoch = m_epoch;
    } else {
        for (const PixelRect& rect : drawn.changes) {
            Restore(rect, data);
        }
    }
    drawn.changes.clear();
    if (m_settings->pattern == TestPattern::Off) {
        DrawObjects(seconds, data, drawn);
        DrawCounter(frameId, seconds, data, drawn);
    }
}

PixelRect Renderer::Aligned(PixelRect rect) const {
    constexpr auto kStep = static_cast<std::int32_t>(PixelWriter::kColumnStep);
    const auto width = static_cast<std::int32_t>(m_settings->geometry.width);
    rect.left = rect.left / kStep * kStep;
    rect.right = std::min(width, (rect.right + kStep - 1) / kStep * kStep);
    return rect;
}

void Renderer::Restore(const PixelRect& rect, std::uint8_t* data) const {
    const EmulatedFormat& format = *m_settings->format;
    const std::size_t stride = m_settings->RowBytes();
    const std::size_t first = format.RowBytes(static_cast<std::uint32_t>(rect.left));
    const std::size_t last = format.RowBytes(static_cast<std::uint32_t>(rect.right));
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        const std::size_t offset = static_cast<std::size_t>(y) * stride + first;
        std::memcpy(data + offset, m_base.data() + offset, last - first);
    }
}

void Renderer::DrawObjects(double seconds, std::uint8_t* data, Drawn& drawn) {
    const ImageGeometry& geometry = m_settings->geometry;
    const auto objects = Scene::ObjectsAt(geometry, seconds);
    for (const SceneObject& object : objects) {
        const PixelRect rect = Aligned(Scene::BoundsOf(object, geometry));
        if (rect.IsEmpty()) {
            continue;
        }
        m_patch.Resize(rect);
        const std::size_t rowValues = 3 * static_cast<std::size_t>(rect.right - rect.left);
        for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
            std::copy_n(m_background.At(rect.left, y), rowValues, m_patch.At(rect.left, y));
        }
        for (const SceneObject& other : objects) {
            if (Scene::BoundsOf(other, geometry).Meets(rect)) {
                Scene::PaintObject(other, geometry, m_patch);
            }
        }
        for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
            m_writer->Write(m_patch.At(rect.left, y), static_cast<std::uint32_t>(rect.left),
                            static_cast<std::uint32_t>(y), static_cast<std::uint32_t>(rect.right - rect.left),
                            data + static_cast<std::size_t>(y) * m_settings->RowBytes());
        }
        drawn.changes.push_back(rect);
    }
}

void Renderer::DrawCounter(std::uint64_t frameId, double seconds, std::uint8_t* data, Drawn& drawn) {
    const ImageGeometry& geometry = m_settings->geometry;
    const FrameCode::Layout layout = FrameCode::LayoutFor(geometry.width);
    if (layout.columns == 0 || layout.rows * FrameCode::kCell > geometry.height) {
        return;
    }
    // The strip, and below it the same number for people where there is room for it.
    constexpr std::uint32_t kDot = 3, kMargin = 4;
    char text[48];
    std::snprintf(text, sizeof text, "#%08llu  %.3f S", static_cast<unsigned long long>(frameId), seconds);
    const std::string_view label(text);
    const auto labelWidth =
        static_cast<std::uint32_t>(label.size()) * BitmapFont::kAdvance * kDot + 2 * kMargin;
    const std::uint32_t labelHeight = BitmapFont::kHeight * kDot + 2 * kMargin;
    const std::uint32_t stripHeight = layout.rows * FrameCode::kCell;
    const bool hasLabel = geometry.width >= labelWidth && geometry.height >= stripHeight + labelHeight;
    const std::uint32_t needed = std::max(layout.columns * FrameCode::kCell, hasLabel ? labelWidth : 0);
    const PixelRect rect = Aligned({0, 0, static_cast<std::int32_t>(needed),
                                    static_cast<std::int32_t>(stripHeight + (hasLabel ? labelHeight : 0))});
    const auto width = static_cast<std::uint32_t>(rect.right);
    const auto cells = FrameCode::Encode(static_cast<std::uint32_t>(frameId));
    m_binary.resize(width);
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(rect.bottom); ++y) {
        const bool inStrip = y < stripHeight;
        if (!inStrip || y % FrameCode::kCell == 0) {
            std::fill(m_binary.begin(), m_binary.end(), std::uint8_t{0});
        }
        if (inStrip && y % FrameCode::kCell == 0) {
            for (std::uint32_t x = 0; x < layout.columns * FrameCode::kCell; ++x) {
                const std::uint32_t cell = y / FrameCode::kCell * layout.columns + x / FrameCode::kCell;
                m_binary[x] = cell < FrameCode::kCells && cells[cell];
            }
        } else if (!inStrip) {
            const auto row =
                (static_cast<int>(y - stripHeight) - static_cast<int>(kMargin)) / static_cast<int>(kDot);
            if (y - stripHeight >= kMargin && row < BitmapFont::kHeight) {
                for (std::uint32_t x = kMargin; x + kMargin < labelWidth; ++x) {
                    const std::uint32_t dot = (x - kMargin) / kDot;
                    m_binary[x] = BitmapFont::Dot(label[dot / BitmapFont::kAdvance],
                                                  static_cast<int>(dot % BitmapFont::kAdvance), row);
                }
            }
        }
        m_writer->WriteBinary(m_binary.data(), 0, width, data + y * m_settings->RowBytes());
    }
    drawn.changes.push_back(rect);
}

} // namespace Norvane::Transport::Emulator
