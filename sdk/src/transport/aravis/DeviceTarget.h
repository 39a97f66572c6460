#pragma once

#include "transport/Transport.h"

#include <cstdint>
#include <string>

namespace Norvane::Transport {

/// What it takes to reach one camera, as the latest scan left it.
struct DeviceTarget {
    std::string label; ///< for errors and log lines: model, serial number and address
    Technology technology = Technology::GigEVision;
    std::uint32_t adapterAddress = 0; ///< host order
    std::uint32_t deviceAddress = 0;  ///< host order
    std::string guid;                 ///< USB3 Vision: the device's global unique identifier
    std::string sysfsPath;            ///< USB3 Vision: the device's folder below /sys
};

/// Whether the device still answers (GigE Vision) or is still plugged in (USB3 Vision); takes at most 400 ms.
bool IsThere(const DeviceTarget& target);

} // namespace Norvane::Transport
