#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"
#include "transport/emulator/Flash.h"

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::chrono::milliseconds kSaveTime{40};

} // namespace

void AddUserSetControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("UserSetControl", "Whole sets of settings.");
    f.Enumeration("UserSetSelector", "The set that is loaded or saved.")
        .Entry("Default", 0, nullptr, nullptr, "As the camera was delivered; cannot be overwritten.")
        .Entry("UserSet0", 1)
        .Entry("UserSet1", 2)
        .Selects({"UserSetLoad", "UserSetSave"})
        .Initial(0);
    f.Formula("UserSetIsOwn", "SET > 0", {{"SET", "UserSetSelectorReg"}});
    f.Command("UserSetLoad", "Puts the selected set's settings in force.").Locked().OnWrite([&bank, &camera] {
        camera.LoadUserSet(static_cast<std::size_t>(bank.Int("UserSetSelector")));
    });
    // Saving takes a while: the register reads 1 until the flash is written.
    f.Command("UserSetSave", "Stores the current settings in the selected set.")
        .Available("UserSetIsOwn")
        .ReadWrite()
        .Volatile()
        .OnWrite([&bank, &camera] {
            camera.SaveUserSet(static_cast<std::size_t>(bank.Int("UserSetSelector")));
            bank.SetInt("UserSetSaveStarted", camera.NanosecondsSincePowerUp());
        })
        .OnRead([&bank, &camera] {
            const std::chrono::nanoseconds passed(camera.NanosecondsSincePowerUp() -
                                                  bank.Int("UserSetSaveStarted"));
            if (passed >= kSaveTime) {
                bank.SetInt("UserSetSave", 0);
            }
        });
    bank.Add("UserSetSaveStarted", RegisterBank::Type::Signed, 8, 0);
    f.Enumeration("UserSetDefault", "The set that the camera starts with.")
        .Entry("Default", 0)
        .Entry("UserSet0", 1)
        .Entry("UserSet1", 2)
        .OnWrite([&bank, &camera] {
            camera.Store().startSet = static_cast<std::size_t>(bank.Int("UserSetDefault"));
        });
}

} // namespace Norvane::Transport::Emulator
