#pragma once

#include "norvane/Image.h"

#include <cstdint>
#include <vector>

namespace Norvane::Video {

/// Turns the camera's images into rows that a video can be made of: grey for mono formats, else BGR. Keeps
/// one buffer that lasts for the whole video. Owned by the writer, used by its thread.
class PixelSource {
public:
    struct Rows {
        const std::uint8_t* data = nullptr;
        int stride = 0; ///< bytes from row to row
    };

    /// @param first  the image that decides between grey and colour for the whole video.
    PixelSource(const ImagePtr& first, int width, int height);

    bool IsGrey() const { return m_format == PixelFormat_Mono8; }
    int BytesPerPixel() const { return IsGrey() ? 1 : 3; }

    /// The image's pixels, valid until the next call and as long as the image.
    /// @throws Exception when the image has another size or cannot be converted.
    Rows Take(const ImagePtr& image);

private:
    PixelFormatEnums m_format;
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_pixels; // empty until an image needs converting
    ImagePtr m_converted;               // over m_pixels
};

} // namespace Norvane::Video
