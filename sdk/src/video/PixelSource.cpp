#include "video/PixelSource.h"

#include <string>

namespace Norvane::Video {

namespace {

bool IsMono(const ImagePtr& image) {
    const PixelFormatInfo* info = FindPixelFormat(image->GetPixelFormat());
    return info && info->name.substr(0, 4) == "Mono";
}

} // namespace

PixelSource::PixelSource(const ImagePtr& first, int width, int height)
    : m_format(IsMono(first) ? PixelFormat_Mono8 : PixelFormat_BGR8), m_width(width), m_height(height) {}

PixelSource::Rows PixelSource::Take(const ImagePtr& image) {
    if (image->GetWidth() != static_cast<std::size_t>(m_width) ||
        image->GetHeight() != static_cast<std::size_t>(m_height)) {
        throw Exception(Error::InvalidParameter,
                        "The video is " + std::to_string(m_width) + " x " + std::to_string(m_height) +
                            " and cannot take an image of " + std::to_string(image->GetWidth()) + " x " +
                            std::to_string(image->GetHeight()) + "; close it and open another");
    }
    if (image->GetPixelFormat() == m_format && image->GetData() && image->GetStride() != 0) {
        return {static_cast<const std::uint8_t*>(image->GetData()), static_cast<int>(image->GetStride())};
    }
    const int stride = m_width * BytesPerPixel();
    if (m_pixels.empty()) {
        m_pixels.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(m_height));
        m_converted = Image::Create(image->GetWidth(), image->GetHeight(), 0, 0, m_format, m_pixels.data());
    }
    image->Convert(m_converted);
    return {m_pixels.data(), stride};
}

} // namespace Norvane::Video
