#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {

void AddLutControl(FeatureBuilder& f, CameraModel&) {
    RegisterBank& bank = f.Bank();
    f.Category("LUTControl", "The look-up table that pixels pass through.");
    f.Enumeration("LUTSelector", "Which table is set.")
        .Expert()
        .Selects({"LUTIndex", "LUTEnable", "LUTValue"})
        .Entry("Luminance", 0);
    f.Boolean("LUTEnable", "Whether pixels pass through the table.").Expert().Stored().Imaging();
    f.Integer("LUTIndex", "The entry that LUT Value shows.")
        .Guru()
        .Min(0)
        .Max(kLutEntries - 1)
        .Selects({"LUTValue"});
    // One table behind two nodes: a single entry at a computed address, and the whole of it.
    bank.Add("LUTTable", RegisterBank::Type::Unsigned, 2,
             RegisterBank::Readable | RegisterBank::Writable | RegisterBank::Stored | RegisterBank::Imaging,
             kLutEntries);
    for (std::uint32_t i = 0; i < kLutEntries; ++i) {
        bank.SetInt("LUTTable", i * 4095 / (kLutEntries - 1), i);
    }
    f.Helper("IntSwissKnife", "LUTAddress")
        .Add("pVariable", "LUTIndexReg", "Name=\"INDEX\"")
        .Add("Constant", static_cast<std::int64_t>(bank.Address("LUTTable")), "Name=\"BASE\"")
        .Add("Formula", "BASE + INDEX * 2");
    XmlNode& entry = f.Helper("IntReg", "LUTValueReg");
    entry.Add("pAddress", "LUTAddress")
        .Add("Length", 2)
        .Add("AccessMode", "RW")
        .Add("pPort", "Device")
        .Add("Endianess", bank.IsBigEndian() ? "BigEndian" : "LittleEndian")
        .Add("pInvalidator", "LUTValueAll")
        .Add("pInvalidator", "UserSetLoad");
    f.Integer("LUTValue", "What the table makes of the selected entry.")
        .Guru()
        .Min(0)
        .Max(4095)
        .ValueFrom("LUTValueReg");
    XmlNode& all = f.Helper("Register", "LUTValueAll");
    all.Add("ToolTip", "The whole table, 16 bits an entry in the camera's byte order.")
        .Add("DisplayName", "LUT Value All")
        .Add("Visibility", "Guru")
        .Add("pInvalidator", "LUTValueReg")
        .Add("pInvalidator", "UserSetLoad");
    f.Locate(all, "LUTTable", 2 * kLutEntries, "RW");
    f.List("LUTValueAll");
}

} // namespace Norvane::Transport::Emulator
