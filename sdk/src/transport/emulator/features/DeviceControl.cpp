#include "transport/emulator/features/Features.h"

namespace Norvane::Transport::Emulator {

void AddDeviceControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    const bool gigE = camera.IsGigE();
    f.Category("DeviceControl", "Identity and state of the camera.");
    f.Enumeration("DeviceType", "What the device is.").ReadOnly().Guru().Entry("Transmitter", 0).Initial(0);
    f.Enumeration("DeviceScanType", "How the sensor is scanned.")
        .ReadOnly()
        .Expert()
        .Entry("Areascan", 0)
        .Entry("Linescan", 1);
    f.StringReg("DeviceVendorName", "Name of the camera's maker.").ReadOnly().Length(64);
    f.StringReg("DeviceModelName", "Name of the camera's model.").ReadOnly().Length(64);
    f.StringReg("DeviceFamilyName", "The series that the model belongs to.")
        .ReadOnly()
        .Length(32)
        .Initial("Duskwing");
    f.StringReg("DeviceManufacturerInfo", "What the maker has to add.")
        .ReadOnly()
        .Length(48)
        .Initial("Emulated camera");
    f.StringReg("DeviceVersion", "Version of the device.").ReadOnly().Length(32).Initial("1.0");
    f.StringReg("DeviceFirmwareVersion", "Version of the firmware.").ReadOnly().Length(32).Initial("1.0.0");
    f.StringReg("DeviceSerialNumber", "The device's serial number.").ReadOnly().Length(64);
    f.StringReg("DeviceUserID", "A name that the user gives to the camera.").Length(64).Stored();
    f.Integer("DeviceSFNCVersionMajor", "Major version of the naming convention.")
        .ReadOnly()
        .Expert()
        .Initial(2);
    f.Integer("DeviceSFNCVersionMinor", "Minor version of the naming convention.")
        .ReadOnly()
        .Expert()
        .Initial(7);
    f.Integer("DeviceSFNCVersionSubMinor", "Sub-minor version of the naming convention.")
        .ReadOnly()
        .Expert()
        .Initial(0);
    f.Enumeration("DeviceTLType", "The transport layer that the camera speaks.")
        .ReadOnly()
        .Expert()
        .Entry("GigEVision", 0)
        .Entry("USB3Vision", 4)
        .Initial(gigE ? 0 : 4);
    f.IntReg("DeviceTLVersionMajor", "Major version of the transport layer.")
        .ReadOnly()
        .Expert()
        .Initial(gigE ? 2 : 1);
    f.IntReg("DeviceTLVersionMinor", "Minor version of the transport layer.").ReadOnly().Expert().Initial(0);

    bank.SetText("DeviceVendorName", camera.Camera().vendor);
    bank.SetText("DeviceModelName", camera.Camera().model);
    bank.SetText("DeviceSerialNumber", camera.Camera().serial);
    bank.SetText("DeviceUserID", camera.Camera().userName);

    f.Integer("DeviceLinkSpeed", "Bytes that the link carries in a second.")
        .ReadOnly()
        .Length(8)
        .Unit("Bps")
        .Expert()
        .Initial(gigE ? std::int64_t{125000000} : std::int64_t{500000000});
    f.Enumeration("DeviceLinkThroughputLimitMode", "Whether the throughput is limited.")
        .Expert()
        .Stored()
        .Entry("Off", 0)
        .Entry("On", 1)
        .Initial(0);
    f.Formula("LinkLimitIsOn", "MODE = 1", {{"MODE", "DeviceLinkThroughputLimitModeReg"}});
    f.Integer("DeviceLinkThroughputLimit", "The most bytes a second that the camera sends.")
        .Length(8)
        .Unit("Bps")
        .Expert()
        .Min(1000000)
        .Max("DeviceLinkSpeed")
        .Inc(1000)
        .Stored()
        .Available("LinkLimitIsOn")
        .Locked()
        .Initial(gigE ? std::int64_t{125000000} : std::int64_t{500000000});
    f.Integer("DeviceLinkHeartbeatTimeout",
              "Time without a sign of life after which the camera lets its controller go.")
        .Unit("us")
        .Guru()
        .Min(500000)
        .Max(60000000)
        .Initial(3000000);

    f.Enumeration("DeviceTemperatureSelector", "Where the temperature is measured.")
        .Expert()
        .Entry("Sensor", 0)
        .Entry("Mainboard", 1)
        .Selects({"DeviceTemperature"})
        .Initial(0);
    f.Float("DeviceTemperature", "Temperature at the selected place.")
        .ReadOnly()
        .Expert()
        .Unit("C")
        .By("DeviceTemperatureSelector", 2)
        .Element("DisplayNotation", "Fixed")
        .Element("DisplayPrecision", 1)
        .Min(-40)
        .Max(125)
        .Polled(1000)
        .OnRead([&camera, &bank] {
            bank.SetReal("DeviceTemperature", camera.Temperature(0), 0);
            bank.SetReal("DeviceTemperature", camera.Temperature(1), 1);
        });
    f.Float("DeviceUpTimeSeconds", "Time since power-up.")
        .DisplayName("Device Up Time")
        .ReadOnly()
        .Guru()
        .Unit("s")
        .Length(4)
        .Polled(500)
        .OnRead([&camera, &bank] {
            bank.SetReal("DeviceUpTimeSeconds", double(camera.NanosecondsSincePowerUp()) * 1e-9);
        });

    f.Command("TimestampReset", "Starts the camera's clock again at 0.").Expert().OnWrite([&bank, &camera] {
        bank.SetInt("TimestampOffset", camera.NanosecondsSincePowerUp());
    });
    f.Command("TimestampLatch", "Copies the camera's clock to Timestamp Latch Value.")
        .Expert()
        .OnWrite([&bank, &camera] {
            bank.SetInt("TimestampLatchValue",
                        camera.NanosecondsSincePowerUp() - bank.Int("TimestampOffset"));
        });
    f.Integer("TimestampLatchValue", "The clock when it was latched last.")
        .ReadOnly()
        .Expert()
        .Length(8)
        .Unit("ns")
        .InvalidatedBy({"TimestampLatch", "TimestampReset"});
    f.HiddenRegister("TimestampOffset", 0, {"TimestampReset"});
    f.IntReg("TimestampIncrement", "Nanoseconds of one tick of the camera's clock.")
        .ReadOnly()
        .Guru()
        .Length(8)
        .Unit("ns")
        .Initial(1);

    f.Enumeration("DeviceIndicatorMode", "What the camera's light shows.")
        .Expert()
        .Stored()
        .Entry("Inactive", 0)
        .Entry("Active", 1)
        .Entry("ErrorStatus", 2)
        .Initial(1);
    f.Enumeration("DeviceRegistersEndianness", "Byte order of the registers.")
        .ReadOnly()
        .Guru()
        .Entry("Little", 0)
        .Entry("Big", 1)
        .Initial(bank.IsBigEndian() ? 1 : 0);
    f.Command("DeviceReset", "Starts the camera anew; the connection is lost.").Guru().OnWrite([&camera] {
        if (camera.onReset) {
            camera.onReset();
        }
    });
}

} // namespace Norvane::Transport::Emulator
