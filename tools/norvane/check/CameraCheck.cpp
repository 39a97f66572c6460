#include "check/Adapters.h"
#include "check/MachineChecks.h"

#include <algorithm>

namespace {

/// The adapter in whose subnet an address lies, as text; empty when there is none.
std::string reachedThrough(const std::vector<Adapter>& adapters, std::uint32_t address) {
    for (const Adapter& adapter : adapters) {
        for (const Subnet& subnet : adapter.subnets) {
            if (subnet.contains(address)) {
                return adapter.name + " (" + subnet.text() + ")";
            }
        }
    }
    return {};
}

} // namespace

Findings checkCameras(const Machine& machine, const std::vector<SeenCamera>& cameras) {
    constexpr const char* kTopic = "cameras";
    if (cameras.empty()) {
        return {{Weight::Advice, kTopic, "No camera answers.",
                 "Check power and cable; what is said above of adapters, firewall and USB may be the cause"}};
    }
    const std::vector<Adapter> adapters = readAdapters(machine);
    Findings findings;
    for (const SeenCamera& camera : cameras) {
        const auto address = parseAddress(camera.address);
        const std::string through = address ? reachedThrough(adapters, *address) : std::string();
        const std::string where = (camera.address.empty() ? "" : " at " + camera.address) +
                                  (through.empty() ? "" : " through " + through);
        if (camera.usable) {
            findings.push_back({Weight::Good, kTopic, camera.name + where + " can be reached.", {}});
        } else if (address && through.empty()) {
            findings.push_back(
                {Weight::Limiting, kTopic,
                 camera.name + where + " is on no subnet of this machine and cannot be opened.",
                 "Give it an address: Auto Force IP in the viewer's menu of the camera, or an adapter "
                 "address in the camera's subnet"});
        } else {
            findings.push_back({Weight::Limiting, kTopic,
                                camera.name + where + " is seen but cannot be opened.",
                                "Another program may hold it; close it there, or plug the camera in anew"});
        }
    }
    return findings;
}
