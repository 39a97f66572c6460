#pragma once

#include "core/SwitchablePort.h"
#include "norvane/genapi/NodeMapFactory.h"
#include "transport/Transport.h"

#include <memory>
#include <string>
#include <vector>

namespace Norvane::Core {

/// The device node maps of one camera. A camera opened again with the description that it had keeps its map;
/// another description (new firmware) makes another map, and the former ones stay alive because program code
/// may still hold their nodes. Owned by the camera, used by one opening at a time.
class DeviceMaps {
public:
    struct Entry {
        std::shared_ptr<GenApi::INodeMap> map;
        std::shared_ptr<SwitchablePort> port;
    };

    /// The map for `device`, with its port led to it and nothing cached. A description that cannot be read
    /// costs a log line and gives an empty map, so that the program treats the camera as one without
    /// features.
    Entry Connect(const std::string& deviceName, const std::shared_ptr<Transport::IDevice>& device);

private:
    struct Known {
        std::string description;
        Entry entry;
    };

    std::vector<Known> m_known;
};

} // namespace Norvane::Core
