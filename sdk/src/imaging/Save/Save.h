#pragma once

#include "imaging/PixelView.h"
#include "norvane/ImageOptions.h"

#include <cstddef>

/// Writers of still images. A mosaic is written as grey. PNG, TIFF, PGM, PPM and JPEG 2000 keep more than
/// 8 bits, the others drop them. Each throws Exception: (Io) with the system's reason, (FileFormat) for
/// pixels or options that the format cannot hold, (InvalidParameter) for options out of range, and what
/// RequireReadable throws. File names are UTF-8. Any thread.
namespace Norvane::Imaging {

/// Writes with default options. `size` is the number of bytes that a raw file takes.
void SaveImage(const PixelView& view, std::size_t size, const char* fileName, ImageFileFormat format);

/// The format that the name's extension means, in any letter case.
/// @throws Exception (FileFormat) when there is none or it is unknown.
ImageFileFormat FormatOfFileName(const char* fileName);

void SaveRaw(const PixelView& view, std::size_t size, const char* fileName);
void SavePng(const PixelView& view, const char* fileName, const PNGOption& option);
void SaveBmp(const PixelView& view, const char* fileName, const BMPOption& option);
void SaveJpeg(const PixelView& view, const char* fileName, const JPEGOption& option);
void SaveTiff(const PixelView& view, const char* fileName, const TIFFOption& option);
void SavePgm(const PixelView& view, const char* fileName, const PGMOption& option);
void SavePpm(const PixelView& view, const char* fileName, const PPMOption& option);
void SaveJpeg2000(const PixelView& view, const char* fileName, const JPG2Option& option);

} // namespace Norvane::Imaging
