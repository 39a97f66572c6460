#pragma once

#include "transport/aravis/ControlWatch.h"
#include "transport/aravis/GObjectPtr.h"

#include <memory>

namespace Norvane::Transport {

/// Aravis's device, which is watched for a loss of control. Streams hold it too, as they need the device to
/// their end. The last owner must let go on the device's worker: closing talks to the camera.
class OpenedDevice {
public:
    /// @param watch  made before the device was opened.
    OpenedDevice(GObjectPtr<ArvDevice> device, std::shared_ptr<ControlWatch> watch);
    ~OpenedDevice();
    OpenedDevice(const OpenedDevice&) = delete;
    OpenedDevice& operator=(const OpenedDevice&) = delete;

    ArvDevice* Get() const { return m_device.get(); }

private:
    GObjectPtr<ArvDevice> m_device;
    std::shared_ptr<ControlWatch> m_watch;
};

} // namespace Norvane::Transport
