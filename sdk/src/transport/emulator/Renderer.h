#pragma once

#include "transport/emulator/ImageSettings.h"
#include "transport/emulator/Scene.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Norvane::Transport::Emulator {

/// Draws images into buffers that it knows: what did not change since the buffer's last image is not drawn
/// again, so that an image costs the moving objects and the frame counter and no more. Owned and used by one
/// stream's thread.
class Renderer {
public:
    /// What a buffer holds. Kept beside the buffer by its owner.
    struct Drawn {
        std::uint64_t epoch = 0;        ///< 0: nothing that can be kept
        std::vector<PixelRect> changes; ///< where it differs from the background
    };

    /// Takes new settings over and paints the background where they ask for it. Slow at the first call and
    /// when the geometry or the pixel format changed.
    void Prepare(std::shared_ptr<const ImageSettings> settings);
    /// Draws image `frameId` of time `seconds` since power-up into `data`, which holds ImageBytes() of the
    /// settings.
    void Draw(std::uint64_t frameId, double seconds, std::uint8_t* data, Drawn& drawn);

private:
    void PaintBase();
    void Restore(const PixelRect& rect, std::uint8_t* data) const;
    void DrawObjects(double seconds, std::uint8_t* data, Drawn& drawn);
    void DrawCounter(std::uint64_t frameId, double seconds, std::uint8_t* data, Drawn& drawn);
    PixelRect Aligned(PixelRect rect) const;

    std::shared_ptr<const ImageSettings> m_settings;
    ToneCurves m_curves{};
    std::optional<PixelWriter> m_writer;
    Canvas m_background;              ///< light of the whole image without objects
    std::vector<std::uint8_t> m_base; ///< the same as bytes of the pixel format
    std::uint64_t m_epoch = 0;        ///< counts the bases
    Canvas m_patch;
    std::vector<std::uint8_t> m_binary; ///< the counter's dots
};

} // namespace Norvane::Transport::Emulator
