#include "core/InterfaceInformation.h"

#include "core/Descriptions.h"

#include <algorithm>
#include <utility>

namespace Norvane::Core {
namespace {

using Transport::Technology;

std::int64_t LargestSelector(const InterfaceView& view) {
    return view.devices.empty() ? 0 : static_cast<std::int64_t>(view.devices.size()) - 1;
}

std::vector<InterfaceInformation::Text> Texts() {
    return {
        {"InterfaceID", 0x1000, [](const InterfaceView& v) { return v.record.id; }},
        {"InterfaceDisplayName", 0x1100,
         [](const InterfaceView& v) {
             return v.record.displayName.empty() ? v.record.id : v.record.displayName;
         }},
        {"DeviceID", 0x1200, [](const InterfaceView& v) { return v.Selected() ? v.Selected()->serial : ""; }},
        {"DeviceModelName", 0x1300,
         [](const InterfaceView& v) { return v.Selected() ? v.Selected()->model : ""; }},
        {"DeviceSerialNumber", 0x1400,
         [](const InterfaceView& v) { return v.Selected() ? std::to_string(v.Selected()->number) : ""; }},
    };
}

std::vector<InterfaceInformation::Number> Numbers() {
    return {
        {"InterfaceTypeReg", 0x8000,
         [](const InterfaceView& v) -> std::int64_t {
             return v.record.technology == Technology::GigEVision ? 0 : 1;
         }},
        {"GevImplementedReg", 0x8008,
         [](const InterfaceView& v) -> std::int64_t {
             return v.record.technology == Technology::GigEVision;
         }},
        {"GevInterfaceMACAddressReg", 0x8010,
         [](const InterfaceView& v) { return static_cast<std::int64_t>(v.record.macAddress); }},
        {"GevInterfaceSubnetIPAddressReg", 0x8018,
         [](const InterfaceView& v) -> std::int64_t { return v.record.ipAddress; }},
        {"GevInterfaceSubnetMaskReg", 0x8020,
         [](const InterfaceView& v) -> std::int64_t { return v.record.subnetMask; }},
        {"DeviceCountReg", 0x8030,
         [](const InterfaceView& v) { return static_cast<std::int64_t>(v.devices.size()); }},
        {"DeviceSelectorMaxReg", 0x8038, &LargestSelector},
        {"DeviceSelectorReg", 0x8040,
         [](const InterfaceView& v) { return std::min(v.selected, LargestSelector(v)); },
         [](InterfaceView& v, std::int64_t value) { v.selected = value; }},
    };
}

} // namespace

const InterfaceView::Device* InterfaceView::Selected() const {
    return devices.empty() ? nullptr
                           : &devices[static_cast<std::size_t>(
                                 std::clamp<std::int64_t>(selected, 0, LargestSelector(*this)))];
}

InterfaceInformation::InterfaceInformation(const InterfaceView& view, InterfaceCommands commands)
    : InformationMap(Texts(), Numbers(), view) {
    AddCommand(0x8028, std::move(commands.updateList), [] { return false; });
    AddCommand(
        0x8048,
        [this, forceIp = std::move(commands.forceIp)] {
            const InterfaceView now = Get();
            if (const InterfaceView::Device* device = now.Selected()) {
                forceIp(device->id);
            }
        },
        std::move(commands.forcing));
    Build(kInterfaceInformationXml, view.record.id);
}

} // namespace Norvane::Core
