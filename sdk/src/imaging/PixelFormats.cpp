#include "imaging/PixelFormats.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Norvane {
namespace Imaging {
namespace {

// Codes: EMVA, GenICam Pixel Format Naming Convention 2.1 and its list of 32-bit values. Formats of PFNC that
// leave the range open ("YUV", "YCbCr" without a number) use all codes, those named after a recommendation
// its studio range.
// clang-format off
constexpr PixelLayout kLayouts[] = {
    {{PixelFormat_Mono8, "Mono8", 0x01080001, 8, 8, BayerPhase::None}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono8s, "Mono8s", 0x01080002, 8, 8, BayerPhase::None}, Packing::SignedByte, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono10, "Mono10", 0x01100003, 16, 10, BayerPhase::None}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono12, "Mono12", 0x01100005, 16, 12, BayerPhase::None}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono14, "Mono14", 0x01100025, 16, 14, BayerPhase::None}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono16, "Mono16", 0x01100007, 16, 16, BayerPhase::None}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono10p, "Mono10p", 0x010A0046, 10, 10, BayerPhase::None}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono12p, "Mono12p", 0x010C0047, 12, 12, BayerPhase::None}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono14p, "Mono14p", 0x010E0104, 14, 14, BayerPhase::None}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono10Packed, "Mono10Packed", 0x010C0004, 12, 10, BayerPhase::None}, Packing::Gev10, Components::One, ColorMatrix::None},
    {{PixelFormat_Mono12Packed, "Mono12Packed", 0x010C0006, 12, 12, BayerPhase::None}, Packing::Gev12, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR8, "BayerGR8", 0x01080008, 8, 8, BayerPhase::GR}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG8, "BayerRG8", 0x01080009, 8, 8, BayerPhase::RG}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB8, "BayerGB8", 0x0108000A, 8, 8, BayerPhase::GB}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG8, "BayerBG8", 0x0108000B, 8, 8, BayerPhase::BG}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR10, "BayerGR10", 0x0110000C, 16, 10, BayerPhase::GR}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG10, "BayerRG10", 0x0110000D, 16, 10, BayerPhase::RG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB10, "BayerGB10", 0x0110000E, 16, 10, BayerPhase::GB}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG10, "BayerBG10", 0x0110000F, 16, 10, BayerPhase::BG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR12, "BayerGR12", 0x01100010, 16, 12, BayerPhase::GR}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG12, "BayerRG12", 0x01100011, 16, 12, BayerPhase::RG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB12, "BayerGB12", 0x01100012, 16, 12, BayerPhase::GB}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG12, "BayerBG12", 0x01100013, 16, 12, BayerPhase::BG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR14, "BayerGR14", 0x01100109, 16, 14, BayerPhase::GR}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG14, "BayerRG14", 0x0110010A, 16, 14, BayerPhase::RG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB14, "BayerGB14", 0x0110010B, 16, 14, BayerPhase::GB}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG14, "BayerBG14", 0x0110010C, 16, 14, BayerPhase::BG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR16, "BayerGR16", 0x0110002E, 16, 16, BayerPhase::GR}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG16, "BayerRG16", 0x0110002F, 16, 16, BayerPhase::RG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB16, "BayerGB16", 0x01100030, 16, 16, BayerPhase::GB}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG16, "BayerBG16", 0x01100031, 16, 16, BayerPhase::BG}, Packing::Word, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR10p, "BayerGR10p", 0x010A0056, 10, 10, BayerPhase::GR}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG10p, "BayerRG10p", 0x010A0058, 10, 10, BayerPhase::RG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB10p, "BayerGB10p", 0x010A0054, 10, 10, BayerPhase::GB}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG10p, "BayerBG10p", 0x010A0052, 10, 10, BayerPhase::BG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR12p, "BayerGR12p", 0x010C0057, 12, 12, BayerPhase::GR}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG12p, "BayerRG12p", 0x010C0059, 12, 12, BayerPhase::RG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB12p, "BayerGB12p", 0x010C0055, 12, 12, BayerPhase::GB}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG12p, "BayerBG12p", 0x010C0053, 12, 12, BayerPhase::BG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR14p, "BayerGR14p", 0x010E0105, 14, 14, BayerPhase::GR}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG14p, "BayerRG14p", 0x010E0106, 14, 14, BayerPhase::RG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB14p, "BayerGB14p", 0x010E0107, 14, 14, BayerPhase::GB}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG14p, "BayerBG14p", 0x010E0108, 14, 14, BayerPhase::BG}, Packing::Bits, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR10Packed, "BayerGR10Packed", 0x010C0026, 12, 10, BayerPhase::GR}, Packing::Gev10, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG10Packed, "BayerRG10Packed", 0x010C0027, 12, 10, BayerPhase::RG}, Packing::Gev10, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB10Packed, "BayerGB10Packed", 0x010C0028, 12, 10, BayerPhase::GB}, Packing::Gev10, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG10Packed, "BayerBG10Packed", 0x010C0029, 12, 10, BayerPhase::BG}, Packing::Gev10, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGR12Packed, "BayerGR12Packed", 0x010C002A, 12, 12, BayerPhase::GR}, Packing::Gev12, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerRG12Packed, "BayerRG12Packed", 0x010C002B, 12, 12, BayerPhase::RG}, Packing::Gev12, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerGB12Packed, "BayerGB12Packed", 0x010C002C, 12, 12, BayerPhase::GB}, Packing::Gev12, Components::One, ColorMatrix::None},
    {{PixelFormat_BayerBG12Packed, "BayerBG12Packed", 0x010C002D, 12, 12, BayerPhase::BG}, Packing::Gev12, Components::One, ColorMatrix::None},
    {{PixelFormat_RGB8, "RGB8", 0x02180014, 24, 8, BayerPhase::None}, Packing::Byte, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR8, "BGR8", 0x02180015, 24, 8, BayerPhase::None}, Packing::Byte, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGBa8, "RGBa8", 0x02200016, 32, 8, BayerPhase::None}, Packing::Byte, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_BGRa8, "BGRa8", 0x02200017, 32, 8, BayerPhase::None}, Packing::Byte, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_RGB10, "RGB10", 0x02300018, 48, 10, BayerPhase::None}, Packing::Word, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR10, "BGR10", 0x02300019, 48, 10, BayerPhase::None}, Packing::Word, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB12, "RGB12", 0x0230001A, 48, 12, BayerPhase::None}, Packing::Word, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR12, "BGR12", 0x0230001B, 48, 12, BayerPhase::None}, Packing::Word, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB14, "RGB14", 0x0230005E, 48, 14, BayerPhase::None}, Packing::Word, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR14, "BGR14", 0x0230004A, 48, 14, BayerPhase::None}, Packing::Word, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB16, "RGB16", 0x02300033, 48, 16, BayerPhase::None}, Packing::Word, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR16, "BGR16", 0x0230004B, 48, 16, BayerPhase::None}, Packing::Word, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGBa16, "RGBa16", 0x02400064, 64, 16, BayerPhase::None}, Packing::Word, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_BGRa16, "BGRa16", 0x02400051, 64, 16, BayerPhase::None}, Packing::Word, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_RGB10p, "RGB10p", 0x021E005C, 30, 10, BayerPhase::None}, Packing::Bits, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR10p, "BGR10p", 0x021E0048, 30, 10, BayerPhase::None}, Packing::Bits, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB12p, "RGB12p", 0x0224005D, 36, 12, BayerPhase::None}, Packing::Bits, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR12p, "BGR12p", 0x02240049, 36, 12, BayerPhase::None}, Packing::Bits, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB10p32, "RGB10p32", 0x0220001D, 32, 10, BayerPhase::None}, Packing::Dword10, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_RGB565p, "RGB565p", 0x02100035, 16, 6, BayerPhase::None}, Packing::Bits565, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_BGR565p, "BGR565p", 0x02100036, 16, 6, BayerPhase::None}, Packing::Bits565, Components::Bgr, ColorMatrix::None},
    {{PixelFormat_RGB8_Planar, "RGB8_Planar", 0x02180021, 24, 8, BayerPhase::None}, Packing::BytePlanes, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_YUV8_UYV, "YUV8_UYV", 0x02180020, 24, 8, BayerPhase::None}, Packing::Byte, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YUV422_8_UYVY, "YUV422_8_UYVY", 0x0210001F, 16, 8, BayerPhase::None}, Packing::Byte, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YUV422_8, "YUV422_8", 0x02100032, 16, 8, BayerPhase::None}, Packing::Byte, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YUV411_8_UYYVYY, "YUV411_8_UYYVYY", 0x020C001E, 12, 8, BayerPhase::None}, Packing::Byte, Components::CbYYCrYY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr8, "YCbCr8", 0x0218005B, 24, 8, BayerPhase::None}, Packing::Byte, Components::YCbCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr8_CbYCr, "YCbCr8_CbYCr", 0x0218003A, 24, 8, BayerPhase::None}, Packing::Byte, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_8, "YCbCr422_8", 0x0210003B, 16, 8, BayerPhase::None}, Packing::Byte, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_8_CbYCrY, "YCbCr422_8_CbYCrY", 0x02100043, 16, 8, BayerPhase::None}, Packing::Byte, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr411_8, "YCbCr411_8", 0x020C005A, 12, 8, BayerPhase::None}, Packing::Byte, Components::YYCbYYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr411_8_CbYYCrYY, "YCbCr411_8_CbYYCrYY", 0x020C003C, 12, 8, BayerPhase::None}, Packing::Byte, Components::CbYYCrYY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr601_8_CbYCr, "YCbCr601_8_CbYCr", 0x0218003D, 24, 8, BayerPhase::None}, Packing::Byte, Components::CbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_8, "YCbCr601_422_8", 0x0210003E, 16, 8, BayerPhase::None}, Packing::Byte, Components::YCbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_8_CbYCrY, "YCbCr601_422_8_CbYCrY", 0x02100044, 16, 8, BayerPhase::None}, Packing::Byte, Components::CbYCrY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_411_8_CbYYCrYY, "YCbCr601_411_8_CbYYCrYY", 0x020C003F, 12, 8, BayerPhase::None}, Packing::Byte, Components::CbYYCrYY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr709_8_CbYCr, "YCbCr709_8_CbYCr", 0x02180040, 24, 8, BayerPhase::None}, Packing::Byte, Components::CbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_8, "YCbCr709_422_8", 0x02100041, 16, 8, BayerPhase::None}, Packing::Byte, Components::YCbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_8_CbYCrY, "YCbCr709_422_8_CbYCrY", 0x02100045, 16, 8, BayerPhase::None}, Packing::Byte, Components::CbYCrY, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_411_8_CbYYCrYY, "YCbCr709_411_8_CbYYCrYY", 0x020C0042, 12, 8, BayerPhase::None}, Packing::Byte, Components::CbYYCrYY, ColorMatrix::Studio709},
    {{PixelFormat_RGBa10, "RGBa10", 0x0240005F, 64, 10, BayerPhase::None}, Packing::Word, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_RGBa12, "RGBa12", 0x02400061, 64, 12, BayerPhase::None}, Packing::Word, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_RGBa14, "RGBa14", 0x02400063, 64, 14, BayerPhase::None}, Packing::Word, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_BGRa10, "BGRa10", 0x0240004C, 64, 10, BayerPhase::None}, Packing::Word, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_BGRa12, "BGRa12", 0x0240004E, 64, 12, BayerPhase::None}, Packing::Word, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_BGRa14, "BGRa14", 0x02400050, 64, 14, BayerPhase::None}, Packing::Word, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_RGBa10p, "RGBa10p", 0x02280060, 40, 10, BayerPhase::None}, Packing::Bits, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_RGBa12p, "RGBa12p", 0x02300062, 48, 12, BayerPhase::None}, Packing::Bits, Components::Rgba, ColorMatrix::None},
    {{PixelFormat_BGRa10p, "BGRa10p", 0x0228004D, 40, 10, BayerPhase::None}, Packing::Bits, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_BGRa12p, "BGRa12p", 0x0230004F, 48, 12, BayerPhase::None}, Packing::Bits, Components::Bgra, ColorMatrix::None},
    {{PixelFormat_RGB10_Planar, "RGB10_Planar", 0x02300022, 48, 10, BayerPhase::None}, Packing::WordPlanes, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_RGB12_Planar, "RGB12_Planar", 0x02300023, 48, 12, BayerPhase::None}, Packing::WordPlanes, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_RGB16_Planar, "RGB16_Planar", 0x02300024, 48, 16, BayerPhase::None}, Packing::WordPlanes, Components::Rgb, ColorMatrix::None},
    {{PixelFormat_YCbCr10_CbYCr, "YCbCr10_CbYCr", 0x02300083, 48, 10, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr10p_CbYCr, "YCbCr10p_CbYCr", 0x021E0084, 30, 10, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr12_CbYCr, "YCbCr12_CbYCr", 0x02300085, 48, 12, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr12p_CbYCr, "YCbCr12p_CbYCr", 0x02240086, 36, 12, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_10, "YCbCr422_10", 0x02200065, 32, 10, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_10_CbYCrY, "YCbCr422_10_CbYCrY", 0x02200099, 32, 10, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_10p, "YCbCr422_10p", 0x02140087, 20, 10, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_10p_CbYCrY, "YCbCr422_10p_CbYCrY", 0x0214009A, 20, 10, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_12, "YCbCr422_12", 0x02200066, 32, 12, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_12_CbYCrY, "YCbCr422_12_CbYCrY", 0x0220009B, 32, 12, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_12p, "YCbCr422_12p", 0x02180088, 24, 12, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Full601},
    {{PixelFormat_YCbCr422_12p_CbYCrY, "YCbCr422_12p_CbYCrY", 0x0218009C, 24, 12, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Full601},
    {{PixelFormat_YCbCr601_10_CbYCr, "YCbCr601_10_CbYCr", 0x02300089, 48, 10, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_10p_CbYCr, "YCbCr601_10p_CbYCr", 0x021E008A, 30, 10, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_12_CbYCr, "YCbCr601_12_CbYCr", 0x0230008B, 48, 12, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_12p_CbYCr, "YCbCr601_12p_CbYCr", 0x0224008C, 36, 12, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_10, "YCbCr601_422_10", 0x0220008D, 32, 10, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_10_CbYCrY, "YCbCr601_422_10_CbYCrY", 0x0220009D, 32, 10, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_10p, "YCbCr601_422_10p", 0x0214008E, 20, 10, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_10p_CbYCrY, "YCbCr601_422_10p_CbYCrY", 0x0214009E, 20, 10, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_12, "YCbCr601_422_12", 0x0220008F, 32, 12, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_12_CbYCrY, "YCbCr601_422_12_CbYCrY", 0x0220009F, 32, 12, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_12p, "YCbCr601_422_12p", 0x02180090, 24, 12, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr601_422_12p_CbYCrY, "YCbCr601_422_12p_CbYCrY", 0x021800A0, 24, 12, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio601},
    {{PixelFormat_YCbCr709_10_CbYCr, "YCbCr709_10_CbYCr", 0x02300091, 48, 10, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_10p_CbYCr, "YCbCr709_10p_CbYCr", 0x021E0092, 30, 10, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_12_CbYCr, "YCbCr709_12_CbYCr", 0x02300093, 48, 12, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_12p_CbYCr, "YCbCr709_12p_CbYCr", 0x02240094, 36, 12, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_10, "YCbCr709_422_10", 0x02200095, 32, 10, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_10_CbYCrY, "YCbCr709_422_10_CbYCrY", 0x022000A1, 32, 10, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_10p, "YCbCr709_422_10p", 0x02140096, 20, 10, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_10p_CbYCrY, "YCbCr709_422_10p_CbYCrY", 0x021400A2, 20, 10, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_12, "YCbCr709_422_12", 0x02200097, 32, 12, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_12_CbYCrY, "YCbCr709_422_12_CbYCrY", 0x022000A3, 32, 12, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_12p, "YCbCr709_422_12p", 0x02180098, 24, 12, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr709_422_12p_CbYCrY, "YCbCr709_422_12p_CbYCrY", 0x021800A4, 24, 12, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio709},
    {{PixelFormat_YCbCr2020_8_CbYCr, "YCbCr2020_8_CbYCr", 0x021800F4, 24, 8, BayerPhase::None}, Packing::Byte, Components::CbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_10_CbYCr, "YCbCr2020_10_CbYCr", 0x023000F5, 48, 10, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_10p_CbYCr, "YCbCr2020_10p_CbYCr", 0x021E00F6, 30, 10, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_12_CbYCr, "YCbCr2020_12_CbYCr", 0x023000F7, 48, 12, BayerPhase::None}, Packing::Word, Components::CbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_12p_CbYCr, "YCbCr2020_12p_CbYCr", 0x022400F8, 36, 12, BayerPhase::None}, Packing::Bits, Components::CbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_411_8_CbYYCrYY, "YCbCr2020_411_8_CbYYCrYY", 0x020C00F9, 12, 8, BayerPhase::None}, Packing::Byte, Components::CbYYCrYY, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_8, "YCbCr2020_422_8", 0x021000FA, 16, 8, BayerPhase::None}, Packing::Byte, Components::YCbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_8_CbYCrY, "YCbCr2020_422_8_CbYCrY", 0x021000FB, 16, 8, BayerPhase::None}, Packing::Byte, Components::CbYCrY, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_10, "YCbCr2020_422_10", 0x022000FC, 32, 10, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_10_CbYCrY, "YCbCr2020_422_10_CbYCrY", 0x022000FD, 32, 10, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_10p, "YCbCr2020_422_10p", 0x021400FE, 20, 10, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_10p_CbYCrY, "YCbCr2020_422_10p_CbYCrY", 0x021400FF, 20, 10, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_12, "YCbCr2020_422_12", 0x02200100, 32, 12, BayerPhase::None}, Packing::Word, Components::YCbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_12_CbYCrY, "YCbCr2020_422_12_CbYCrY", 0x02200101, 32, 12, BayerPhase::None}, Packing::Word, Components::CbYCrY, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_12p, "YCbCr2020_422_12p", 0x02180102, 24, 12, BayerPhase::None}, Packing::Bits, Components::YCbYCr, ColorMatrix::Studio2020},
    {{PixelFormat_YCbCr2020_422_12p_CbYCrY, "YCbCr2020_422_12p_CbYCrY", 0x02180103, 24, 12, BayerPhase::None}, Packing::Bits, Components::CbYCrY, ColorMatrix::Studio2020},
    {{PixelFormat_Raw8, "Raw8", 0x01080116, 8, 8, BayerPhase::None}, Packing::Byte, Components::One, ColorMatrix::None},
    {{PixelFormat_Raw16, "Raw16", 0x01100118, 16, 16, BayerPhase::None}, Packing::Word, Components::One, ColorMatrix::None},
};
// clang-format on

constexpr int kHighestNumber = 255;

constexpr auto MakeIndex() {
    std::array<std::uint8_t, kHighestNumber + 1> index{};
    for (std::size_t i = 0; i < std::size(kLayouts); ++i) {
        index[static_cast<std::size_t>(kLayouts[i].info.format)] = static_cast<std::uint8_t>(i + 1);
    }
    return index;
}

/// Position in kLayouts plus one by format number, 0 where there is none.
constexpr auto kIndex = MakeIndex();

/// Pixels that share chroma, and the components they have together.
struct Group {
    unsigned pixels, components;
};

constexpr Group GroupOf(Components components) noexcept {
    switch (components) {
    case Components::One:
        return {1, 1};
    case Components::Rgb:
    case Components::Bgr:
    case Components::YCbCr:
    case Components::CbYCr:
        return {1, 3};
    case Components::Rgba:
    case Components::Bgra:
        return {1, 4};
    case Components::YCbYCr:
    case Components::CbYCrY:
        return {2, 4};
    case Components::YYCbYYCr:
    case Components::CbYYCrYY:
        return {4, 6};
    }
    return {1, 1};
}

} // namespace

const PixelLayout* FindLayout(PixelFormatEnums format) noexcept {
    const auto number = static_cast<int>(format);
    if (number <= 0 || number > kHighestNumber || kIndex[static_cast<std::size_t>(number)] == 0) {
        return nullptr;
    }
    return &kLayouts[kIndex[static_cast<std::size_t>(number)] - 1];
}

unsigned PlaneCount(const PixelLayout& layout) noexcept {
    return layout.packing == Packing::BytePlanes || layout.packing == Packing::WordPlanes ? 3 : 1;
}

std::size_t ComponentsPerRow(const PixelLayout& layout, std::size_t width) noexcept {
    const Group group = GroupOf(layout.components);
    return (width + group.pixels - 1) / group.pixels * group.components / PlaneCount(layout);
}

std::size_t RowBytes(const PixelLayout& layout, std::size_t width) noexcept {
    const std::size_t components = ComponentsPerRow(layout, width);
    switch (layout.packing) {
    case Packing::Byte:
    case Packing::SignedByte:
    case Packing::BytePlanes:
        return components;
    case Packing::Word:
    case Packing::WordPlanes:
        return components * 2;
    case Packing::Bits:
        return (components * layout.info.significantBits + 7) / 8;
    case Packing::Gev10:
    case Packing::Gev12:
        return (components * 12 + 7) / 8;
    case Packing::Dword10:
        return width * 4;
    case Packing::Bits565:
        return width * 2;
    }
    return 0;
}

std::uint64_t BytesNeeded(const PixelLayout& layout, std::uint32_t width, std::uint32_t height,
                          std::size_t stride) noexcept {
    const std::uint64_t rows = std::uint64_t{height} * PlaneCount(layout);
    std::uint64_t bytes = 0;
    if (stride == 0) {
        // Fewer than 2^64 pixels of at most 64 bits: whole groups of eight pixels first.
        const std::uint64_t pixels = std::uint64_t{width} * height;
        const std::uint64_t bits = layout.info.bitsPerPixel;
        if (__builtin_mul_overflow(pixels / 8, bits, &bytes) ||
            __builtin_add_overflow(bytes, (pixels % 8 * bits + 7) / 8, &bytes)) {
            return UINT64_MAX;
        }
        return bytes;
    }
    if (rows == 0 || __builtin_mul_overflow(rows - 1, std::uint64_t{stride}, &bytes) ||
        __builtin_add_overflow(bytes, std::uint64_t{RowBytes(layout, width)}, &bytes)) {
        return rows == 0 ? 0 : UINT64_MAX;
    }
    return bytes;
}

} // namespace Imaging

const PixelFormatInfo* FindPixelFormat(PixelFormatEnums format) noexcept {
    const Imaging::PixelLayout* layout = Imaging::FindLayout(format);
    return layout ? &layout->info : nullptr;
}

const PixelFormatInfo* FindPixelFormatByPfnc(std::uint32_t pfncCode) noexcept {
    const auto found = std::find_if(std::begin(Imaging::kLayouts), std::end(Imaging::kLayouts),
                                    [&](const auto& layout) { return layout.info.pfncCode == pfncCode; });
    return found == std::end(Imaging::kLayouts) ? nullptr : &found->info;
}

const PixelFormatInfo* FindPixelFormatByName(std::string_view name) noexcept {
    const auto found = std::find_if(std::begin(Imaging::kLayouts), std::end(Imaging::kLayouts),
                                    [&](const auto& layout) { return layout.info.name == name; });
    return found == std::end(Imaging::kLayouts) ? nullptr : &found->info;
}

std::uint64_t PixelFormatImageSize(PixelFormatEnums format, std::uint64_t width,
                                   std::uint64_t height) noexcept {
    const Imaging::PixelLayout* layout = Imaging::FindLayout(format);
    return layout ? Imaging::RowBytes(*layout, width) * height * Imaging::PlaneCount(*layout) : 0;
}

} // namespace Norvane
