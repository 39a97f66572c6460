#include "transport/aravis/UsbDiscovery.h"

#include <algorithm>
#include <arv.h>
#include <set>

namespace Norvane::Transport {
namespace {

// A device that was just plugged in may need some time before its device file may be opened.
constexpr int kTries = 5;

std::string Text(const char* text) {
    return text ? text : "";
}

} // namespace

const std::map<std::string, UsbCamera>& UsbDiscovery::Scan(const UsbTree& tree) {
    if (tree.devices != m_asked) {
        m_asked = tree.devices;
        m_triesLeft = kTries;
    }
    if (tree.devices.empty()) {
        m_cameras.clear();
    } else if (m_triesLeft > 0) {
        --m_triesLeft;
        AskDevices(tree.devices);
        if (m_cameras.size() == tree.devices.size()) {
            m_triesLeft = 0;
        }
    }
    return m_cameras;
}

void UsbDiscovery::AskDevices(const std::vector<UsbVisionDevice>& devices) {
    ArvInterface* interface = arv_uv_interface_get_instance();
    if (!interface) {
        return; // Aravis was built without USB
    }
    arv_interface_update_device_list(interface);
    std::map<std::string, UsbCamera> cameras;
    std::set<std::string> taken; // sysfs folders
    for (unsigned int i = 0; i < arv_interface_get_n_devices(interface); ++i) {
        UsbCamera camera;
        camera.guid = Text(arv_interface_get_device_physical_id(interface, i));
        DeviceRecord& record = camera.record;
        record.technology = Technology::Usb3Vision;
        record.vendor = Text(arv_interface_get_device_vendor(interface, i));
        record.model = Text(arv_interface_get_device_model(interface, i));
        record.serial = Text(arv_interface_get_device_serial_nbr(interface, i));
        record.manufacturerInfo = Text(arv_interface_get_device_manufacturer_info(interface, i));
        record.id = "u3v-" + (camera.guid.empty() ? record.serial : camera.guid);
        // Aravis does not say where a device is plugged in; its strings do, and its place among equal ones.
        const auto device =
            std::find_if(devices.begin(), devices.end(), [&](const UsbVisionDevice& candidate) {
                return taken.count(candidate.path) == 0 && candidate.product == record.model &&
                       candidate.vendor == record.vendor && candidate.serial == record.serial;
            });
        if (device == devices.end()) {
            continue;
        }
        taken.insert(device->path);
        camera.sysfsPath = device->path;
        record.interfaceId = device->controllerId;
        record.speed = device->speed;
        cameras[record.id] = std::move(camera);
    }
    m_cameras = std::move(cameras);
}

} // namespace Norvane::Transport
