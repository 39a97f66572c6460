#include "norvane/Image.h"
#include "norvane/PixelFormat.h"
#include "transport/emulator/FrameCode.h"
#include "transport/emulator/PixelWriters.h"
#include "transport/emulator/Renderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::uint32_t kWidth = 640, kHeight = 480;
constexpr std::uint32_t kFrame = 12345;

/// One and the same image in a format, red, green and blue in turn as the library converts it.
std::vector<std::uint16_t> Picture(const EmulatedFormat& format, const PixelFormatInfo& info) {
    Renderer renderer;
    auto settings = std::make_shared<ImageSettings>();
    settings->geometry = {kWidth, kHeight, kWidth, kHeight, 0, 0, 1, 1, false, false};
    settings->format = &format;
    renderer.Prepare(settings);
    std::vector<std::uint8_t> bytes(settings->ImageBytes());
    Renderer::Drawn drawn;
    renderer.Draw(kFrame, 1.0, bytes.data(), drawn);
    const ImagePtr image = Image::Create(kWidth, kHeight, 0, 0, info.format, bytes.data());
    const ImagePtr rgb = image->Convert(PixelFormat_RGB16, BILINEAR);
    const auto* data = static_cast<const std::uint16_t*>(rgb->GetData());
    return {data, data + rgb->GetImageSize() / 2};
}

TEST(PixelWriters, EveryFormatShowsTheSameScene) {
    const std::vector<std::uint16_t> color =
        Picture(*FindEmulatedFormat("RGB8"), *FindPixelFormatByName("RGB8"));
    std::vector<std::uint16_t> grey(color.size());
    for (std::size_t i = 0; i < color.size(); ++i) {
        const std::uint16_t* pixel = &color[i - i % 3];
        grey[i] = static_cast<std::uint16_t>(0.3 * pixel[0] + 0.59 * pixel[1] + 0.11 * pixel[2]);
    }
    std::map<std::pair<SampleOrder, int>, std::vector<std::uint16_t>> pictures; // by order and bits
    for (const EmulatedFormat& format : EmulatedFormats()) {
        SCOPED_TRACE(format.name);
        const PixelFormatInfo* info = FindPixelFormatByName(format.name);
        ASSERT_TRUE(info);
        EXPECT_EQ(info->pfncCode, format.pfncCode);
        for (const std::uint32_t width : {1U, 2U, 3U, 5U, 8U, 641U}) {
            EXPECT_EQ(PixelFormatImageSize(info->format, width, 3), format.RowBytes(width) * 3) << width;
        }
        const std::vector<std::uint16_t> seen = Picture(format, *info);
        EXPECT_EQ(
            FrameCode::Decode(
                kWidth, kHeight, [&](auto x, auto y) { return seen[3 * (y * kWidth + x) + 1]; }, 0, 65535),
            kFrame);
        const std::vector<std::uint16_t>& expected = format.IsMono() ? grey : color;
        double difference = 0;
        for (std::size_t i = 0; i < seen.size(); ++i) {
            difference += std::abs(seen[i] - expected[i]) / 257.0;
        }
        // A mosaic blurs edges, and few bits make steps.
        const double limit = format.IsBayer() ? 6.5 : format.packing == Packing::Packed565 ? 2.5 : 1.0;
        EXPECT_LT(difference / static_cast<double>(seen.size()), limit);
        EXPECT_TRUE(pictures.try_emplace({format.order, format.bits}, seen).first->second == seen)
            << "samples differ from those of another packing";
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
