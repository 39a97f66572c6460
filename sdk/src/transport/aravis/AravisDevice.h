#pragma once

#include "transport/Transport.h"
#include "transport/aravis/DeviceLife.h"
#include "transport/aravis/DeviceTarget.h"
#include "transport/aravis/DeviceWorker.h"
#include "transport/aravis/OpenedDevice.h"

#include <memory>
#include <string>
#include <thread>

namespace Norvane::Transport {

/// An opened GigE Vision or USB3 Vision camera. All of Aravis's calls run on the device's worker, so that
/// none of the caller's waits is longer than about a second once the camera stopped answering; a camera that
/// is busy but answers discoveries is waited for. A watching thread notices within two seconds that a camera
/// has gone, and Aravis's heartbeat that control is lost; neither needs a GLib main loop. Owned by the core's
/// camera; any thread.
class AravisDevice final : public IDevice {
public:
    /// @throws Exception (AccessDenied, Io, Timeout).
    explicit AravisDevice(const DeviceTarget& target);
    ~AravisDevice() override;

    GenApi::EAccessMode GetAccessMode() const override;
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    std::string Description() override { return m_description; }
    Access CurrentAccess() const override { return m_access; }
    bool IsAlive() const override { return !m_life->IsLost(); }
    std::unique_ptr<IStream> OpenStream(const StreamSettings& settings) override;
    void SetLostHandler(std::function<void()> handler) override;

private:
    /// Runs work on the worker for at most about a second beyond the last sign of life.
    void Run(const std::string& what, std::function<void()> work,
             std::chrono::milliseconds maximum = std::chrono::milliseconds(10000));

    const DeviceTarget m_target;
    const std::shared_ptr<DeviceLife> m_life;
    const std::shared_ptr<DeviceWorker> m_worker;
    std::shared_ptr<OpenedDevice> m_opened;
    std::string m_description;
    Access m_access = Access::None;
    std::thread m_watcher;
};

} // namespace Norvane::Transport
