// Every pixel format: its entry in the table, and its way through unpacking to 8 and 16 bits.
#include "imaging/ImageFactory.h"
#include "imaging/PixelFormats.h"

#include "norvane/Exception.h"
#include "norvane/Image.h"

#include <arv.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <random>
#include <set>

namespace Norvane {
namespace {

using Imaging::ColorMatrix;
using Imaging::Components;
using Imaging::FindLayout;
using Imaging::Packing;
using Imaging::PixelLayout;
using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<const PixelLayout*> AllLayouts() {
    std::vector<const PixelLayout*> all;
    for (int number = 0; number < 256; ++number) {
        if (const PixelLayout* layout = FindLayout(static_cast<PixelFormatEnums>(number))) {
            all.push_back(layout);
        }
    }
    return all;
}

/// Writes numbers one after the other as a format packs them: the reverse of what the library does, bit by
/// bit.
class Packer {
public:
    explicit Packer(const PixelLayout& layout) : m_layout(layout) {}

    void Row(const std::vector<unsigned>& numbers) {
        const unsigned bits = m_layout.info.significantBits;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const unsigned v = numbers[i];
            switch (m_layout.packing) {
            case Packing::Byte:
            case Packing::BytePlanes:
                Append(v, 8);
                break;
            case Packing::SignedByte:
                Append(v ^ 0x80, 8);
                break;
            case Packing::Word:
            case Packing::WordPlanes:
                Append(v, 16);
                break;
            case Packing::Bits:
                Append(v, bits);
                break;
            case Packing::Gev10:
            case Packing::Gev12: {
                const unsigned low = bits - 8;
                if (i % 2 == 0) {
                    const unsigned next = i + 1 < numbers.size() ? numbers[i + 1] : 0;
                    Append(v >> low, 8);
                    Append(v & ((1U << low) - 1), 4);
                    Append(next & ((1U << low) - 1), 4);
                } else {
                    Append(v >> low, 8);
                }
                break;
            }
            case Packing::Dword10:
                Append(v, i % 3 == 2 ? 12 : 10);
                break;
            case Packing::Bits565:
                Append(v, i % 3 == 1 ? 6 : 5);
                break;
            }
        }
    }

    /// Rows begin on bytes unless this is left out.
    void EndRow() { m_bit = (m_bit + 7) / 8 * 8; }

    std::vector<std::uint8_t> Bytes() const {
        return {m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>((m_bit + 7) / 8)};
    }

private:
    void Append(unsigned value, unsigned bits) {
        m_bytes.resize((m_bit + bits) / 8 + 1);
        for (unsigned i = 0; i < bits; ++i, ++m_bit) {
            m_bytes[m_bit / 8] =
                static_cast<std::uint8_t>(m_bytes[m_bit / 8] | (value >> i & 1) << m_bit % 8);
        }
    }

    const PixelLayout& m_layout;
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_bit = 0;
};

unsigned BitsOf(const PixelLayout& layout, std::size_t index) {
    return layout.packing == Packing::Bits565 && index % 3 != 1 ? 5 : layout.info.significantBits;
}

/// A number of `bits` bits on a scale whose largest value is `top`.
double Scaled(unsigned value, unsigned bits, double top) {
    return value * top / ((1U << bits) - 1);
}

std::vector<double> Samples(const ImagePtr& image) {
    std::vector<double> samples;
    const std::size_t count =
        image->GetImageSize() * 8 / FindPixelFormat(image->GetPixelFormat())->significantBits;
    for (std::size_t i = 0; i < count; ++i) {
        samples.push_back(FindPixelFormat(image->GetPixelFormat())->significantBits == 8
                              ? static_cast<const std::uint8_t*>(image->GetData())[i]
                              : static_cast<const std::uint16_t*>(image->GetData())[i]);
    }
    return samples;
}

TEST(PixelFormats, TableAgreesWithItself) {
    std::set<std::uint32_t> codes;
    std::set<std::string_view> names;
    for (const PixelLayout* layout : AllLayouts()) {
        const PixelFormatInfo& info = layout->info;
        EXPECT_TRUE(codes.insert(info.pfncCode).second) << info.name;
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_EQ(info.pfncCode >> 16 & 0xFF, info.bitsPerPixel) << info.name;
        EXPECT_EQ(FindPixelFormatByName(info.name), &info);
        EXPECT_EQ(FindPixelFormatByPfnc(info.pfncCode), &info);
        EXPECT_EQ(info.pfncCode >> 24, layout->components == Components::One ? 1U : 2U) << info.name;
        EXPECT_EQ(PixelFormatImageSize(info.format, 8, 3), 3U * info.bitsPerPixel) << info.name;
        if (info.bayer != BayerPhase::None) {
            static constexpr const char* kPhases[] = {"", "BayerGR", "BayerRG", "BayerGB", "BayerBG"};
            EXPECT_EQ(info.name.rfind(kPhases[static_cast<int>(info.bayer)], 0), 0U) << info.name;
        }
    }
    EXPECT_EQ(FindPixelFormat(PixelFormat_Undefined), nullptr);
    EXPECT_EQ(FindPixelFormat(static_cast<PixelFormatEnums>(-1)), nullptr);
    EXPECT_EQ(FindPixelFormat(static_cast<PixelFormatEnums>(100000)), nullptr);
    EXPECT_EQ(FindPixelFormatByName("Mono9"), nullptr);
}

/// Number of bits in a format's name: the first one that does not name a matrix or a way of sharing chroma.
unsigned BitsInName(std::string_view name) {
    for (std::size_t i = 0; i < name.size();) {
        unsigned number = 0;
        for (; i < name.size() && std::isdigit(static_cast<unsigned char>(name[i])); ++i) {
            number = number * 10 + static_cast<unsigned>(name[i] - '0');
        }
        if (number == 565) {
            return 6; // of green, the deepest
        }
        if (number != 0 && number < 100) {
            return number;
        }
        i += number == 0;
    }
    return 0;
}

TEST(PixelFormats, CodesAndDepthsAreThoseThatOthersKnow) {
    for (const PixelLayout* layout : AllLayouts()) {
        EXPECT_EQ(layout->info.significantBits, BitsInName(layout->info.name)) << layout->info.name;
    }
#define FOUR_MOSAICS(depth, DEPTH)                                                                           \
    {"BayerGR" depth, ARV_PIXEL_FORMAT_BAYER_GR_##DEPTH},                                                    \
        {"BayerRG" depth, ARV_PIXEL_FORMAT_BAYER_RG_##DEPTH},                                                \
        {"BayerGB" depth, ARV_PIXEL_FORMAT_BAYER_GB_##DEPTH}, {                                              \
        "BayerBG" depth, ARV_PIXEL_FORMAT_BAYER_BG_##DEPTH                                                   \
    }
    static constexpr std::pair<const char*, std::uint32_t> kKnown[] = {
        {"Mono8", ARV_PIXEL_FORMAT_MONO_8},
        {"Mono8s", ARV_PIXEL_FORMAT_MONO_8_SIGNED},
        {"Mono10", ARV_PIXEL_FORMAT_MONO_10},
        {"Mono10Packed", ARV_PIXEL_FORMAT_MONO_10_PACKED},
        {"Mono12", ARV_PIXEL_FORMAT_MONO_12},
        {"Mono12Packed", ARV_PIXEL_FORMAT_MONO_12_PACKED},
        {"Mono14", ARV_PIXEL_FORMAT_MONO_14},
        {"Mono16", ARV_PIXEL_FORMAT_MONO_16},
        FOUR_MOSAICS("8", 8),
        FOUR_MOSAICS("10", 10),
        FOUR_MOSAICS("12", 12),
        FOUR_MOSAICS("16", 16),
        FOUR_MOSAICS("10p", 10P),
        FOUR_MOSAICS("12p", 12P),
        FOUR_MOSAICS("10Packed", 10_PACKED),
        FOUR_MOSAICS("12Packed", 12_PACKED),
        {"RGB8", ARV_PIXEL_FORMAT_RGB_8_PACKED},
        {"BGR8", ARV_PIXEL_FORMAT_BGR_8_PACKED},
        {"RGBa8", ARV_PIXEL_FORMAT_RGBA_8_PACKED},
        {"BGRa8", ARV_PIXEL_FORMAT_BGRA_8_PACKED},
        {"RGB10", ARV_PIXEL_FORMAT_RGB_10_PACKED},
        {"BGR10", ARV_PIXEL_FORMAT_BGR_10_PACKED},
        {"RGB12", ARV_PIXEL_FORMAT_RGB_12_PACKED},
        {"BGR12", ARV_PIXEL_FORMAT_BGR_12_PACKED},
        {"YUV411_8_UYYVYY", ARV_PIXEL_FORMAT_YUV_411_PACKED},
        {"YUV422_8_UYVY", ARV_PIXEL_FORMAT_YUV_422_PACKED},
        {"YUV8_UYV", ARV_PIXEL_FORMAT_YUV_444_PACKED},
        {"RGB8_Planar", ARV_PIXEL_FORMAT_RGB_8_PLANAR},
        {"RGB10_Planar", ARV_PIXEL_FORMAT_RGB_10_PLANAR},
        {"RGB12_Planar", ARV_PIXEL_FORMAT_RGB_12_PLANAR},
        {"RGB16_Planar", ARV_PIXEL_FORMAT_RGB_16_PLANAR},
        {"YUV422_8", ARV_PIXEL_FORMAT_YUV_422_YUYV_PACKED},
        {"Raw8", ARV_PIXEL_FORMAT_DATA_8},
        {"Raw16", ARV_PIXEL_FORMAT_DATA_16}};
#undef FOUR_MOSAICS
    for (const auto& [name, code] : kKnown) {
        const PixelFormatInfo* info = FindPixelFormatByName(name);
        ASSERT_NE(info, nullptr) << name;
        EXPECT_EQ(info->pfncCode, code) << name;
    }
}

TEST(PixelFormats, PackedSamplesByHand) {
    const auto unpack = [](PixelFormatEnums format, std::vector<std::uint8_t> bytes, std::uint64_t width) {
        const ImagePtr image = Image::Create(width, 1, 0, 0, format, bytes.data());
        std::vector<unsigned> high;
        for (const double v : Samples(image->Convert(PixelFormat_Mono16))) {
            high.push_back(static_cast<unsigned>(v) >> (16 - FindPixelFormat(format)->significantBits));
        }
        return high;
    };
    EXPECT_THAT(unpack(PixelFormat_Mono12p, {0x23, 0x61, 0x45}, 2), ElementsAre(0x123, 0x456));
    EXPECT_THAT(unpack(PixelFormat_Mono12Packed, {0x12, 0x63, 0x45}, 2), ElementsAre(0x123, 0x456));
    EXPECT_THAT(unpack(PixelFormat_Mono10p, {0x01, 0x08, 0x30, 0x00, 0xFF}, 4), ElementsAre(1, 2, 3, 0x3FC));
    EXPECT_THAT(unpack(PixelFormat_Mono10Packed, {0xFF, 0x21, 0x01}, 2), ElementsAre(0x3FD, 0x006));
}

/// Mono, Bayer, RGB and BGR of every packing, in odd widths, with padding, from buffers without a byte to
/// spare.
TEST(PixelFormats, EveryFormatUnpacksToItsSamples) {
    std::mt19937 random(77);
    for (const PixelLayout* layout : AllLayouts()) {
        if (layout->matrix != ColorMatrix::None) {
            continue;
        }
        const bool color = layout->components != Components::One;
        for (const std::uint32_t width : {1U, 2U, 7U, 16U, 31U, 64U, 97U, 200U}) {
            for (const std::uint32_t padding : {0U, 3U}) {
                constexpr std::uint32_t kHeight = 3;
                const unsigned planes = Imaging::PlaneCount(*layout);
                const std::size_t perRow = Imaging::ComponentsPerRow(*layout, width);
                std::vector<std::vector<unsigned>> rows(kHeight * planes, std::vector<unsigned>(perRow));
                std::vector<std::uint8_t> bytes;
                for (auto& row : rows) {
                    for (std::size_t i = 0; i < perRow; ++i) {
                        row[i] = random() % (1U << BitsOf(*layout, i));
                    }
                    Packer packer(*layout);
                    packer.Row(row);
                    const std::vector<std::uint8_t> packed = packer.Bytes();
                    bytes.insert(bytes.end(), packed.begin(), packed.end());
                    bytes.insert(bytes.end(), padding, std::uint8_t{0xEE});
                }
                bytes.resize(bytes.size() - padding);
                bytes.shrink_to_fit();
                Imaging::ImageLayout shape;
                shape.format = layout->info.format;
                shape.width = width;
                shape.height = kHeight;
                shape.paddingX = padding;
                const ImagePtr image = Imaging::MakeImage(shape, bytes.data(), bytes.size(), nullptr);
                for (const bool deep : {false, true}) {
                    const PixelFormatEnums target = color ? (deep ? PixelFormat_RGB16 : PixelFormat_RGB8)
                                                          : (deep ? PixelFormat_Mono16 : PixelFormat_Mono8);
                    const std::vector<double> got = Samples(image->Convert(target, NO_COLOR_PROCESSING));
                    const std::size_t channels = color ? 3 : 1;
                    ASSERT_EQ(got.size(), width * kHeight * channels) << layout->info.name;
                    const bool blueFirst =
                        layout->components == Components::Bgr || layout->components == Components::Bgra;
                    const std::size_t step = planes == 3 ? 1 : perRow / width;
                    for (std::size_t i = 0; i < got.size(); ++i) {
                        const std::size_t channel = i % channels, x = i / channels % width,
                                          y = i / channels / width;
                        const std::size_t from = blueFirst ? 2 - channel : channel;
                        const std::size_t index = planes == 3 ? x : x * step + from;
                        const unsigned number = rows[planes == 3 ? from * kHeight + y : y][index];
                        const double top = deep ? 65535 : 255;
                        const double expected = Scaled(number, BitsOf(*layout, index), top);
                        // Spreading bits rounds within one, dropping them truncates.
                        ASSERT_NEAR(got[i], expected, 1.0)
                            << layout->info.name << " " << width << " to "
                            << image->Convert(target)->GetPixelFormatName() << " at " << i;
                        if (number == 0 || number + 1 == 1U << BitsOf(*layout, index)) {
                            ASSERT_EQ(got[i], number == 0 ? 0 : top) << layout->info.name;
                        }
                    }
                }
            }
        }
    }
}

/// Rows of an image in which one begins in the byte in which the one before it ends.
void CompareRowsThatShareBytes(std::uint32_t width, std::uint32_t height) {
    std::mt19937 random(5);
    for (const PixelFormatEnums format :
         {PixelFormat_Mono10p, PixelFormat_Mono12p, PixelFormat_Mono14p, PixelFormat_Mono10Packed,
          PixelFormat_Mono12Packed, PixelFormat_RGB10p}) {
        const PixelLayout& layout = *FindLayout(format);
        std::vector<unsigned> numbers(Imaging::ComponentsPerRow(layout, width) * height);
        for (unsigned& number : numbers) {
            number = random() % (1U << layout.info.significantBits);
        }
        Packer packer(layout);
        packer.Row(numbers);
        std::vector<std::uint8_t> bytes = packer.Bytes();
        Imaging::ImageLayout shape;
        shape.format = format;
        shape.width = width;
        shape.height = height;
        const ImagePtr image = Imaging::MakeImage(shape, bytes.data(), bytes.size(), nullptr);
        EXPECT_EQ(image->GetStride(), 0U) << layout.info.name;
        const bool color = layout.components != Components::One;
        std::vector<unsigned> got;
        for (const double v : Samples(image->Convert(color ? PixelFormat_RGB16 : PixelFormat_Mono16))) {
            got.push_back(static_cast<unsigned>(v) >> (16 - layout.info.significantBits));
        }
        ASSERT_EQ(got, numbers) << layout.info.name;

        // Into memory whose rows begin on bytes, and back.
        const std::size_t perRow = numbers.size() / height;
        std::vector<std::uint8_t> rows;
        for (std::size_t y = 0; y < height; ++y) {
            Packer row(layout);
            row.Row({numbers.begin() + static_cast<std::ptrdiff_t>(y * perRow),
                     numbers.begin() + static_cast<std::ptrdiff_t>((y + 1) * perRow)});
            const std::vector<std::uint8_t> packed = row.Bytes();
            rows.insert(rows.end(), packed.begin(), packed.end());
        }
        std::vector<std::uint8_t> target(rows.size(), 0xEE);
        const ImagePtr over = Image::Create(width, height, 0, 0, format, target.data());
        EXPECT_NE(over->GetStride(), 0U);
        image->Convert(over);
        EXPECT_EQ(target, rows) << layout.info.name;
        std::vector<std::uint8_t> again(bytes.size(), 0xEE);
        const ImagePtr bitwise = Imaging::MakeImage(shape, again.data(), again.size(), nullptr);
        over->Convert(bitwise);
        EXPECT_EQ(again, bytes) << layout.info.name;
        std::fill(again.begin(), again.end(), std::uint8_t{0xEE});
        image->Convert(bitwise);
        EXPECT_EQ(again, bytes) << layout.info.name;
    }
}

TEST(PixelFormats, RowsThatShareBytesAreFollowedBitByBit) {
    CompareRowsThatShareBytes(7, 5);
    CompareRowsThatShareBytes(131, 1001); // bands of several threads begin within bytes
}

/// One colour in every luma and chroma format comes back as that colour, by the recommendations' own
/// equations.
TEST(PixelFormats, LumaAndChromaBecomeTheColourThatTheyMean) {
    static constexpr double kColors[][3] = {{255, 255, 255}, {0, 0, 0},     {255, 0, 0},    {0, 255, 0},
                                            {0, 0, 255},     {128, 64, 32}, {17, 200, 230}, {250, 240, 10}};
    for (const PixelLayout* layout : AllLayouts()) {
        if (layout->matrix == ColorMatrix::None) {
            continue;
        }
        const bool studio = layout->matrix != ColorMatrix::Full601;
        const bool hd = layout->matrix == ColorMatrix::Studio709;
        const bool uhd = layout->matrix == ColorMatrix::Studio2020;
        const double kr = uhd ? 0.2627 : hd ? 0.2126 : 0.299, kb = uhd ? 0.0593 : hd ? 0.0722 : 0.114;
        const unsigned bits = layout->info.significantBits;
        const double unit = 1U << (bits - 8);
        for (const auto& color : kColors) {
            for (const std::uint64_t width : {1U, 5U, 66U, 131U}) {
                const double y = (kr * color[0] + (1 - kr - kb) * color[1] + kb * color[2]) / 255;
                const double cb = (color[2] / 255 - y) / (2 * (1 - kb)),
                             cr = (color[0] / 255 - y) / (2 * (1 - kr));
                const double top = 256 * unit - 1;
                const auto number = [&](double v) {
                    return static_cast<unsigned>(std::clamp(std::round(v), 0.0, top));
                };
                const unsigned luma = number(studio ? (16 + 219 * y) * unit : y * top);
                const unsigned blue = number(studio ? (128 + 224 * cb) * unit : 128 * unit + cb * top);
                const unsigned red = number(studio ? (128 + 224 * cr) * unit : 128 * unit + cr * top);
                std::vector<unsigned> group;
                switch (layout->components) {
                case Components::CbYCr:
                    group = {blue, luma, red};
                    break;
                case Components::YCbYCr:
                    group = {luma, blue, luma, red};
                    break;
                case Components::CbYCrY:
                    group = {blue, luma, red, luma};
                    break;
                case Components::YYCbYYCr:
                    group = {luma, luma, blue, luma, luma, red};
                    break;
                case Components::CbYYCrYY:
                    group = {blue, luma, luma, red, luma, luma};
                    break;
                default:
                    group = {luma, blue, red};
                }
                std::vector<unsigned> numbers;
                while (numbers.size() < Imaging::ComponentsPerRow(*layout, width)) {
                    numbers.insert(numbers.end(), group.begin(), group.end());
                }
                Packer packer(*layout);
                packer.Row(numbers);
                std::vector<std::uint8_t> bytes = packer.Bytes();
                const ImagePtr image = Image::Create(width, 1, 0, 0, layout->info.format, bytes.data());
                const std::vector<double> low = Samples(image->Convert(PixelFormat_RGB8));
                const std::vector<double> high = Samples(image->Convert(PixelFormat_RGB16));
                for (std::size_t i = 0; i < low.size(); ++i) {
                    // Samples of 8 bits are rounded luma and chroma, which moves a colour by up to two steps.
                    const double close = bits > 8 ? 1 : 2.5;
                    ASSERT_NEAR(low[i], color[i % 3], close)
                        << layout->info.name << " width " << width << " at " << i;
                    ASSERT_NEAR(high[i] / 257, color[i % 3], close) << layout->info.name << " at " << i;
                }
            }
        }
    }
}

TEST(PixelFormats, ChromaIsSharedByTheRightPixels) {
    // Two groups; a strong colour in the second must not reach into the first.
    std::uint8_t uyvy[] = {128, 100, 128, 100, 255, 100, 128, 100};
    const ImagePtr image = Image::Create(4, 1, 0, 0, PixelFormat_YUV422_8_UYVY, uyvy);
    const std::vector<double> rgb = Samples(image->Convert(PixelFormat_RGB8));
    EXPECT_THAT(std::vector<double>(rgb.begin(), rgb.begin() + 6), ElementsAre(100, 100, 100, 100, 100, 100));
    EXPECT_EQ(rgb[8], 255);
    EXPECT_EQ(rgb[11], 255);
}

TEST(PixelFormats, ConversionsThatMakeNoSenseAreRefused) {
    std::uint8_t bytes[64] = {};
    const auto error = [&](PixelFormatEnums from, PixelFormatEnums to) {
        try {
            Image::Create(2, 2, 0, 0, from, bytes)->Convert(to);
        } catch (const Exception& e) {
            return e.GetError();
        }
        return Error::Success;
    };
    EXPECT_EQ(error(PixelFormat_Mono8, PixelFormat_BayerRG8), Error::ImageConversion);
    EXPECT_EQ(error(PixelFormat_BayerGR8, PixelFormat_BayerRG8), Error::ImageConversion);
    EXPECT_EQ(error(PixelFormat_RGB8, PixelFormat_Mono12p), Error::ImageConversion);
    EXPECT_EQ(error(PixelFormat_RGB8, PixelFormat_Undefined), Error::ImageConversion);
    EXPECT_EQ(error(PixelFormat_BayerRG12p, PixelFormat_BayerRG16), Error::Success);
    EXPECT_EQ(error(PixelFormat_BayerRG8, PixelFormat_BGRa8), Error::Success);
    EXPECT_EQ(error(PixelFormat_Mono12p, PixelFormat_Mono12p), Error::Success);
}

} // namespace
} // namespace Norvane
