#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

void Require(bool condition, const char* message) {
    if (!condition) {
        throw Exception(Error::InvalidParameter, message);
    }
}

std::int64_t LargestWidth(const RegisterBank& bank) {
    const std::int64_t pixels =
        bank.Int("SensorWidth") / (bank.Int("BinningHorizontal") * bank.Int("DecimationHorizontal"));
    return pixels / bank.Int("WidthStep") * bank.Int("WidthStep");
}

std::int64_t LargestHeight(const RegisterBank& bank) {
    const std::int64_t pixels =
        bank.Int("SensorHeight") / (bank.Int("BinningVertical") * bank.Int("DecimationVertical"));
    return pixels / bank.Int("HeightStep") * bank.Int("HeightStep");
}

/// Formats that only differ in their Bayer phase share a condition on the sensor's phase.
const char* ConditionOf(const EmulatedFormat& format) {
    switch (format.order) {
    case SampleOrder::Mono:
        return nullptr;
    case SampleOrder::BayerGR:
        return "SensorIsGR";
    case SampleOrder::BayerRG:
        return "SensorIsRG";
    case SampleOrder::BayerGB:
        return "SensorIsGB";
    case SampleOrder::BayerBG:
        return "SensorIsBG";
    default:
        return "SensorIsColor";
    }
}

void AddSensor(FeatureBuilder& f) {
    f.Integer("SensorWidth", "Columns of the sensor.").ReadOnly().Expert().Unit("px").Polled(1000);
    f.Integer("SensorHeight", "Rows of the sensor.").ReadOnly().Expert().Unit("px").Polled(1000);
    f.FloatReg("SensorPixelWidth", "Width of one photosite.")
        .ReadOnly()
        .Guru()
        .Length(4)
        .Unit("um")
        .Initial(3.45);
    f.FloatReg("SensorPixelHeight", "Height of one photosite.")
        .ReadOnly()
        .Guru()
        .Length(4)
        .Unit("um")
        .Initial(3.45);
    f.StringReg("SensorName", "Name of the sensor.")
        .ReadOnly()
        .Expert()
        .Length(32)
        .Initial("Emulated sensor");
    f.Enumeration("SensorShutterMode", "How the sensor is exposed.")
        .Expert()
        .Stored()
        .Locked()
        .Entry("Global", 0)
        .Entry("Rolling", 1)
        .Entry("GlobalReset", 2)
        .Initial(0);
    // 0 mono, else the Bayer phase: 1 GR, 2 RG, 3 GB, 4 BG.
    f.HiddenRegister("SensorFilter", 0, {}, 1000);
    f.Formula("SensorIsColor", "FILTER > 0", {{"FILTER", "SensorFilter"}});
    f.Formula("SensorIsGR", "FILTER = 1", {{"FILTER", "SensorFilter"}});
    f.Formula("SensorIsRG", "FILTER = 2", {{"FILTER", "SensorFilter"}});
    f.Formula("SensorIsGB", "FILTER = 3", {{"FILTER", "SensorFilter"}});
    f.Formula("SensorIsBG", "FILTER = 4", {{"FILTER", "SensorFilter"}});
    f.HiddenRegister("WidthStep", 4, {"SensorWidthReg"});
    f.HiddenRegister("HeightStep", 2, {"SensorHeightReg"});
    f.HiddenRegister("OffsetStep", 2, {"SensorWidthReg", "SensorHeightReg"});
}

void AddRegion(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Formula("WidthMaxFormula", "SENSOR / (BINNING * DECIMATION) / STEP * STEP",
              {{"SENSOR", "SensorWidthReg"},
               {"BINNING", "BinningHorizontalReg"},
               {"DECIMATION", "DecimationHorizontalReg"},
               {"STEP", "WidthStep"}});
    f.Formula("HeightMaxFormula", "SENSOR / (BINNING * DECIMATION) / STEP * STEP",
              {{"SENSOR", "SensorHeightReg"},
               {"BINNING", "BinningVerticalReg"},
               {"DECIMATION", "DecimationVerticalReg"},
               {"STEP", "HeightStep"}});
    f.Formula("WidthMin", "(LARGEST < 16) ? LARGEST : 16", {{"LARGEST", "WidthMaxFormula"}});
    f.Formula("HeightMin", "(LARGEST < 16) ? LARGEST : 16", {{"LARGEST", "HeightMaxFormula"}});
    f.Formula("WidthRoom", "(LARGEST - OFFSET) / STEP * STEP",
              {{"LARGEST", "WidthMaxFormula"}, {"OFFSET", "OffsetXReg"}, {"STEP", "WidthStep"}});
    f.Formula("HeightRoom", "(LARGEST - OFFSET) / STEP * STEP",
              {{"LARGEST", "HeightMaxFormula"}, {"OFFSET", "OffsetYReg"}, {"STEP", "HeightStep"}});
    f.Formula("OffsetXRoom", "(LARGEST - SIZE) / STEP * STEP",
              {{"LARGEST", "WidthMaxFormula"}, {"SIZE", "WidthReg"}, {"STEP", "OffsetStep"}});
    f.Formula("OffsetYRoom", "(LARGEST - SIZE) / STEP * STEP",
              {{"LARGEST", "HeightMaxFormula"}, {"SIZE", "HeightReg"}, {"STEP", "OffsetStep"}});

    f.Integer("WidthMax", "The largest width at the current binning and decimation.")
        .Expert()
        .Unit("px")
        .ValueFrom("WidthMaxFormula");
    f.Integer("HeightMax", "The largest height at the current binning and decimation.")
        .Expert()
        .Unit("px")
        .ValueFrom("HeightMaxFormula");
    const auto inside = [](std::int64_t size, std::int64_t offset, std::int64_t largest, std::int64_t step) {
        const std::int64_t smallest = std::min<std::int64_t>(16, largest);
        Require(size >= smallest && size + offset <= largest && (size - smallest) % step == 0,
                "the region does not lie inside the sensor or is off its grid");
    };
    const auto checkX = [&bank, inside] {
        inside(bank.Int("Width"), bank.Int("OffsetX"), LargestWidth(bank), bank.Int("WidthStep"));
    };
    const auto checkY = [&bank, inside] {
        inside(bank.Int("Height"), bank.Int("OffsetY"), LargestHeight(bank), bank.Int("HeightStep"));
    };
    f.Integer("Width", "Width of the image.")
        .Unit("px")
        .Min("WidthMin")
        .Max("WidthRoom")
        .Inc("WidthStep")
        .Locked()
        .Stored()
        .Imaging()
        .Initial(16)
        .OnWrite(checkX)
        .InvalidatedBy({"BinningHorizontalReg", "DecimationHorizontalReg", "SensorWidthReg"});
    f.Integer("Height", "Height of the image.")
        .Unit("px")
        .Min("HeightMin")
        .Max("HeightRoom")
        .Inc("HeightStep")
        .Locked()
        .Stored()
        .Imaging()
        .Initial(16)
        .OnWrite(checkY)
        .InvalidatedBy({"BinningVerticalReg", "DecimationVerticalReg", "SensorHeightReg"});
    // Unlike the size, the region may wander while images are taken.
    f.Integer("OffsetX", "Column of the sensor at the image's left edge.")
        .Unit("px")
        .Min(0)
        .Max("OffsetXRoom")
        .Inc("OffsetStep")
        .Stored()
        .Imaging()
        .OnWrite(checkX)
        .InvalidatedBy({"BinningHorizontalReg", "DecimationHorizontalReg", "SensorWidthReg"});
    f.Integer("OffsetY", "Row of the sensor at the image's top edge.")
        .Unit("px")
        .Min(0)
        .Max("OffsetYRoom")
        .Inc("OffsetStep")
        .Stored()
        .Imaging()
        .OnWrite(checkY)
        .InvalidatedBy({"BinningVerticalReg", "DecimationVerticalReg", "SensorHeightReg"});

    const auto factor = [&](const char* name, const char* toolTip) {
        f.Integer(name, toolTip)
            .Min(1)
            .Max(4)
            .Element("ValidValueSet", "1;2;4")
            .Locked()
            .Stored()
            .Imaging()
            .Initial(1)
            .OnWrite([&bank, &camera, name] {
                const std::int64_t value = bank.Int(name);
                Require(value == 1 || value == 2 || value == 4, "the factor is none of 1, 2 and 4");
                FitRegion(camera);
            });
    };
    factor("BinningHorizontal", "Columns that are combined into one.");
    f.Enumeration("BinningHorizontalMode", "How combined columns count.")
        .Expert()
        .Stored()
        .Imaging()
        .Entry("Sum", 0)
        .Entry("Average", 1)
        .Initial(1);
    factor("BinningVertical", "Rows that are combined into one.");
    f.Enumeration("BinningVerticalMode", "How combined rows count.")
        .Expert()
        .Stored()
        .Imaging()
        .Entry("Sum", 0)
        .Entry("Average", 1)
        .Initial(1);
    factor("DecimationHorizontal", "One column of so many is kept.");
    factor("DecimationVertical", "One row of so many is kept.");
    // Both mirror switches are bits of one register.
    f.Bank().Add("ReverseControl", RegisterBank::Type::Unsigned, 4,
                 RegisterBank::Readable | RegisterBank::Writable | RegisterBank::Stored |
                     RegisterBank::Imaging);
    f.Bits("ReverseXBit", "ReverseControl", 0, 0).Add("pInvalidator", "UserSetLoad");
    f.Bits("ReverseYBit", "ReverseControl", 1, 1).Add("pInvalidator", "UserSetLoad");
    f.Boolean("ReverseX", "Mirrors the image left to right.").ValueFrom("ReverseXBit");
    f.Boolean("ReverseY", "Mirrors the image top to bottom.").ValueFrom("ReverseYBit");
}

void AddPixelFormat(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    {
        Feature format = f.Enumeration("PixelFormat", "How the pixels are coded.");
        for (const EmulatedFormat& each : EmulatedFormats()) {
            format.Entry(std::string(each.name).c_str(), each.pfncCode, ConditionOf(each));
        }
        format.Locked()
            .Stored()
            .Imaging()
            .Initial(0x01080001)
            .InvalidatedBy({"SensorFilter"})
            .OnWrite([&bank, &camera] {
                const EmulatedFormat* chosen =
                    FindEmulatedFormat(static_cast<std::uint32_t>(bank.Int("PixelFormat")));
                Require(chosen && SensorDelivers(camera, *chosen),
                        "the sensor does not deliver this pixel format");
            });
    }
    f.Enumeration("PixelSize", "Bits that one pixel takes.")
        .ReadOnly()
        .Expert()
        .Entry("Bpp8", 8)
        .Entry("Bpp10", 10)
        .Entry("Bpp12", 12)
        .Entry("Bpp14", 14)
        .Entry("Bpp16", 16)
        .Entry("Bpp24", 24)
        .Entry("Bpp32", 32)
        .Entry("Bpp48", 48)
        .InvalidatedBy({"PixelFormatReg"})
        .OnRead([&bank] { bank.SetInt("PixelSize", bank.Int("PixelFormat") >> 16 & 0xFF); });
    f.Enumeration("PixelColorFilter", "Colour filter of the delivered pixels.")
        .ReadOnly()
        .Expert()
        .Entry("None", 0)
        .Entry("BayerGR", 1)
        .Entry("BayerRG", 2)
        .Entry("BayerGB", 3)
        .Entry("BayerBG", 4)
        .InvalidatedBy({"PixelFormatReg"})
        .OnRead([&bank] {
            const EmulatedFormat* format =
                FindEmulatedFormat(static_cast<std::uint32_t>(bank.Int("PixelFormat")));
            bank.SetInt("PixelColorFilter", format ? format->ColorFilter() : 0);
        });
    f.IntReg("PixelDynamicRangeMin", "The smallest value of a pixel.").ReadOnly().Expert();
    f.IntReg("PixelDynamicRangeMax", "The largest value of a pixel.")
        .ReadOnly()
        .Expert()
        .InvalidatedBy({"PixelFormatReg"})
        .OnRead([&bank] {
            const EmulatedFormat* format =
                FindEmulatedFormat(static_cast<std::uint32_t>(bank.Int("PixelFormat")));
            bank.SetInt("PixelDynamicRangeMax", format ? (1 << format->bits) - 1 : 0);
        });
    f.Enumeration("TestPattern", "What stands in place of the sensor's picture.")
        .Stored()
        .Imaging()
        .Entry("Off", 0)
        .Entry("Black", 1)
        .Entry("White", 2)
        .Entry("GreyVerticalRamp", 3)
        .Entry("GreyHorizontalRamp", 4)
        .Entry("GreyVerticalRampMoving", 5)
        .Entry("GreyHorizontalRampMoving", 6)
        .Entry("ColorBar", 9, "SensorIsColor")
        .Initial(0);
}

} // namespace

bool SensorDelivers(const CameraModel& camera, const EmulatedFormat& format) {
    const std::int64_t filter = camera.Bank().Int("SensorFilter");
    if (format.IsMono()) {
        return true;
    }
    if (format.IsBayer()) {
        return filter == format.ColorFilter();
    }
    return filter > 0;
}

void FitRegion(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    const auto fit = [&](const char* size, const char* offset, const char* seenName, std::int64_t largest,
                         std::int64_t step) {
        const std::int64_t smallest = std::min<std::int64_t>(16, largest);
        // A region that filled the sensor goes on filling it.
        std::int64_t wanted =
            bank.Int(size) == bank.Int(seenName) ? largest : std::min(bank.Int(size), largest);
        wanted = std::max(smallest, wanted - (wanted - smallest) % step);
        bank.SetInt(size, wanted);
        bank.SetInt(offset, std::min(bank.Int(offset),
                                     (largest - wanted) / bank.Int("OffsetStep") * bank.Int("OffsetStep")));
        bank.SetInt(seenName, largest);
    };
    fit("Width", "OffsetX", "WidthMaxBefore", LargestWidth(bank), bank.Int("WidthStep"));
    fit("Height", "OffsetY", "HeightMaxBefore", LargestHeight(bank), bank.Int("HeightStep"));
    bank.TouchImaging();
}

void AddImageFormatControl(FeatureBuilder& f, CameraModel& camera) {
    f.Category("ImageFormatControl", "Size and coding of the images.");
    AddSensor(f);
    AddRegion(f, camera);
    AddPixelFormat(f, camera);
    // The largest region that the sizes were fitted to last.
    f.Bank().Add("WidthMaxBefore", RegisterBank::Type::Unsigned, 4, RegisterBank::Stored);
    f.Bank().Add("HeightMaxBefore", RegisterBank::Type::Unsigned, 4, RegisterBank::Stored);
    f.Bank().SetInt("WidthMaxBefore", f.Bank().Int("Width"));
    f.Bank().SetInt("HeightMaxBefore", f.Bank().Int("Height"));
}

} // namespace Norvane::Transport::Emulator
