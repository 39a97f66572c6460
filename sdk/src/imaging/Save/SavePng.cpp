#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include "norvane/Exception.h"

#include <png.h>
#include <zlib.h>

#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

// libpng leaves through longjmp; nothing between the setjmp and the calls has a destructor.
struct Writer {
    FileWriter& file;
    std::string message;
};

void OnError(png_structp png, png_const_charp message) {
    static_cast<Writer*>(png_get_error_ptr(png))->message = message;
    png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void OnWrite(png_structp png, png_bytep data, png_size_t size) {
    if (!static_cast<Writer*>(png_get_io_ptr(png))->file.TryWrite(data, size)) {
        png_error(png, "write error");
    }
}

void OnFlush(png_structp) {}

struct Header {
    png_uint_32 width, height;
    int depth, colorType;
    png_byte significantBits;
    int level;
    bool interlaced;
};

template <class T>
bool Encode(png_structp png, png_infop info, const Header& header, SaveRows<T>& rows) {
    if (setjmp(png_jmpbuf(png))) {
        return false;
    }
    png_set_IHDR(png, info, header.width, header.height, header.depth, header.colorType,
                 header.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (header.significantBits < header.depth) {
        const png_byte bits = header.significantBits;
        const png_color_8 significant{bits, bits, bits, bits, bits};
        png_set_sBIT(png, info, &significant);
    }
    // One fixed filter and run-length matches take a tenth of libpng's defaults on camera images, whose noise
    // leaves longer matches little to find.
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_compression_strategy(png, Z_RLE);
    png_set_compression_level(png, header.level);
    png_set_compression_buffer_size(png, 1 << 18);
    png_write_info(png, info);
    if (header.depth == 16) {
        png_set_swap(png);
    }
    if (header.colorType == PNG_COLOR_TYPE_RGB) {
        png_set_bgr(png);
    }
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < header.height; ++y) {
            png_write_row(png, reinterpret_cast<png_const_bytep>(rows.Row(y)));
        }
    }
    png_write_end(png, info);
    return true;
}

template <class T>
bool EncodeRows(png_structp png, png_infop info, const Header& header, const RowReader& reader) {
    SaveRows<T> rows(reader, header.width, SaveRows<T>::Order::Bgr);
    return Encode(png, info, header, rows);
}

} // namespace

void SavePng(const PixelView& view, const char* fileName, const PNGOption& option) {
    if (option.compressionLevel > 9) {
        throw Exception(Error::InvalidParameter, "PNG: the compression level is 0 to 9, not " +
                                                     std::to_string(option.compressionLevel));
    }
    const RowReader reader(view, "Save");
    const bool deep = IsDeep(reader);
    const Header header{view.width,
                        view.height,
                        deep ? 16 : 8,
                        reader.IsColor() ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                        reader.Layout().info.significantBits,
                        static_cast<int>(option.compressionLevel),
                        option.interlaced};
    FileWriter file(fileName);
    Writer writer{file, {}};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer, OnError, OnWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw Exception(Error::OutOfMemory, "PNG: no memory for the encoder");
    }
    png_set_write_fn(png, &writer, OnWrite, OnFlush);
    png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
    bool ok = false;
    try {
        ok = deep ? EncodeRows<std::uint16_t>(png, info, header, reader)
                  : EncodeRows<std::uint8_t>(png, info, header, reader);
    } catch (...) {
        png_destroy_write_struct(&png, &info);
        throw;
    }
    png_destroy_write_struct(&png, &info);
    file.ThrowIfFailed();
    if (!ok) {
        throw Exception(Error::FileFormat, "PNG: " + writer.message);
    }
    file.Commit();
}

} // namespace Norvane::Imaging
