#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {

void AddAnalogControl(FeatureBuilder& f, CameraModel&) {
    RegisterBank& bank = f.Bank();
    f.Category("AnalogControl", "Brightness and colour.");
    // The register counts tenths of a decibel.
    bank.Add("GainTenths", RegisterBank::Type::Unsigned, 4,
             RegisterBank::Readable | RegisterBank::Writable | RegisterBank::Stored | RegisterBank::Imaging);
    f.Locate(f.Helper("IntReg", "GainTenthsReg"), "GainTenths", 4, "RW");
    f.Helper("Converter", "GainConverter")
        .Add("FormulaTo", "FROM * 10")
        .Add("FormulaFrom", "TO * 0.1")
        .Add("pValue", "GainTenthsReg")
        .Add("Slope", "Increasing")
        .Add("IsLinear", "Yes");
    f.Float("Gain", "Amplification of the picture.").Unit("dB").Min(0).Max(24).ValueFrom("GainConverter");
}

} // namespace Norvane::Transport::Emulator
