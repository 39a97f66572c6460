#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Norvane {

/// Pixel formats by the library's own numbers. Names are those of the Pixel Format Naming Convention
/// (PFNC 2.1); the older GigE Vision names ("BayerRG12Packed") are kept where the layouts differ.
/// The numbers are stable: they appear in saved settings and in the status line's format families.
enum PixelFormatEnums : int {
    PixelFormat_Undefined = 0,
    PixelFormat_Mono8 = 1,
    PixelFormat_RGB8 = 2,
    PixelFormat_BayerGR8 = 3,
    PixelFormat_BayerRG8 = 4,
    PixelFormat_BayerGB8 = 5,
    PixelFormat_BayerBG8 = 6,
    PixelFormat_BayerGR16 = 7,
    PixelFormat_BayerRG16 = 8,
    PixelFormat_BayerGB16 = 9,
    PixelFormat_BayerBG16 = 10,
    PixelFormat_Mono16 = 11,
    PixelFormat_BayerGR12Packed = 12,
    PixelFormat_BayerRG12Packed = 13,
    PixelFormat_BayerGB12Packed = 14,
    PixelFormat_BayerBG12Packed = 15,
    PixelFormat_YUV411_8_UYYVYY = 16,
    PixelFormat_YUV422_8_UYVY = 17,
    PixelFormat_YUV8_UYV = 18,
    PixelFormat_Mono12p = 19,
    PixelFormat_BayerGR12p = 20,
    PixelFormat_BayerRG12p = 21,
    PixelFormat_BayerGB12p = 22,
    PixelFormat_BayerBG12p = 23,
    PixelFormat_YCbCr8_CbYCr = 24,
    PixelFormat_YCbCr422_8_CbYCrY = 25,
    PixelFormat_YCbCr411_8_CbYYCrYY = 26,
    PixelFormat_BGRa8 = 27,
    PixelFormat_BGR8 = 28, ///< the library's colour display format
    PixelFormat_Mono10Packed = 29,
    PixelFormat_BayerGR10Packed = 30,
    PixelFormat_BayerRG10Packed = 31,
    PixelFormat_BayerGB10Packed = 32,
    PixelFormat_BayerBG10Packed = 33,
    PixelFormat_Mono10p = 34,
    PixelFormat_BayerGR10p = 35,
    PixelFormat_BayerRG10p = 36,
    PixelFormat_BayerGB10p = 37,
    PixelFormat_BayerBG10p = 38,
    PixelFormat_RGBa8 = 39,
    PixelFormat_Mono10 = 40,
    PixelFormat_Mono12 = 41,
    PixelFormat_Mono14 = 42,
    PixelFormat_Mono8s = 43,
    PixelFormat_Mono12Packed = 44,
    PixelFormat_YUV422_8 = 45,   ///< YUYV byte order
    PixelFormat_YCbCr422_8 = 46, ///< YCbYCr byte order
    PixelFormat_YCbCr411_8 = 47, ///< YYCbYYCr byte order
    PixelFormat_BayerGR10 = 48,
    PixelFormat_BayerGR12 = 49,
    PixelFormat_BayerRG10 = 50,
    PixelFormat_BayerRG12 = 51,
    PixelFormat_BayerGB10 = 52,
    PixelFormat_BayerGB12 = 53,
    PixelFormat_BayerBG10 = 54,
    PixelFormat_BayerBG12 = 55,
    PixelFormat_BGR16 = 56,
    PixelFormat_RGB16 = 57,
    PixelFormat_RGB10 = 58,
    PixelFormat_RGB12 = 59,
    PixelFormat_RGB10p = 60,
    PixelFormat_RGB12p = 61,
    PixelFormat_RGB14 = 62,
    PixelFormat_BGR10 = 63,
    PixelFormat_BGR10p = 64,
    PixelFormat_BGR12p = 65,
    PixelFormat_RGB10p32 = 66,
    PixelFormat_RGB8_Planar = 67,
    PixelFormat_BGR14 = 68,
    PixelFormat_YCbCr8 = 69,
    PixelFormat_YCbCr601_8_CbYCr = 70,
    PixelFormat_YCbCr601_422_8 = 71,
    PixelFormat_YCbCr601_422_8_CbYCrY = 72,
    PixelFormat_BGR12 = 73,
    PixelFormat_YCbCr601_411_8_CbYYCrYY = 74,
    PixelFormat_YCbCr709_8_CbYCr = 75,
    PixelFormat_YCbCr709_422_8 = 76,
    PixelFormat_YCbCr709_422_8_CbYCrY = 77,
    PixelFormat_YCbCr709_411_8_CbYYCrYY = 78,
    PixelFormat_BayerGR14 = 79,
    PixelFormat_BayerRG14 = 80,
    PixelFormat_BayerGB14 = 81,
    PixelFormat_BayerBG14 = 82,
    PixelFormat_Mono14p = 83,
    PixelFormat_BayerGR14p = 84,
    PixelFormat_BayerRG14p = 85,
    PixelFormat_BayerGB14p = 86,
    PixelFormat_BayerBG14p = 87,
    PixelFormat_RGBa16 = 88,
    PixelFormat_RGB565p = 89,
    PixelFormat_BGRa16 = 90,
    PixelFormat_BGR565p = 91,
    PixelFormat_RGBa10 = 92,
    PixelFormat_RGBa12 = 93,
    PixelFormat_RGBa14 = 94,
    PixelFormat_BGRa10 = 95,
    PixelFormat_BGRa12 = 96,
    PixelFormat_BGRa14 = 97,
    PixelFormat_RGBa10p = 98,
    PixelFormat_RGBa12p = 99,
    PixelFormat_BGRa10p = 100,
    PixelFormat_BGRa12p = 101,
    PixelFormat_RGB10_Planar = 102,
    PixelFormat_RGB12_Planar = 103,
    PixelFormat_RGB16_Planar = 104,
    PixelFormat_YCbCr10_CbYCr = 105,
    PixelFormat_YCbCr10p_CbYCr = 106,
    PixelFormat_YCbCr12_CbYCr = 107,
    PixelFormat_YCbCr12p_CbYCr = 108,
    PixelFormat_YCbCr422_10 = 109,
    PixelFormat_YCbCr422_10_CbYCrY = 110,
    PixelFormat_YCbCr422_10p = 111,
    PixelFormat_YCbCr422_10p_CbYCrY = 112,
    PixelFormat_YCbCr422_12 = 113,
    PixelFormat_YCbCr422_12_CbYCrY = 114,
    PixelFormat_YCbCr422_12p = 115,
    PixelFormat_YCbCr422_12p_CbYCrY = 116,
    PixelFormat_YCbCr601_10_CbYCr = 117,
    PixelFormat_YCbCr601_10p_CbYCr = 118,
    PixelFormat_YCbCr601_12_CbYCr = 119,
    PixelFormat_YCbCr601_12p_CbYCr = 120,
    PixelFormat_YCbCr601_422_10 = 121,
    PixelFormat_YCbCr601_422_10_CbYCrY = 122,
    PixelFormat_YCbCr601_422_10p = 123,
    PixelFormat_YCbCr601_422_10p_CbYCrY = 124,
    PixelFormat_YCbCr601_422_12 = 125,
    PixelFormat_YCbCr601_422_12_CbYCrY = 126,
    PixelFormat_YCbCr601_422_12p = 127,
    PixelFormat_YCbCr601_422_12p_CbYCrY = 128,
    PixelFormat_YCbCr709_10_CbYCr = 129,
    PixelFormat_YCbCr709_10p_CbYCr = 130,
    PixelFormat_YCbCr709_12_CbYCr = 131,
    PixelFormat_YCbCr709_12p_CbYCr = 132,
    PixelFormat_YCbCr709_422_10 = 133,
    PixelFormat_YCbCr709_422_10_CbYCrY = 134,
    PixelFormat_YCbCr709_422_10p = 135,
    PixelFormat_YCbCr709_422_10p_CbYCrY = 136,
    PixelFormat_YCbCr709_422_12 = 137,
    PixelFormat_YCbCr709_422_12_CbYCrY = 138,
    PixelFormat_YCbCr709_422_12p = 139,
    PixelFormat_YCbCr709_422_12p_CbYCrY = 140,
    PixelFormat_YCbCr2020_8_CbYCr = 141,
    PixelFormat_YCbCr2020_10_CbYCr = 142,
    PixelFormat_YCbCr2020_10p_CbYCr = 143,
    PixelFormat_YCbCr2020_12_CbYCr = 144,
    PixelFormat_YCbCr2020_12p_CbYCr = 145,
    PixelFormat_YCbCr2020_411_8_CbYYCrYY = 146,
    PixelFormat_YCbCr2020_422_8 = 147,
    PixelFormat_YCbCr2020_422_8_CbYCrY = 148,
    PixelFormat_YCbCr2020_422_10 = 149,
    PixelFormat_YCbCr2020_422_10_CbYCrY = 150,
    PixelFormat_YCbCr2020_422_10p = 151,
    PixelFormat_YCbCr2020_422_10p_CbYCrY = 152,
    PixelFormat_YCbCr2020_422_12 = 153,
    PixelFormat_YCbCr2020_422_12_CbYCrY = 154,
    PixelFormat_YCbCr2020_422_12p = 155,
    PixelFormat_YCbCr2020_422_12p_CbYCrY = 156,
    PixelFormat_Raw8 = 246,
    PixelFormat_Raw16 = 247,
};

/// The order of colour filters: the colours of the first two pixels of the first row as transmitted (PFNC,
/// "Bayer" formats). A camera whose window begins at an odd offset announces another format, so offsets are
/// never added.
enum class BayerPhase : std::uint8_t { None, GR, RG, GB, BG };

/// What the library knows of one pixel format.
struct PixelFormatInfo {
    PixelFormatEnums format;      ///< the library's number
    std::string_view name;        ///< PFNC name, for example "BayerRG12p"
    std::uint32_t pfncCode;       ///< 32-bit PFNC value, for example 0x01080009
    std::uint8_t bitsPerPixel;    ///< bits one pixel takes in memory, the mean where pixels share bytes
    std::uint8_t significantBits; ///< bits of one component that carry the value
    BayerPhase bayer;             ///< None for formats without a mosaic
};

/// Looks a format up; null when the library does not know it. Any thread; the table lives for the program's
/// life.
const PixelFormatInfo* FindPixelFormat(PixelFormatEnums format) noexcept;
/// By its 32-bit PFNC value.
const PixelFormatInfo* FindPixelFormatByPfnc(std::uint32_t pfncCode) noexcept;
/// By its PFNC name, or the older GigE Vision name where the layouts differ.
const PixelFormatInfo* FindPixelFormatByName(std::string_view name) noexcept;

/// Bytes of an image without line padding, 0 for an unknown format. Rows start on a byte; a group of pixels
/// that shares chroma counts as a whole.
std::uint64_t PixelFormatImageSize(PixelFormatEnums format, std::uint64_t width,
                                   std::uint64_t height) noexcept;

} // namespace Norvane
