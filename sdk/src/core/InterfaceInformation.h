#pragma once

#include "core/DeviceInformation.h"
#include "core/InformationMap.h"
#include "transport/Transport.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Norvane::Core {

/// What is known of one interface: the latest scan's record and the cameras on it.
struct InterfaceView {
    struct Device {
        std::string id; ///< the transport's
        std::string serial, model;
        std::uint64_t number = 0;
        bool operator==(const Device&) const = default;
    };

    Transport::InterfaceRecord record;
    std::vector<Device> devices;
    std::int64_t selected = 0; ///< "DeviceSelector"

    /// The selected camera; null when there is none.
    const Device* Selected() const;
};

/// What the commands of an interface map do. Each returns at once.
struct InterfaceCommands {
    std::function<void()> updateList;
    std::function<void(const std::string& deviceId)> forceIp;
    std::function<bool()> forcing; ///< whether an address is being given at this moment
};

/// The transport-layer map of an interface (descriptions/InterfaceInformation.xml). Owned by its interface.
class InterfaceInformation : public InformationMap<InterfaceView> {
public:
    InterfaceInformation(const InterfaceView& view, InterfaceCommands commands);
};

} // namespace Norvane::Core
