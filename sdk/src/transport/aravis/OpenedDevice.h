#pragma once

#include "transport/aravis/DeviceLife.h"
#include "transport/aravis/GObjectPtr.h"

#include <memory>

namespace Norvane::Transport {

/// Aravis's device with the connection of its control-lost signal. Streams hold it too, as they need the
/// device to their end. The last owner must let go on the device's worker: closing talks to the camera.
class OpenedDevice {
public:
    OpenedDevice(GObjectPtr<ArvDevice> device, std::shared_ptr<DeviceLife> life);
    /// The signal is emitted on Aravis's heartbeat thread, which holds the device meanwhile. Were it the last
    /// to let go, it would wait for its own end; so this waits until nobody else holds the device.
    ~OpenedDevice();
    OpenedDevice(const OpenedDevice&) = delete;
    OpenedDevice& operator=(const OpenedDevice&) = delete;

    ArvDevice* Get() const { return m_device.get(); }

private:
    GObjectPtr<ArvDevice> m_device;
    gulong m_handler;
};

} // namespace Norvane::Transport
