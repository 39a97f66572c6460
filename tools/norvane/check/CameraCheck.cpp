#include "check/MachineChecks.h"

#include <map>

namespace {

constexpr const char* kTopic = "cameras";

std::string nameOf(const CameraSummary& camera) {
    return camera.number + " " + camera.model;
}

Finding checkCamera(const CameraSummary& camera, const InterfaceSummary& interface) {
    const std::string what = nameOf(camera) + (camera.address.empty() ? "" : " at " + camera.address) +
                             " on " + interface.id +
                             (interface.subnet ? " (" + interface.subnet->text() + ")" : "");
    if (camera.wrongSubnet) {
        return {Weight::Limiting, kTopic, what + " has an address of another subnet and cannot be opened.",
                "norvane execute " + camera.number +
                    " GevDeviceAutoForceIP --map tl (as does Auto Force IP in the viewer), or give the "
                    "adapter an address in the camera's subnet"};
    }
    if (!camera.usable || camera.access == "NoAccess") {
        return {Weight::Limiting, kTopic, what + " is seen but cannot be opened.",
                "Another program may hold it; close it there, or plug the camera in anew"};
    }
    if (camera.access == "ReadOnly") {
        return {Weight::Advice, kTopic,
                what + " is in use by another program: its features can be read, and nothing else.",
                "Close it there"};
    }
    return {Weight::Good, kTopic, what + " can be opened.", {}};
}

} // namespace

Findings checkCameras(const std::vector<InterfaceSummary>& interfaces) {
    Findings findings;
    std::map<std::string, std::string> byAddress;
    for (const InterfaceSummary& interface : interfaces) {
        for (const CameraSummary& camera : interface.cameras) {
            findings.push_back(checkCamera(camera, interface));
            if (camera.address.empty()) {
                continue;
            }
            const auto [other, isNew] = byAddress.emplace(camera.address, nameOf(camera));
            if (!isNew) {
                findings.push_back({Weight::Limiting, kTopic,
                                    other->second + " and " + nameOf(camera) + " both have the address " +
                                        camera.address + ": what is meant for one may reach the other.",
                                    "Unplug one of them, and give the other an address of its own"});
            }
        }
    }
    if (findings.empty()) {
        return {{Weight::Advice, kTopic, "No camera answers.",
                 "Check power and cable; what is said above of adapters, firewall and USB may be the cause"}};
    }
    return findings;
}
