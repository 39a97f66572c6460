#pragma once

#include "base/Mutex.h"
#include "transport/aravis/DeviceLife.h"
#include "transport/aravis/GObjectPtr.h"

#include <memory>

namespace Norvane::Transport {

/// Hears when Aravis finds that we lost control of a device, and sees to it that the thread that finds it
/// never closes the device.
///
/// That is Aravis's heartbeat thread. It holds the device only while it tells, and only closing ends it: were
/// it the last to let go, it would wait for its own end, and GLib aborts the program. It may begin to tell at
/// any moment of the closing, also when GLib already holds the device for closed. So this is no handler of
/// the signal, which GLib disconnects in between, but the default one of the class.
///
/// To be made before the device is opened, so that it is older than the heartbeat thread.
class ControlWatch {
public:
    explicit ControlWatch(std::shared_ptr<DeviceLife> life) : m_life(std::move(life)) {}
    ControlWatch(const ControlWatch&) = delete;
    ControlWatch& operator=(const ControlWatch&) = delete;

    /// From now on `device` is watched, and keeps the watch until it is closed.
    static void Attach(std::shared_ptr<ControlWatch> watch, ArvDevice* device);
    /// Lets go of the watched device as the last that holds it but the thread that tells of lost control.
    void Close(GObjectPtr<ArvDevice> device) EXCLUDES(m_mutex);

private:
    static void OnControlLost(ArvDevice* device);
    void MarkLost(ArvDevice* device) EXCLUDES(m_mutex);

    const std::shared_ptr<DeviceLife> m_life;
    Mutex m_mutex;
    bool m_hasTold GUARDED_BY(m_mutex) = false;
    bool m_isClosing GUARDED_BY(m_mutex) = false;
};

} // namespace Norvane::Transport
