// Images as objects: geometry, ownership, release, copies, and the errors of bad ones.
#include "../ErrorOf.h"
#include "imaging/ImageFactory.h"

#include "norvane/Image.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

namespace Norvane {
namespace {

using Imaging::ImageLayout;
using Imaging::MakeImage;
using Test::ErrorOf;
using testing::ElementsAre;
using testing::HasSubstr;

ImageLayout Layout(PixelFormatEnums format, std::uint32_t width, std::uint32_t height) {
    ImageLayout layout;
    layout.format = format;
    layout.width = width;
    layout.height = height;
    return layout;
}

std::vector<int> Bytes(const ImagePtr& image) {
    const auto* data = static_cast<const std::uint8_t*>(image->GetData());
    return {data, data + image->GetImageSize()};
}

TEST(Image, BilinearOfASmallMosaicByHand) {
    // R 10 20     G of the first pixel: 20 and 30 in the plane's reflection, twice each; B: 40.
    //   30 40
    std::uint8_t mosaic[] = {10, 20, 30, 40};
    const ImagePtr image = Image::Create(2, 2, 0, 0, PixelFormat_BayerRG8, mosaic);
    EXPECT_THAT(Bytes(image->Convert(PixelFormat_BGR8, BILINEAR)),
                ElementsAre(40, 25, 10, 40, 20, 10, 40, 30, 10, 40, 25, 10));
    EXPECT_THAT(Bytes(image->Convert(PixelFormat_RGB8, BILINEAR)),
                ElementsAre(10, 25, 40, 10, 20, 40, 10, 30, 40, 10, 25, 40));
    EXPECT_THAT(Bytes(image->Convert(PixelFormat_BGR8, NO_COLOR_PROCESSING)),
                ElementsAre(10, 10, 10, 20, 20, 20, 30, 30, 30, 40, 40, 40));
}

TEST(Image, ReleaseGivesTheBufferBackOnceAndKeepsIdentity) {
    std::vector<std::uint8_t> pixels(12);
    int returned = 0;
    ImageLayout layout = Layout(PixelFormat_Mono8, 4, 3);
    layout.frameId = 77;
    layout.timestampNs = 5000;
    std::shared_ptr<void> owner(pixels.data(), [&](void*) { ++returned; });
    const ImagePtr image = MakeImage(layout, pixels.data(), pixels.size(), std::move(owner));
    image->Release();
    image->Release();
    EXPECT_EQ(returned, 1);
    EXPECT_EQ(image->GetData(), nullptr);
    EXPECT_EQ(image->GetFrameID(), 77U);
    EXPECT_EQ(image->GetTimeStamp(), 5000U);
    EXPECT_EQ(image->GetWidth(), 4U);
    EXPECT_EQ(ErrorOf([&] { image->Convert(PixelFormat_BGR8); }), Error::InvalidBuffer);
    EXPECT_EQ(ErrorOf([&] { image->Save("/tmp/x.raw"); }), Error::InvalidBuffer);
    EXPECT_EQ(ErrorOf([&] { Image::Create()->DeepCopy(image); }), Error::InvalidBuffer);
}

TEST(Image, ReleaseDuringAConversionWaitsWithTheBuffer) {
    constexpr std::uint32_t kSide = 512;
    for (int round = 0; round < 20; ++round) {
        auto pixels = std::make_shared<std::vector<std::uint8_t>>(kSide * kSide, std::uint8_t{7});
        // Whoever gets the buffer back overwrites it, as the next frame would.
        std::shared_ptr<void> owner(pixels->data(), [pixels](void*) { pixels->assign(pixels->size(), 9); });
        const ImagePtr image = MakeImage(Layout(PixelFormat_BayerRG8, kSide, kSide), pixels->data(),
                                         pixels->size(), std::move(owner));
        std::atomic<bool> go{false};
        std::thread releaser([&] {
            while (!go) {
            }
            image->Release();
        });
        go = true;
        try {
            const std::vector<int> bytes = Bytes(image->Convert(PixelFormat_BGR8));
            EXPECT_EQ(bytes, std::vector<int>(bytes.size(), 7));
        } catch (const Exception& e) {
            EXPECT_EQ(e.GetError(), Error::InvalidBuffer); // released before it began
        }
        releaser.join();
    }
}

TEST(Image, DeepCopyIsIndependent) {
    std::vector<std::uint8_t> pixels{1, 2, 3, 0, 4, 5, 6, 0};
    ImageLayout layout = Layout(PixelFormat_Mono8, 3, 2);
    layout.paddingX = 1;
    layout.offsetX = 5;
    layout.status = IMAGE_MISSING_PACKETS;
    const ImagePtr image = MakeImage(layout, pixels.data(), pixels.size(), nullptr);
    const ImagePtr copy = Image::Create();
    copy->DeepCopy(image);
    image->Release();
    pixels.assign(8, 99);
    EXPECT_EQ(copy->GetStride(), 4U);
    EXPECT_EQ(copy->GetXOffset(), 5U);
    EXPECT_TRUE(copy->IsIncomplete());
    EXPECT_THAT(Bytes(copy), ElementsAre(1, 2, 3, 0, 4, 5, 6, 0));
    EXPECT_THAT(Bytes(copy->Convert(PixelFormat_BGR8)),
                ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 6, 6, 6));

    std::uint8_t mine[6];
    const ImagePtr over = Image::Create(3, 2, 0, 0, PixelFormat_Mono8, mine);
    EXPECT_EQ(ErrorOf([&] { over->DeepCopy(copy); }), Error::InvalidParameter);
}

TEST(Image, BadImagesAreRefusedWithTheReason) {
    std::vector<std::uint8_t> pixels(100);
    std::string message;
    const auto convert = [&](const ImageLayout& layout, std::size_t size) {
        const ImagePtr image = MakeImage(layout, pixels.data(), size, nullptr);
        EXPECT_LE(image->GetImageSize(), size);
        EXPECT_NE(ErrorOf([&] { image->Convert(layout.format); }), Error::Success) << layout.format;
        return ErrorOf([&] { image->Convert(PixelFormat_BGR8); }, &message);
    };
    EXPECT_EQ(convert(Layout(PixelFormat_BayerRG8, 10, 11), 100), Error::InvalidBuffer);
    EXPECT_THAT(message, HasSubstr("holds 100 bytes, but an image of 10 x 11 BayerRG8 takes 110"));
    EXPECT_EQ(convert(Layout(PixelFormat_Mono8, 0, 10), 100), Error::ImageConversion);
    EXPECT_EQ(convert(Layout(PixelFormat_Mono8, 10, 0), 100), Error::ImageConversion);
    EXPECT_EQ(convert(Layout(PixelFormat_RGB8, 0xFFFFFFFF, 0xFFFFFFFF), 100), Error::InvalidBuffer);
    ImageLayout unknown = Layout(PixelFormat_Undefined, 10, 10);
    unknown.pfncCode = 0x812345AB;
    EXPECT_EQ(convert(unknown, 100), Error::ImageConversion);
    EXPECT_THAT(message, HasSubstr("0x812345AB"));
    EXPECT_EQ(ErrorOf([] { Image::Create()->Convert(PixelFormat_BGR8); }), Error::ImageConversion);
    const ImagePtr image = Image::Create(10, 10, 0, 0, PixelFormat_Mono8, pixels.data());
    const ImagePtr smaller = Image::Create(1, 1, 0, 0, PixelFormat_BGR8, pixels.data());
    EXPECT_EQ(ErrorOf([&] { image->Convert(smaller); }), Error::ImageConversion);
    EXPECT_EQ(ErrorOf([] { Image::Create()->DeepCopy(ImagePtr()); }), Error::InvalidParameter);
}

} // namespace
} // namespace Norvane
