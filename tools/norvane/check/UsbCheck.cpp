#include "check/MachineChecks.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

constexpr const char* kTopic = "usb";
constexpr std::int64_t kSuperSpeed = 5000; // Mbit/s

/// The devices with a USB3 Vision control interface: class EF, subclass 05, protocol 00 (USB3 Vision 1.0,
/// 2.1).
std::set<std::string> usb3VisionDevices(const Machine& machine) {
    std::set<std::string> devices;
    for (const std::string& name : machine.entries("sys/bus/usb/devices")) {
        const std::string interface = "sys/bus/usb/devices/" + name + "/bInterface";
        if (name.find(':') != std::string::npos && machine.text(interface + "Class") == "ef" &&
            machine.text(interface + "SubClass") == "05" && machine.text(interface + "Protocol") == "00") {
            devices.insert(name.substr(0, name.find(':')));
        }
    }
    return devices;
}

/// Whether a root hub of the host speaks SuperSpeed.
bool hasUsb3(const Machine& machine) {
    const auto names = machine.entries("sys/bus/usb/devices");
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        return name.starts_with("usb") &&
               machine.number("sys/bus/usb/devices/" + name + "/speed").value_or(0) >= kSuperSpeed;
    });
}

void checkDevice(const Machine& machine, const std::string& device, Findings& findings) {
    const std::string folder = "sys/bus/usb/devices/" + device + "/";
    const std::string name = machine.text(folder + "product").value_or("camera") + " (USB " + device + ")";
    const auto add = [&](Weight weight, const std::string& text, const std::string& remedy = {}) {
        findings.push_back({weight, kTopic, name + " " + text, remedy});
    };
    char node[32];
    std::snprintf(node, sizeof node, "dev/bus/usb/%03d/%03d",
                  static_cast<int>(machine.number(folder + "busnum").value_or(0) % 1000),
                  static_cast<int>(machine.number(folder + "devnum").value_or(0) % 1000));
    if (machine.writable(node)) {
        add(Weight::Good, "may be opened.");
    } else {
        add(Weight::Limiting, std::string("may not be opened by this user (/") + node + " is not writable).",
            "Install the Debian package, which brings a udev rule, plug the camera in anew; over a remote "
            "shell also: sudo adduser $USER plugdev, and log in again");
    }
    if (const auto speed = machine.number(folder + "speed"); speed && *speed < kSuperSpeed) {
        add(Weight::Limiting,
            "runs at " + std::to_string(*speed) + " Mbit/s, USB 2: most image streams do not fit.",
            "Use a port and a cable of USB 3, without a hub of USB 2 between");
    }
    if (machine.text(folder + "power/control") == "auto") {
        add(Weight::Advice, "may be put to sleep between images.",
            "echo on | sudo tee /sys/bus/usb/devices/" + device + "/power/control");
    }
}

} // namespace

Findings checkUsb(const Machine& machine) {
    Findings findings;
    const auto devices = usb3VisionDevices(machine);
    for (const std::string& device : devices) {
        checkDevice(machine, device, findings);
    }
    if (!hasUsb3(machine)) {
        findings.push_back({Weight::Advice, kTopic,
                            "There is no USB 3 host controller for USB3 Vision cameras.",
                            "Plug one in, or give the virtual machine or container one"});
    }
    constexpr std::int64_t kEnoughMegabytes = 256;
    const auto memory = machine.number("sys/module/usbcore/parameters/usbfs_memory_mb");
    // 0 stands for no limit.
    if (memory && *memory != 0 && *memory < kEnoughMegabytes) {
        findings.push_back({devices.empty() ? Weight::Advice : Weight::Limiting, kTopic,
                            "The kernel gives all USB transfers " + std::to_string(*memory) +
                                " MB together (usbfs_memory_mb): a few images of one camera fill it.",
                            "echo 1000 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb"});
    }
    if (findings.empty()) {
        findings.push_back(
            {Weight::Good, kTopic, "There is no USB3 Vision camera, and nothing would limit one.", {}});
    }
    return findings;
}
