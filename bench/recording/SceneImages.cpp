#include "SceneImages.h"

#include "transport/emulator/Renderer.h"

#include <memory>

using namespace Norvane::Transport::Emulator;

SceneImages::SceneImages(const char* format, int width, int height, int count, double imagesPerSecond) {
    auto settings = std::make_shared<ImageSettings>();
    const auto w = static_cast<std::uint32_t>(width);
    const auto h = static_cast<std::uint32_t>(height);
    settings->geometry = {w, h, w, h, 0, 0, 1, 1, false, false};
    settings->format = FindEmulatedFormat(format);
    settings->title = "Duskwing S DWS-50S5C  21034567";
    Renderer renderer;
    renderer.Prepare(settings);
    const Norvane::PixelFormatInfo* info = Norvane::FindPixelFormatByName(format);
    m_pixels.assign(static_cast<std::size_t>(count), std::vector<std::uint8_t>(settings->ImageBytes()));
    for (int i = 0; i < count; ++i) {
        auto& pixels = m_pixels[static_cast<std::size_t>(i)];
        Renderer::Drawn drawn;
        renderer.Draw(static_cast<std::uint64_t>(i), i / imagesPerSecond, pixels.data(), drawn);
        m_images.push_back(Norvane::Image::Create(w, h, 0, 0, info->format, pixels.data()));
    }
}
