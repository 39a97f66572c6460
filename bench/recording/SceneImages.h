#pragma once

#include "norvane/Image.h"

#include <cstdint>
#include <vector>

/// Images of the emulated camera's moving scene, drawn ahead so that drawing costs the measurement nothing.
/// Images live as long as this object.
class SceneImages {
public:
    /// @param format  an emulated pixel format's name, as BGR8.
    SceneImages(const char* format, int width, int height, int count, double imagesPerSecond);

    const Norvane::ImagePtr& Image(int index) const {
        return m_images[static_cast<std::size_t>(index) % m_images.size()];
    }
    const std::vector<std::uint8_t>& Pixels(int index) const {
        return m_pixels[static_cast<std::size_t>(index) % m_pixels.size()];
    }
    std::size_t Count() const { return m_images.size(); }

private:
    std::vector<std::vector<std::uint8_t>> m_pixels;
    std::vector<Norvane::ImagePtr> m_images;
};
