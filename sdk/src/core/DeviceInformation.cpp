#include "core/DeviceInformation.h"

#include "core/Descriptions.h"
#include "core/Version.h"

#include <charconv>
#include <utility>

namespace Norvane::Core {
namespace {

using Transport::Access;
using Transport::Technology;

std::string DisplayName(const DeviceView& view) {
    const Transport::DeviceRecord& record = view.record;
    if (!record.userName.empty()) {
        return record.userName;
    }
    return record.vendor.empty() ? record.model : record.vendor + " " + record.model;
}

/// Entries of "DeviceAccessStatus" (GenTL 1.6, DEVICE_ACCESS_STATUS_LIST).
std::int64_t AccessStatus(const DeviceView& view) {
    if (view.openedWith) {
        return *view.openedWith == Access::ReadWrite ? 5 : 6;
    }
    switch (view.record.access) {
    case Access::ReadWrite:
        return 1;
    case Access::ReadOnly:
        return 2;
    case Access::None:
        return 3;
    }
    return 0;
}

/// Entries of "DeviceCurrentSpeed".
std::int64_t Speed(const DeviceView& view) {
    static constexpr std::pair<std::string_view, std::int64_t> kUsb[] = {
        {"LowSpeed", 1}, {"FullSpeed", 2}, {"HighSpeed", 3}, {"SuperSpeed", 4}, {"SuperSpeedPlus", 5}};
    // The fastest entry that the link reaches.
    static constexpr std::pair<std::uint64_t, std::int64_t> kNetwork[] = {{25000, 11}, {10000, 10}, {5000, 9},
                                                                          {2500, 8},   {1000, 7},   {100, 6}};
    const std::string& text = view.record.speed;
    for (const auto& [name, value] : kUsb) {
        if (text == name) {
            return value;
        }
    }
    std::uint64_t megabits = view.linkSpeedMbps;
    if (!text.empty()) {
        std::from_chars(text.data(), text.data() + text.size(), megabits);
    }
    if (view.record.technology == Technology::GigEVision) {
        for (const auto& [least, value] : kNetwork) {
            if (megabits >= least) {
                return value;
            }
        }
    }
    return 0;
}

std::vector<DeviceInformation::Text> Texts() {
    return {
        {"DeviceID", 0x1000, [](const DeviceView& v) { return v.record.serial; }},
        {"DeviceSerialNumber", 0x1100, [](const DeviceView& v) { return std::to_string(v.number); }},
        {"DeviceVendorName", 0x1200, [](const DeviceView& v) { return v.record.vendor; }},
        {"DeviceModelName", 0x1300, [](const DeviceView& v) { return v.record.model; }},
        {"DeviceDisplayName", 0x1400, &DisplayName},
        {"DeviceUserID", 0x1500, [](const DeviceView& v) { return v.record.userName; }},
        {"DeviceVersion", 0x1600, [](const DeviceView& v) { return v.record.version; }},
        {"DeviceFirmwareVersion", 0x1700, [](const DeviceView& v) { return v.record.firmwareVersion; }},
        {"DeviceDriverVersion", 0x1800, [](const DeviceView&) { return LibraryVersionText(); }},
        {"DeviceInstanceId", 0x1900, [](const DeviceView& v) { return v.record.id; }},
        {"DeviceManufacturerInfo", 0x1A00, [](const DeviceView& v) { return v.record.manufacturerInfo; }},
    };
}

std::vector<DeviceInformation::Number> Numbers() {
    return {
        {"DeviceTypeReg", 0x8000,
         [](const DeviceView& v) -> std::int64_t {
             return v.record.technology == Technology::GigEVision ? 0 : 1;
         }},
        {"DeviceAccessStatusReg", 0x8008, &AccessStatus},
        {"DeviceCurrentSpeedReg", 0x8010, &Speed},
        {"DeviceIsUnusableReg", 0x8018,
         [](const DeviceView& v) -> std::int64_t { return v.record.unusable; }},
        {"GevImplementedReg", 0x8020,
         [](const DeviceView& v) -> std::int64_t { return v.record.technology == Technology::GigEVision; }},
        {"GevDeviceIPAddressReg", 0x8028,
         [](const DeviceView& v) -> std::int64_t { return v.record.ipAddress; }},
        {"GevDeviceSubnetMaskReg", 0x8030,
         [](const DeviceView& v) -> std::int64_t { return v.record.subnetMask; }},
        {"GevDeviceGatewayReg", 0x8038, [](const DeviceView& v) -> std::int64_t { return v.record.gateway; }},
        {"GevDeviceMACAddressReg", 0x8040,
         [](const DeviceView& v) { return static_cast<std::int64_t>(v.record.macAddress); }},
        {"GevDeviceIsWrongSubnetReg", 0x8048,
         [](const DeviceView& v) -> std::int64_t { return v.wrongSubnet; }},
    };
}

} // namespace

bool IsOnWrongSubnet(const Transport::DeviceRecord& device, const Transport::InterfaceRecord& interface) {
    return device.technology == Technology::GigEVision &&
           ((device.ipAddress ^ interface.ipAddress) & interface.subnetMask) != 0;
}

DeviceInformation::DeviceInformation(const DeviceView& view, std::function<void()> forceIp,
                                     std::function<bool()> forcing)
    : InformationMap(Texts(), Numbers(), view) {
    AddCommand(0x8050, std::move(forceIp), std::move(forcing));
    Build(kDeviceInformationXml, view.record.model + " " + view.record.serial);
}

} // namespace Norvane::Core
