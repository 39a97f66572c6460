#include "transport/aravis/DeviceTarget.h"

#include "transport/aravis/GvcpSocket.h"

#include <unistd.h>

namespace Norvane::Transport {

bool IsThere(const DeviceTarget& target) {
    if (target.technology == Technology::Usb3Vision) {
        return target.sysfsPath.empty() || ::access(target.sysfsPath.c_str(), F_OK) == 0;
    }
    return AnswersDiscovery(target.adapterAddress, target.deviceAddress, std::chrono::milliseconds(400));
}

} // namespace Norvane::Transport
