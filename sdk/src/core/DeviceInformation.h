#pragma once

#include "core/InformationMap.h"
#include "transport/Transport.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace Norvane::Core {

/// What is known of one camera: the latest scan's record and what the library makes of it.
struct DeviceView {
    Transport::DeviceRecord record;
    std::uint64_t number = 0;
    bool wrongSubnet = false;
    std::uint64_t linkSpeedMbps = 0; ///< of the interface, 0 when unknown
    /// How the camera is open here; nothing while it is closed.
    std::optional<Transport::Access> openedWith;
};

/// True for a GigE Vision camera whose address does not lie in the network of its interface.
bool IsOnWrongSubnet(const Transport::DeviceRecord& device, const Transport::InterfaceRecord& interface);

/// The transport-layer map of a camera (descriptions/DeviceInformation.xml). Owned by its camera.
class DeviceInformation : public InformationMap<DeviceView> {
public:
    /// `forceIp` starts giving the camera an address; `forcing` tells whether that goes on.
    DeviceInformation(const DeviceView& view, std::function<void()> forceIp, std::function<bool()> forcing);
};

} // namespace Norvane::Core
