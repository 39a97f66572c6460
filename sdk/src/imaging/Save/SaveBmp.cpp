#include "imaging/ColorRows.h"
#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

void Append16(std::vector<std::uint8_t>& bytes, unsigned value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(std::vector<std::uint8_t>& bytes, std::uint64_t value) {
    Append16(bytes, static_cast<unsigned>(value & 0xFFFF));
    Append16(bytes, static_cast<unsigned>(value >> 16 & 0xFFFF));
}

} // namespace

// The layout is that of BITMAPFILEHEADER and BITMAPINFOHEADER: rows from the bottom up, each padded to four
// bytes. Mono images with a palette take a third of the space; without, they are written as three equal
// bytes.
void SaveBmp(const PixelView& view, const char* fileName, const BMPOption& option) {
    const RowReader reader(view, "Save");
    const bool indexed = !reader.IsColor() && option.indexedColor_8bit;
    const std::size_t pixelBytes = std::size_t{view.width} * (indexed ? 1 : 3);
    const std::size_t rowBytes = (pixelBytes + 3) / 4 * 4;
    const std::uint64_t paletteBytes = indexed ? 1024 : 0;
    const std::uint64_t offset = 54 + paletteBytes;
    const std::uint64_t size = offset + std::uint64_t{rowBytes} * view.height;
    if (size > 0xFFFFFFFFULL || view.width > 0x7FFFFFFF || view.height > 0x7FFFFFFF) {
        throw Exception(Error::FileFormat, "BMP: files end at 4 GB, this image takes " +
                                               std::to_string(size) + " bytes; save it as TIFF or PNG");
    }
    std::vector<std::uint8_t> header{'B', 'M'};
    Append32(header, size);
    Append32(header, 0);
    Append32(header, offset);
    Append32(header, 40);
    Append32(header, view.width);
    Append32(header, view.height);
    Append16(header, 1);
    Append16(header, indexed ? 8 : 24);
    Append32(header, 0);
    Append32(header, size - offset);
    Append32(header, 2835); // 72 dpi in pixels per metre
    Append32(header, 2835);
    Append32(header, indexed ? 256 : 0);
    Append32(header, 0);
    for (unsigned i = 0; indexed && i < 256; ++i) {
        Append32(header, i * 0x010101U);
    }

    FileWriter file(fileName);
    file.Write(header.data(), header.size());
    SaveRows<std::uint8_t> rows(reader, view.width, SaveRows<std::uint8_t>::Order::Bgr);
    std::vector<std::uint8_t> padded(rowBytes);
    for (std::size_t y = view.height; y-- > 0;) {
        const std::uint8_t* row = rows.Row(y);
        if (reader.IsColor() || indexed) {
            std::copy_n(row, pixelBytes, padded.begin());
        } else {
            GreyToBgr(row, view.width, padded.data());
        }
        file.Write(padded.data(), rowBytes);
    }
    file.Commit();
}

} // namespace Norvane::Imaging
