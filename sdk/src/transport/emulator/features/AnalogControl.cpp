#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {
namespace {

/// Gain and balance count per colour: 0 all, 1 red, 2 green, 3 blue.
constexpr std::uint32_t kGains = 4;

void AddGain(FeatureBuilder& f) {
    RegisterBank& bank = f.Bank();
    f.Enumeration("GainSelector", "Which amplification Gain sets.")
        .Selects({"Gain"})
        .Entry("All", 0)
        .Entry("Red", 1, "SensorIsColor")
        .Entry("Green", 2, "SensorIsColor")
        .Entry("Blue", 3, "SensorIsColor")
        .Initial(0);
    f.Enumeration("GainAuto", "Whether the camera finds the gain itself.")
        .Stored()
        .Polled(500)
        .Entry("Off", 0)
        .Entry("Once", 1)
        .Entry("Continuous", 2);
    f.Formula("GainIsAutomatic", "AUTO <> 0", {{"AUTO", "GainAutoReg"}});
    // The registers count tenths of a decibel.
    bank.Add("GainTenths", RegisterBank::Type::Unsigned, 4,
             RegisterBank::Readable | RegisterBank::Writable | RegisterBank::Stored | RegisterBank::Imaging,
             kGains);
    XmlNode& ticks = f.Helper("IntReg", "GainTenthsReg");
    f.Locate(ticks, "GainTenths", 4, "RW");
    ticks.Add("pIndex", "GainSelectorReg", "Offset=\"4\"")
        .Add("pInvalidator", "UserSetLoad")
        .Add("PollingTime", 1000);
    f.Helper("Converter", "GainConverter")
        .Add("FormulaTo", "FROM * 10")
        .Add("FormulaFrom", "TO * 0.1")
        .Add("pValue", "GainTenthsReg")
        .Add("Slope", "Increasing");
    f.Float("Gain", "Amplification of the picture.")
        .Unit("dB")
        .Min(0)
        .Max(24)
        .Element("DisplayNotation", "Fixed")
        .Element("DisplayPrecision", 1)
        .Element("pIsLocked", "GainIsAutomatic")
        .ValueFrom("GainConverter");
}

void AddColour(FeatureBuilder& f) {
    f.Enumeration("BalanceRatioSelector", "Which colour Balance Ratio sets.")
        .Implemented("SensorIsColor")
        .Selects({"BalanceRatio"})
        .Entry("Red", 0)
        .Entry("Green", 1)
        .Entry("Blue", 2);
    f.Enumeration("BalanceWhiteAuto", "Whether the camera balances the colours itself.")
        .Implemented("SensorIsColor")
        .Stored()
        .Polled(500)
        .Entry("Off", 0)
        .Entry("Once", 1)
        .Entry("Continuous", 2);
    f.Formula("BalanceIsAutomatic", "AUTO <> 0", {{"AUTO", "BalanceWhiteAutoReg"}});
    f.Float("BalanceRatio", "Amplification of the selected colour against the others.")
        .Implemented("SensorIsColor")
        .By("BalanceRatioSelector", 3)
        .Min(0.25)
        .Max(4)
        .Length(4)
        .Stored()
        .Imaging()
        .Element("pIsLocked", "BalanceIsAutomatic")
        .Initial(1.0)
        .InvalidatedBy({"BalanceWhiteAutoReg"});
}

} // namespace

void AddAnalogControl(FeatureBuilder& f, CameraModel&) {
    f.Category("AnalogControl", "Brightness and colour.");
    AddGain(f);
    f.Enumeration("BlackLevelSelector", "Which black level is set.")
        .Expert()
        .Selects({"BlackLevel"})
        .Entry("All", 0);
    f.Float("BlackLevel", "Brightness of an unlit pixel, as a share of full scale.")
        .Unit("%")
        .Min(0)
        .Max(12.5)
        .Stored()
        .Imaging();
    AddColour(f);
    f.Boolean("GammaEnable", "Whether Gamma bends the brightness curve.").Stored().Imaging();
    f.Formula("GammaIsOn", "ON > 0", {{"ON", "GammaEnableReg"}});
    f.Float("Gamma", "Exponent of the brightness curve.")
        .Available("GammaIsOn")
        .Min(0.25)
        .Max(4)
        .Stored()
        .Imaging()
        .Initial(1.0);
}

} // namespace Norvane::Transport::Emulator
