#include "imaging/Save/Save.h"

#include "imaging/Save/FileWriter.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace Norvane::Imaging {
namespace {

struct Extension {
    const char* text;
    ImageFileFormat format;
};

constexpr Extension kExtensions[] = {
    {"raw", FILE_FORMAT_RAW},      {"png", FILE_FORMAT_PNG},      {"bmp", FILE_FORMAT_BMP},
    {"jpg", FILE_FORMAT_JPEG},     {"jpeg", FILE_FORMAT_JPEG},    {"tif", FILE_FORMAT_TIFF},
    {"tiff", FILE_FORMAT_TIFF},    {"pgm", FILE_FORMAT_PGM},      {"ppm", FILE_FORMAT_PPM},
    {"jp2", FILE_FORMAT_JPEG2000}, {"j2k", FILE_FORMAT_JPEG2000}, {"jpg2000", FILE_FORMAT_JPEG2000},
};

} // namespace

ImageFileFormat FormatOfFileName(const char* fileName) {
    const std::string name = fileName ? fileName : "";
    const std::size_t slash = name.rfind('/');
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
        std::string extension = name.substr(dot + 1);
        std::transform(extension.begin(), extension.end(), extension.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        for (const Extension& known : kExtensions) {
            if (extension == known.text) {
                return known.format;
            }
        }
    }
    std::string known;
    for (const Extension& extension : kExtensions) {
        known += std::string(known.empty() ? "" : ", ") + extension.text;
    }
    throw Exception(Error::FileFormat,
                    "The name \"" + name + "\" does not end in a known image extension; known are " + known);
}

void SaveImage(const PixelView& view, std::size_t size, const char* fileName, ImageFileFormat format) {
    if (format == FILE_FORMAT_FROM_FILE_EXT) {
        format = FormatOfFileName(fileName);
    }
    switch (format) {
    case FILE_FORMAT_PGM:
        return SavePgm(view, fileName, {});
    case FILE_FORMAT_PPM:
        return SavePpm(view, fileName, {});
    case FILE_FORMAT_BMP:
        return SaveBmp(view, fileName, {});
    case FILE_FORMAT_JPEG:
        return SaveJpeg(view, fileName, {});
    case FILE_FORMAT_JPEG2000:
        return SaveJpeg2000(view, fileName, {});
    case FILE_FORMAT_TIFF:
        return SaveTiff(view, fileName, {});
    case FILE_FORMAT_PNG:
        return SavePng(view, fileName, {});
    case FILE_FORMAT_RAW:
        return SaveRaw(view, size, fileName);
    case FILE_FORMAT_FROM_FILE_EXT:
        break;
    }
    throw Exception(Error::InvalidParameter,
                    "Save: there is no image file format number " + std::to_string(static_cast<int>(format)));
}

void SaveRaw(const PixelView& view, std::size_t size, const char* fileName) {
    if (!view.data || size == 0) {
        throw Exception(Error::InvalidBuffer, "Save: the image is empty");
    }
    FileWriter file(fileName);
    file.Write(view.data, size);
    file.Commit();
}

} // namespace Norvane::Imaging
