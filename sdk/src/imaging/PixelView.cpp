#include "imaging/PixelView.h"

#include "norvane/Exception.h"

#include <cstdio>
#include <string>

namespace Norvane::Imaging {

const PixelLayout& RequireReadable(const PixelView& view, const char* purpose) {
    const PixelLayout* layout = FindLayout(view.format);
    if (!layout && (view.width == 0 || view.height == 0)) {
        throw Exception(Error::ImageConversion, std::string(purpose) + ": the image is empty");
    }
    if (!layout) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(view.pfncCode));
        throw Exception(Error::ImageConversion, std::string(purpose) + ": the pixel format " + code +
                                                    " (number " + std::to_string(view.format) +
                                                    ") is not known to this library; choose another one in "
                                                    "the camera's PixelFormat feature");
    }
    const std::string shape = std::to_string(view.width) + " x " + std::to_string(view.height) + " " +
                              std::string(layout->info.name);
    if (view.width == 0 || view.height == 0) {
        throw Exception(Error::ImageConversion,
                        std::string(purpose) + ": the image is empty (" + shape + ")");
    }
    const std::uint64_t needed = BytesNeeded(*layout, view.width, view.height, view.stride);
    if (!view.data || view.size < needed) {
        throw Exception(Error::InvalidBuffer, std::string(purpose) + ": the buffer holds " +
                                                  std::to_string(view.data ? view.size : 0) +
                                                  " bytes, but an image of " + shape + " takes " +
                                                  std::to_string(needed));
    }
    return *layout;
}

} // namespace Norvane::Imaging
