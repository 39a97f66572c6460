#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include "norvane/Exception.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

FileWriter& FileOf(thandle_t handle) {
    return *static_cast<FileWriter*>(handle);
}

tmsize_t OnRead(thandle_t handle, void* data, tmsize_t size) {
    return static_cast<tmsize_t>(FileOf(handle).TryRead(data, static_cast<std::size_t>(size)));
}

tmsize_t OnWrite(thandle_t handle, void* data, tmsize_t size) {
    return FileOf(handle).TryWrite(data, static_cast<std::size_t>(size)) ? size : -1;
}

toff_t OnSeek(thandle_t handle, toff_t offset, int whence) {
    FileWriter& file = FileOf(handle);
    const toff_t base = whence == SEEK_CUR ? file.Position() : whence == SEEK_END ? file.Size() : 0;
    return file.TrySeek(base + offset) ? base + offset : static_cast<toff_t>(-1);
}

int OnClose(thandle_t) {
    return 0;
}

toff_t OnSize(thandle_t handle) {
    return FileOf(handle).Size();
}

struct CloseTiff {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};

unsigned SchemeOf(TIFFOption::CompressionMethod method) {
    switch (method) {
    case TIFFOption::NONE:
        return COMPRESSION_NONE;
    case TIFFOption::PACKBITS:
        return COMPRESSION_PACKBITS;
    case TIFFOption::DEFLATE:
        return COMPRESSION_DEFLATE;
    case TIFFOption::ADOBE_DEFLATE:
        return COMPRESSION_ADOBE_DEFLATE;
    case TIFFOption::CCITTFAX3:
        return COMPRESSION_CCITTFAX3;
    case TIFFOption::CCITTFAX4:
        return COMPRESSION_CCITTFAX4;
    case TIFFOption::LZW:
        return COMPRESSION_LZW;
    case TIFFOption::JPEG:
        return COMPRESSION_JPEG;
    }
    throw Exception(Error::InvalidParameter,
                    "TIFF: there is no compression number " + std::to_string(static_cast<int>(method)));
}

int OnError(TIFF*, void* message, const char* module, const char* format, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    *static_cast<std::string*>(message) = std::string(module ? module : "libtiff") + ": " + text;
    return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

std::unique_ptr<TIFF, CloseTiff> Open(FileWriter& file, std::string& message) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, nullptr);
    TIFF* tiff = TIFFClientOpenExt(file.Name().c_str(), "w", &file, OnRead, OnWrite, OnSeek, OnClose, OnSize,
                                   nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
    return std::unique_ptr<TIFF, CloseTiff>(tiff);
}

/// One bit per pixel, white as 0 as facsimile wants it.
class BilevelRows {
public:
    BilevelRows(const RowReader& reader, std::size_t width)
        : m_rows(reader, width, SaveRows<std::uint8_t>::Order::Rgb), m_width(width), m_bits((width + 7) / 8) {
    }

    const std::uint8_t* Row(std::size_t y) {
        const std::uint8_t* row = m_rows.Row(y);
        std::fill(m_bits.begin(), m_bits.end(), std::uint8_t{0});
        for (std::size_t x = 0; x < m_width; ++x) {
            if (row[x] == 0) {
                m_bits[x / 8] = static_cast<std::uint8_t>(m_bits[x / 8] | 0x80 >> x % 8);
            }
        }
        return m_bits.data();
    }

private:
    SaveRows<std::uint8_t> m_rows;
    std::size_t m_width;
    std::vector<std::uint8_t> m_bits;
};

bool IsBilevel(const RowReader& reader, const PixelView& view) {
    if (reader.IsColor()) {
        return false;
    }
    SaveRows<std::uint16_t> rows(reader, view.width, SaveRows<std::uint16_t>::Order::Rgb);
    for (std::size_t y = 0; y < view.height; ++y) {
        const std::uint16_t* row = rows.Row(y);
        if (std::any_of(row, row + view.width, [](std::uint16_t v) { return v != 0 && v != 0xFFFF; })) {
            return false;
        }
    }
    return true;
}

template <class Rows>
bool WriteRows(TIFF* tiff, const PixelView& view, Rows& rows, std::size_t rowBytes) {
    // libtiff may change the row that it is given, by predictor and byte swapping.
    std::vector<std::uint8_t> copy(rowBytes);
    for (std::uint32_t y = 0; y < view.height; ++y) {
        std::memcpy(copy.data(), rows.Row(y), rowBytes);
        if (TIFFWriteScanline(tiff, copy.data(), y) < 0) {
            return false;
        }
    }
    return true;
}

} // namespace

void SaveTiff(const PixelView& view, const char* fileName, const TIFFOption& option) {
    const unsigned scheme = SchemeOf(option.compression);
    const RowReader reader(view, "Save");
    const bool bilevel = scheme == COMPRESSION_CCITTFAX3 || scheme == COMPRESSION_CCITTFAX4;
    if (bilevel && !IsBilevel(reader, view)) {
        throw Exception(Error::FileFormat,
                        "TIFF: CCITT compression stores black and white only, and this image (" +
                            std::string(reader.Layout().info.name) +
                            ") has other values; choose LZW, Deflate or PackBits");
    }
    const bool deep = IsDeep(reader) && !bilevel && scheme != COMPRESSION_JPEG;
    const unsigned samples = reader.SamplesPerPixel();
    const std::size_t rowBytes =
        bilevel ? (std::size_t{view.width} + 7) / 8 : std::size_t{view.width} * samples * (deep ? 2 : 1);
    if (rowBytes * view.height > 0xFFF00000ULL) {
        throw Exception(Error::FileFormat, "TIFF: files end at 4 GB; this image takes " +
                                               std::to_string(rowBytes * view.height) + " bytes");
    }

    FileWriter file(fileName);
    std::string message = "the encoder could not be made";
    std::unique_ptr<TIFF, CloseTiff> tiff = Open(file, message);
    bool ok = tiff != nullptr;
    if (ok) {
        TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, view.width);
        TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, view.height);
        TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, bilevel ? 1 : deep ? 16 : 8);
        TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        TIFFSetField(tiff.get(), TIFFTAG_SOFTWARE, "Norvane");
        ok = TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, scheme) == 1;
        if (bilevel) {
            TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        } else if (scheme == COMPRESSION_JPEG && samples == 3) {
            TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR);
            TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        } else {
            TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC,
                         samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
        }
        if (scheme == COMPRESSION_LZW || scheme == COMPRESSION_DEFLATE ||
            scheme == COMPRESSION_ADOBE_DEFLATE) {
            TIFFSetField(tiff.get(), TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        }
        TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff.get(), 0));
    }
    if (ok && bilevel) {
        BilevelRows rows(reader, view.width);
        ok = WriteRows(tiff.get(), view, rows, rowBytes);
    } else if (ok && deep) {
        SaveRows<std::uint16_t> rows(reader, view.width, SaveRows<std::uint16_t>::Order::Rgb);
        ok = WriteRows(tiff.get(), view, rows, rowBytes);
    } else if (ok) {
        SaveRows<std::uint8_t> rows(reader, view.width, SaveRows<std::uint8_t>::Order::Rgb);
        ok = WriteRows(tiff.get(), view, rows, rowBytes);
    }
    ok = ok && TIFFFlush(tiff.get()) == 1;
    tiff.reset();
    file.ThrowIfFailed();
    if (!ok) {
        throw Exception(Error::FileFormat, "TIFF: " + message);
    }
    file.Commit();
}

} // namespace Norvane::Imaging
