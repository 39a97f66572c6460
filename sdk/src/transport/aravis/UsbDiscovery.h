#pragma once

#include "transport/Transport.h"
#include "transport/aravis/UsbControllers.h"

#include <map>
#include <string>
#include <vector>

namespace Norvane::Transport {

struct UsbCamera {
    DeviceRecord record;
    std::string guid;
    std::string sysfsPath;
};

/// Finds USB3 Vision cameras. The kernel's tables say whether there is one at all; only when they have
/// changed does Aravis ask the devices who they are, so that an open camera is left in peace. Owned by the
/// transport, used by one thread at a time.
class UsbDiscovery {
public:
    /// The cameras by their identifier.
    const std::map<std::string, UsbCamera>& Scan(const UsbTree& tree);

private:
    void AskDevices(const std::vector<UsbVisionDevice>& devices);

    std::vector<UsbVisionDevice> m_asked;
    int m_triesLeft = 0;
    std::map<std::string, UsbCamera> m_cameras;
};

} // namespace Norvane::Transport
