#include "norvane/PixelFormat.h"
#include "transport/emulator/FrameCode.h"
#include "transport/emulator/PixelWriters.h"
#include "transport/emulator/ToneSettings.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Norvane::Transport::Emulator {
namespace {

TEST(PixelWriters, AgreeWithTheLibrarysTableOfFormats) {
    for (const EmulatedFormat& format : EmulatedFormats()) {
        SCOPED_TRACE(format.name);
        const PixelFormatInfo* info = FindPixelFormatByName(format.name);
        ASSERT_TRUE(info);
        EXPECT_EQ(info->pfncCode, format.pfncCode);
        for (const std::uint32_t width : {1U, 2U, 3U, 5U, 8U, 641U}) {
            EXPECT_EQ(PixelFormatImageSize(info->format, width, 3), format.RowBytes(width) * 3) << width;
        }
    }
}

/// One sample of a row, unpacked bit by bit.
std::uint32_t Sample(const EmulatedFormat& format, const std::vector<std::uint8_t>& row,
                     std::uint32_t index) {
    switch (format.packing) {
    case Packing::Words:
        return row[2 * index] | row[2 * index + 1] << 8;
    case Packing::LsbPacked: {
        std::uint32_t value = 0;
        for (std::uint32_t bit = 0; bit < format.bits; ++bit) {
            const std::uint32_t at = index * format.bits + bit;
            value |= (row[at / 8] >> at % 8 & 1U) << bit;
        }
        return value;
    }
    case Packing::GevPacked: {
        const std::uint32_t low = format.bits - 8U;
        const std::uint8_t* group = row.data() + index / 2 * 3;
        return index % 2 == 0 ? group[0] << low | (group[1] & ((1U << low) - 1))
                              : group[2] << low | (group[1] >> 4 & ((1U << low) - 1));
    }
    default:
        return row[index];
    }
}

TEST(PixelWriters, MonoAndBayerSamplesCarryTheLightOfTheirColour) {
    const ToneCurves plain = MakeToneCurves({});
    constexpr std::uint32_t kWidth = 13;
    std::vector<std::uint16_t> light(3 * kWidth);
    for (std::uint32_t x = 0; x < kWidth; ++x) {
        light[3 * x] = static_cast<std::uint16_t>(4000 + x * 16);
        light[3 * x + 1] = static_cast<std::uint16_t>(30000 + x * 16);
        light[3 * x + 2] = static_cast<std::uint16_t>(60000 + x * 16);
    }
    for (const EmulatedFormat& format : EmulatedFormats()) {
        if (!format.IsMono() && !format.IsBayer()) {
            continue;
        }
        SCOPED_TRACE(format.name);
        PixelWriter writer(format, plain);
        for (std::uint32_t y = 0; y < 2; ++y) {
            std::vector<std::uint8_t> row(format.RowBytes(kWidth), 0xAA);
            writer.Write(light.data(), 0, y, kWidth, row.data());
            for (std::uint32_t x = 0; x < kWidth; ++x) {
                double expected = 0;
                if (format.IsMono()) {
                    expected = 0.3 * light[3 * x] + 0.59 * light[3 * x + 1] + 0.11 * light[3 * x + 2];
                } else {
                    // The four corners of the mosaic as the name spells them: first row, then green and the
                    // other.
                    const char first = format.name[5], second = format.name[6];
                    const bool greenFirst = first == 'G';
                    char colour = y == 0 ? (x % 2 == 0 ? first : second) : 'G';
                    if (y == 1 && (x % 2 == 0) == greenFirst) {
                        const char other = greenFirst ? second : first;
                        colour = other == 'R' ? 'B' : 'R';
                    }
                    expected = light[3 * x + (colour == 'R' ? 0 : colour == 'G' ? 1 : 2)];
                }
                const double scale = 65536.0 / std::pow(2.0, format.bits);
                EXPECT_NEAR(Sample(format, row, x) * scale, expected, scale + 80.0) << x << "," << y;
            }
        }
    }
}

TEST(PixelWriters, GreyIsGreyInEveryColourFormat) {
    const ToneCurves plain = MakeToneCurves({});
    const std::vector<std::uint16_t> light(3 * 8, 0x8080);
    for (const EmulatedFormat& format : EmulatedFormats()) {
        if (format.IsMono() || format.IsBayer() || format.packing != Packing::Bytes) {
            continue;
        }
        std::vector<std::uint8_t> row(format.RowBytes(8));
        PixelWriter(format, plain).Write(light.data(), 0, 0, 8, row.data());
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool alpha =
                (format.order == SampleOrder::Rgba || format.order == SampleOrder::Bgra) && i % 4 == 3;
            EXPECT_NEAR(row[i], alpha ? 255 : 128, 1) << format.name << " " << i;
        }
    }
}

TEST(FrameCode, ReadsWhatItWrites) {
    for (const std::uint32_t width : {8U, 100U, 352U, 2448U}) {
        for (const std::uint32_t number : {0U, 1U, 123456789U, 0xFFFFFFFFU}) {
            const auto cells = FrameCode::Encode(number);
            const auto layout = FrameCode::LayoutFor(width);
            const auto value = [&](std::uint32_t x, std::uint32_t y) {
                const std::uint32_t cell = y / 8 * layout.columns + x / 8;
                return cell < FrameCode::kCells && cells[cell] ? 200 : 30;
            };
            EXPECT_EQ(FrameCode::Decode(width, 400, value), number) << width;
            const auto broken = [&](std::uint32_t x, std::uint32_t y) {
                return x / 8 + y / 8 == 10 ? 230 - value(x, y) : value(x, y);
            };
            if (width >= 352) {
                EXPECT_FALSE(FrameCode::Decode(width, 400, broken));
            }
        }
    }
    EXPECT_FALSE(FrameCode::Decode(7, 400, [](auto, auto) { return 0; }));
    EXPECT_FALSE(FrameCode::Decode(100, 20, [](auto, auto) { return 0; })) << "no room for the strip";
}

} // namespace
} // namespace Norvane::Transport::Emulator
