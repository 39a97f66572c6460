#include "transport/emulator/features/Features.h"

#include <iterator>

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::uint32_t kLines = 4; ///< the first two are inputs, the third output, the fourth either
constexpr std::uint32_t kOutputs = 2;

/// What drives an output line.
enum LineSource {
    Off = 0,
    ExposureActive = 1,
    FrameTriggerWait = 2,
    UserOutput0 = 3,
    UserOutput1 = 4,
    Timer0Active = 5
};

std::uint32_t LineLevels(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    const std::int64_t now = camera.NanosecondsSincePowerUp();
    std::uint32_t levels = 0;
    for (std::uint32_t line = 0; line < kLines; ++line) {
        bool level = false;
        if (bank.Int("LineMode", line) == 0) {
            // Something at the inputs, so that there is something to see: a slow and a slower square wave.
            level = line < std::size(kLineHalfPeriodNs) && now / kLineHalfPeriodNs[line] % 2 == 1;
        } else {
            switch (bank.Int("LineSource", line)) {
            case ExposureActive:
                level = camera.Frames().IsActive();
                break;
            case FrameTriggerWait:
                level = camera.Frames().IsActive() && !camera.Frames().Due(camera.AcquisitionParameters());
                break;
            case UserOutput0:
                level = bank.Int("UserOutputValueAll") & 1;
                break;
            case UserOutput1:
                level = bank.Int("UserOutputValueAll") & 2;
                break;
            case Timer0Active:
                level = TimerIsActive(camera, 0);
                break;
            default:
                break;
            }
        }
        levels |= (level != (bank.Int("LineInverter", line) != 0) ? 1U : 0U) << line;
    }
    return levels;
}

} // namespace

void AddDigitalIOControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("DigitalIOControl", "The electrical inputs and outputs.");
    f.Enumeration("LineSelector", "Which line the features below set.")
        .Selects({"LineMode", "LineInverter", "LineStatus", "LineSource", "LineFormat"})
        .Entry("Line0", 0)
        .Entry("Line1", 1)
        .Entry("Line2", 2)
        .Entry("Line3", 3);
    // Only the last line can be turned round.
    f.Formula("LineModeIsFixed", "LINE < 3", {{"LINE", "LineSelectorReg"}});
    f.Enumeration("LineMode", "Whether the line is an input or an output.")
        .Element("pIsLocked", "LineModeIsFixed")
        .By("LineSelector", kLines)
        .Stored()
        .Entry("Input", 0)
        .Entry("Output", 1)
        .OnWrite([&bank] {
            bank.SetInt("LineMode", 0, 0);
            bank.SetInt("LineMode", 0, 1);
            bank.SetInt("LineMode", 1, 2);
        });
    bank.SetInt("LineMode", 1, 2);
    f.Boolean("LineInverter", "Whether the line's level is inverted.").By("LineSelector", kLines).Stored();
    // All levels are bits of one register; it is read through a structure and, for the selected line, a
    // formula.
    bank.Add("LineStatusAll", RegisterBank::Type::Unsigned, 4, RegisterBank::Readable);
    bank.OnRead("LineStatusAll", [&bank, &camera] { bank.SetInt("LineStatusAll", LineLevels(camera)); });
    XmlNode& status = f.Helper("IntReg", "LineStatusAll");
    status.Add("ToolTip", "The levels of all lines, the first in the lowest bit.")
        .Add("DisplayName", "Line Status All")
        .Add("Visibility", "Expert")
        .Add("Representation", "HexNumber")
        .Add("PollingTime", 250);
    f.Locate(status, "LineStatusAll", 4, "RO");
    XmlNode& levels = f.Helper("StructReg", "Levels of the lines");
    levels.Add("PollingTime", 250);
    f.Locate(levels, "LineStatusAll", 4, "RO");
    for (std::uint32_t line = 0; line < kLines; ++line) {
        XmlNode entry("StructEntry", "Line" + std::to_string(line) + "Level");
        entry.Add("Visibility", "Invisible").Add("Bit", bank.IsBigEndian() ? 31 - line : line);
        levels.Nest(entry);
    }
    f.Formula("LineStatusFormula", "(LINE = 0) ? L0 : ((LINE = 1) ? L1 : ((LINE = 2) ? L2 : L3))",
              {{"LINE", "LineSelectorReg"},
               {"L0", "Line0Level"},
               {"L1", "Line1Level"},
               {"L2", "Line2Level"},
               {"L3", "Line3Level"}});
    f.Boolean("LineStatus", "The level of the selected line.").ValueFrom("LineStatusFormula");
    f.List("LineStatusAll");
    f.Formula("LineIsOutput", "MODE = 1", {{"MODE", "LineModeReg"}});
    f.Enumeration("LineSource", "What drives the output.")
        .Available("LineIsOutput")
        .By("LineSelector", kLines)
        .Stored()
        .Entry("Off", Off)
        .Entry("ExposureActive", ExposureActive)
        .Entry("FrameTriggerWait", FrameTriggerWait)
        .Entry("UserOutput0", UserOutput0)
        .Entry("UserOutput1", UserOutput1)
        .Entry("Timer0Active", Timer0Active);
    f.Enumeration("LineFormat", "How the line is built.")
        .ReadOnly()
        .Expert()
        .By("LineSelector", kLines)
        .Entry("OptoCoupled", 0)
        .Entry("LVTTL", 1);
    bank.SetInt("LineFormat", 1, 3);
    f.Enumeration("UserOutputSelector", "Which bit User Output Value sets.")
        .Selects({"UserOutputValue"})
        .Entry("UserOutput0", 0)
        .Entry("UserOutput1", 1);
    f.Integer("UserOutputValueAll", "Both user outputs, the first in the lowest bit.")
        .Expert()
        .Min(0)
        .Max((1 << kOutputs) - 1)
        .Representation("HexNumber")
        .Stored()
        .InvalidatedBy({"UserOutputValueConverter"});
    // One bit of the register above: reading picks it, writing puts it between the others.
    f.Helper("IntConverter", "UserOutputValueConverter")
        .Add("pVariable", "UserOutputSelectorReg", "Name=\"BIT\"")
        .Add("pVariable", "UserOutputValueAllReg", "Name=\"ALL\"")
        .Add("FormulaTo", "(FROM > 0) ? (ALL | (1 << BIT)) : (ALL & ~(1 << BIT))")
        .Add("FormulaFrom", "(TO >> BIT) & 1")
        .Add("pValue", "UserOutputValueAllReg")
        .Add("Slope", "Varying");
    f.Boolean("UserOutputValue", "The selected user output.").ValueFrom("UserOutputValueConverter");
}

} // namespace Norvane::Transport::Emulator
