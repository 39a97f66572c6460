#pragma once

#include "norvane/Image.h"

#include <cstdint>
#include <memory>

namespace Norvane::Imaging {

/// Geometry, identity and status of an image; everything but its pixels.
struct ImageLayout {
    PixelFormatEnums format = PixelFormat_Undefined;
    std::uint32_t pfncCode = 0; ///< as the camera sent it; tells formats that `format` cannot name apart
    std::uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0; ///< pixels
    std::uint32_t paddingX = 0;                                    ///< bytes at the end of each row
    std::uint64_t frameId = 0;
    std::uint64_t timestampNs = 0;
    ImageStatus status = IMAGE_NO_ERROR;
};

/// An image over `size` bytes that `owner` keeps alive; dropping `owner` (Release(), or the last handle)
/// gives them back to whoever made it. Release() on one thread while another converts or saves is safe: the
/// bytes go back when that is done.
ImagePtr MakeImage(const ImageLayout& layout, std::uint8_t* data, std::size_t size,
                   std::shared_ptr<void> owner, ChunkData chunks = {});

} // namespace Norvane::Imaging
