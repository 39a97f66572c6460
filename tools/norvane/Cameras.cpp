#include "Cameras.h"

#include "Failure.h"

#include "norvane/genapi/GenApi.h"

#include <chrono>
#include <functional>
#include <thread>

using namespace Norvane::GenApi;

namespace {

constexpr std::chrono::milliseconds kPatience(2000);
constexpr std::chrono::milliseconds kPause(100);
/// A scan on the network takes at most 400 ms, after a pause of 50 ms.
constexpr std::chrono::milliseconds kSecondScan(500);

bool isTrue(INodeMap& map, const char* name) {
    CBooleanPtr node(map.GetNode(name));
    return node.IsValid() && IsReadable(node->GetAccessMode()) && node->GetValue();
}

std::optional<std::uint32_t> numberOf(INodeMap& map, const char* name) {
    CIntegerPtr node(map.GetNode(name));
    if (!node.IsValid() || !IsReadable(node->GetAccessMode())) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(node->GetValue());
}

std::optional<Subnet> subnetOf(INodeMap& map) {
    const auto address = numberOf(map, "GevInterfaceSubnetIPAddress");
    const auto mask = numberOf(map, "GevInterfaceSubnetMask");
    return address && mask ? std::optional(Subnet{*address & *mask, *mask}) : std::nullopt;
}

CameraSummary summarize(Norvane::ICameraBase& camera) {
    INodeMap& map = camera.GetTLDeviceNodeMap();
    CameraSummary summary;
    summary.number = std::to_string(camera.GetDeviceNumber());
    summary.serial = textOf(map, "DeviceID");
    summary.model = textOf(map, "DeviceModelName");
    summary.vendor = textOf(map, "DeviceVendorName");
    summary.userName = textOf(map, "DeviceUserID");
    summary.access = textOf(map, "DeviceAccessStatus");
    summary.type = textOf(map, "DeviceType");
    summary.address = textOf(map, "GevDeviceIPAddress");
    summary.wrongSubnet = isTrue(map, "GevDeviceIsWrongSubnet");
    summary.usable = !summary.wrongSubnet && !isTrue(map, "DeviceIsUnusable");
    return summary;
}

/// Asks until there is an answer, for as long as a slow device takes to be found.
template <class Handle>
Handle waitFor(const std::function<Handle()>& look) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        if (Handle found = look()) {
            return found;
        }
        if (std::chrono::steady_clock::now() >= end) {
            return {};
        }
        std::this_thread::sleep_for(kPause);
    }
}

} // namespace

std::string textOf(INodeMap& map, const char* name) {
    try {
        CValuePtr node(map.GetNode(name));
        return node.IsValid() && IsReadable(node->GetAccessMode()) ? node->ToString().str() : std::string();
    } catch (const Norvane::Exception&) {
        return {};
    }
}

std::vector<InterfaceSummary> summarizeInterfaces(Norvane::ISystem& system) {
    std::vector<InterfaceSummary> summaries;
    // The first list is quick; a camera that answers late is in the scan after it.
    system.GetInterfaces();
    std::this_thread::sleep_for(kSecondScan);
    const Norvane::InterfaceList interfaces = system.GetInterfaces();
    for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
        const Norvane::InterfacePtr interface = interfaces.GetByIndex(i);
        INodeMap& map = interface->GetTLNodeMap();
        InterfaceSummary summary{interface->GetInterfaceID(),  textOf(map, "InterfaceDisplayName"),
                                 textOf(map, "InterfaceType"), subnetOf(map),
                                 interface->IsUsable(),        {}};
        const Norvane::CameraList cameras = interface->GetCameras(false);
        for (unsigned int j = 0; j < cameras.GetSize(); ++j) {
            summary.cameras.push_back(summarize(*cameras.GetByIndex(j)));
        }
        summaries.push_back(std::move(summary));
    }
    return summaries;
}

Norvane::CameraPtr findCamera(Norvane::ISystem& system, const std::string& serial) {
    Norvane::CameraPtr found = waitFor<Norvane::CameraPtr>([&]() -> Norvane::CameraPtr {
        const Norvane::CameraList cameras = system.GetCameras();
        Norvane::CameraPtr byNumber;
        for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
            Norvane::CameraPtr camera = cameras.GetByIndex(i);
            if (textOf(camera->GetTLDeviceNodeMap(), "DeviceID") == serial) {
                return camera;
            }
            if (std::to_string(camera->GetDeviceNumber()) == serial) {
                byNumber = camera;
            }
        }
        return byNumber;
    });
    if (!found) {
        throw Failure(kNoDevice,
                      "there is no camera \"" + serial + "\"; \"norvane list\" shows those there are");
    }
    return found;
}

Norvane::InterfacePtr findInterface(Norvane::ISystem& system, const std::string& id) {
    const Norvane::InterfaceList interfaces = system.GetInterfaces();
    Norvane::InterfacePtr byName;
    unsigned int named = 0;
    for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
        Norvane::InterfacePtr interface = interfaces.GetByIndex(i);
        if (interface->GetInterfaceID() == id) {
            return interface;
        }
        if (textOf(interface->GetTLNodeMap(), "InterfaceDisplayName") == id) {
            byName = interface;
            ++named;
        }
    }
    if (named != 1) {
        throw Failure(kNoDevice,
                      "there is no interface \"" + id + "\"; \"norvane list\" shows those there are");
    }
    return byName;
}
