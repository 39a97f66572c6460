#include "imaging/ColorRows.h"
#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include <charconv>
#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

/// Writes samples of `bits` bits out of samples that fill T's range; two-byte samples go high byte first.
template <class T>
void WriteBinary(FileWriter& file, const T* row, std::size_t count, unsigned bits, std::string& bytes) {
    bytes.clear();
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned value = static_cast<unsigned>(row[i]) >> (8 * sizeof(T) - bits);
        if (sizeof(T) == 2) {
            bytes.push_back(static_cast<char>(value >> 8));
        }
        bytes.push_back(static_cast<char>(value & 0xFF));
    }
    file.Write(bytes.data(), bytes.size());
}

/// The same as decimal text, in lines of at most 70 characters as the format asks.
template <class T>
void WriteText(FileWriter& file, const T* row, std::size_t count, unsigned bits, std::string& text) {
    constexpr std::size_t kLongestLine = 70;
    text.clear();
    std::size_t lineBegin = 0;
    for (std::size_t i = 0; i < count; ++i) {
        char digits[8];
        const auto end = std::to_chars(digits, digits + sizeof digits,
                                       static_cast<unsigned>(row[i]) >> (8 * sizeof(T) - bits))
                             .ptr;
        const auto length = static_cast<std::size_t>(end - digits);
        if (text.size() != lineBegin && text.size() + 1 + length - lineBegin > kLongestLine) {
            text.push_back('\n');
            lineBegin = text.size();
        } else if (text.size() != lineBegin) {
            text.push_back(' ');
        }
        text.append(digits, length);
    }
    text.push_back('\n');
    file.Write(text.data(), text.size());
}

template <class T>
void WriteRows(FileWriter& file, const RowReader& reader, const PixelView& view, bool color, bool binary,
               unsigned bits) {
    SaveRows<T> rows(reader, view.width, SaveRows<T>::Order::Rgb);
    SaveRows<T> bgrRows(reader, view.width, SaveRows<T>::Order::Bgr);
    const std::size_t count = std::size_t{view.width} * (color ? 3 : 1);
    std::vector<T> shaped(count);
    std::string text;
    for (std::size_t y = 0; y < view.height; ++y) {
        const T* row = nullptr;
        if (color == reader.IsColor()) {
            row = rows.Row(y);
        } else if (color) {
            GreyToBgr(rows.Row(y), view.width, shaped.data());
            row = shaped.data();
        } else {
            BgrToGrey(bgrRows.Row(y), view.width, shaped.data());
            row = shaped.data();
        }
        if (binary) {
            WriteBinary(file, row, count, bits, text);
        } else {
            WriteText(file, row, count, bits, text);
        }
    }
}

// Netpbm's formats (netpbm.sourceforge.net, pgm(5), ppm(5)). The largest value says the depth, so the
// camera's numbers are written as they are.
void SavePnm(const PixelView& view, const char* fileName, bool color, bool binary) {
    const RowReader reader(view, "Save");
    const unsigned bits = std::max<unsigned>(8, reader.Layout().info.significantBits);
    FileWriter file(fileName);
    const std::string header = std::string("P") + (color ? (binary ? "6" : "3") : (binary ? "5" : "2")) +
                               "\n" + std::to_string(view.width) + " " + std::to_string(view.height) + "\n" +
                               std::to_string((1U << bits) - 1) + "\n";
    file.Write(header.data(), header.size());
    if (bits > 8) {
        WriteRows<std::uint16_t>(file, reader, view, color, binary, bits);
    } else {
        WriteRows<std::uint8_t>(file, reader, view, color, binary, bits);
    }
    file.Commit();
}

} // namespace

void SavePgm(const PixelView& view, const char* fileName, const PGMOption& option) {
    SavePnm(view, fileName, false, option.binaryFile);
}

void SavePpm(const PixelView& view, const char* fileName, const PPMOption& option) {
    SavePnm(view, fileName, true, option.binaryFile);
}

} // namespace Norvane::Imaging
