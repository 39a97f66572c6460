#include "transport/aravis/UsbControllers.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

namespace Norvane::Transport {
namespace {

namespace fs = std::filesystem;

constexpr int kSuperSpeedMbps = 5000;

std::string ReadLine(const fs::path& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

int ReadSpeed(const fs::path& device) {
    return std::atoi(ReadLine(device / "speed").c_str()); // "1.5" for low speed becomes 1
}

std::string SpeedName(int mbps) {
    if (mbps >= 10000) {
        return "SuperSpeedPlus";
    }
    if (mbps >= kSuperSpeedMbps) {
        return "SuperSpeed";
    }
    if (mbps >= 480) {
        return "HighSpeed";
    }
    if (mbps >= 12) {
        return "FullSpeed";
    }
    return mbps > 0 ? "LowSpeed" : "";
}

/// The entries of a folder with links resolved; none when there is no such folder.
std::map<std::string, fs::path> Resolve(const fs::path& folder) {
    std::map<std::string, fs::path> result;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        const fs::path target = fs::canonical(entry.path(), error);
        if (!error) {
            result[entry.path().filename().string()] = target;
        }
    }
    return result;
}

bool IsVisionControlInterface(const fs::path& interface) {
    return ReadLine(interface / "bInterfaceClass") == "ef" &&
           ReadLine(interface / "bInterfaceSubClass") == "05" &&
           ReadLine(interface / "bInterfaceProtocol") == "00";
}

} // namespace

UsbTree ReadUsbTree(const std::string& sysfs) {
    UsbTree tree;
    const auto entries = Resolve(fs::path(sysfs) / "bus/usb/devices");
    std::map<fs::path, std::string> controllers; // folder of the controller to interface identifier

    // A controller has one root hub for each speed it serves; one of them at SuperSpeed makes it a USB 3 one.
    for (const auto& [name, path] : entries) {
        if (name.rfind("usb", 0) != 0 || ReadSpeed(path) < kSuperSpeedMbps) {
            continue;
        }
        const fs::path controller = path.parent_path();
        const std::string address = controller.filename().string();
        if (controllers.emplace(controller, "usb-" + address).second) {
            InterfaceRecord record;
            record.id = "usb-" + address;
            record.displayName = "USB 3 Host Controller (" + address + ")";
            record.technology = Technology::Usb3Vision;
            record.linkSpeedMbps = static_cast<std::uint64_t>(ReadSpeed(path));
            tree.controllers.push_back(std::move(record));
        }
    }

    for (const auto& [name, path] : entries) {
        // An interface is named like "2-1:1.0", and its device is the folder above it.
        if (name.find(':') == std::string::npos || !IsVisionControlInterface(path)) {
            continue;
        }
        const fs::path device = path.parent_path();
        const auto controller =
            std::find_if(controllers.begin(), controllers.end(), [&](const auto& candidate) {
                const std::string folder = candidate.first.string() + "/";
                return device.string().compare(0, folder.size(), folder) == 0;
            });
        if (controller == controllers.end()) {
            continue; // on a controller that has no USB 3 at all
        }
        UsbVisionDevice found;
        found.path = device.string();
        found.controllerId = controller->second;
        found.vendor = ReadLine(device / "manufacturer");
        found.product = ReadLine(device / "product");
        found.serial = ReadLine(device / "serial");
        found.speed = SpeedName(ReadSpeed(device));
        tree.devices.push_back(std::move(found));
    }
    return tree;
}

} // namespace Norvane::Transport
