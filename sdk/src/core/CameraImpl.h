#pragma once

#include "base/Mutex.h"
#include "core/Acquisition.h"
#include "core/DeviceInformation.h"
#include "core/DeviceMaps.h"
#include "core/Services.h"
#include "core/StreamParameters.h"
#include "norvane/Camera.h"
#include "norvane/Exception.h"
#include "transport/Transport.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Norvane::Core {

/// One camera, from its first sight until the system is released; it may leave and come back meanwhile.
/// Owned by the registry, which calls it on the discovery thread; program code calls it on any thread. The
/// device, node maps and handlers are called with no lock of this class held.
class CameraImpl final : public Camera, public std::enable_shared_from_this<CameraImpl> {
public:
    using Clock = std::chrono::steady_clock;

    CameraImpl(Services services, const DeviceView& view);
    ~CameraImpl() override;

    bool IsValid() const override;
    bool IsInitialized() const override;
    void Init() override;
    void DeInit() override;
    bool IsStreaming() const override { return m_acquisition.IsStreaming(); }
    GenApi::EAccessMode GetAccessMode() const override;
    GenApi::INodeMap& GetNodeMap() override;
    GenApi::INodeMap& GetTLDeviceNodeMap() override { return m_information.Map(); }
    GenApi::INodeMap& GetTLStreamNodeMap() override { return m_parameters.Map(); }
    std::uint64_t GetDeviceNumber() const override { return m_number; }
    std::string GetUniqueID() const override;
    void BeginAcquisition() override;
    void EndAcquisition() override;
    ImagePtr GetNextImage(std::uint64_t timeoutMs, std::uint64_t streamIndex) override;
    void RegisterEventHandler(EventHandler& handler) override;
    void UnregisterEventHandler(EventHandler& handler) override;

    // For the registry.

    /// A scan that began at `scanStart` saw the camera. False when that was before the camera was lost, so
    /// that the scan says nothing about it.
    bool Arrive(const DeviceView& seen, Clock::time_point scanStart) EXCLUDES(m_mutex);
    /// The latest scan did not see the camera.
    void Leave() EXCLUDES(m_mutex);
    /// Whether the camera was lost since the last call, in which case it counts as gone in between.
    bool TakeLoss() EXCLUDES(m_mutex);
    /// Open, and answering: a scan that misses it means nothing.
    bool IsHeld() const EXCLUDES(m_mutex);
    std::string InterfaceId() const { return m_information.Get().record.interfaceId; }
    /// What this camera is on its interface's map.
    DeviceView View() const { return m_information.Get(); }
    /// Lets polling time pass while the camera is open. Called by the poll thread.
    void Poll(std::int64_t elapsedMs) EXCLUDES(m_mutex);
    /// Ends everything; the camera cannot be opened again.
    void Shutdown() EXCLUDES(m_mutex);

private:
    enum class State { Closed, Opening, Open, Closing };

    void StartOpening() REQUIRES(m_mutex);
    /// On a task thread.
    void Open(std::uint64_t attempt) EXCLUDES(m_mutex);
    /// Ends acquisition and takes the device away from the node maps; FinishClosing must follow. False when
    /// the camera is not open.
    bool BeginClosing(bool tellCamera) EXCLUDES(m_mutex);
    /// Closes the device itself, which may wait for it.
    void FinishClosing() EXCLUDES(m_mutex);
    void OnLost(std::uint64_t attempt) EXCLUDES(m_mutex);
    void SetOpenedWith(std::optional<Transport::Access> access);
    std::shared_ptr<Transport::IDevice> Device() const EXCLUDES(m_mutex);

    const std::uint64_t m_number;
    const std::string m_deviceId;
    const std::string m_name; ///< stands in log lines and errors
    const std::shared_ptr<std::atomic<int>> m_forcing = std::make_shared<std::atomic<int>>(0);

    DeviceInformation m_information;
    StreamParameters m_parameters;
    Acquisition m_acquisition;
    DeviceMaps m_maps; ///< used by the opening task, of which there is one at a time

    mutable Mutex m_mutex;
    ConditionVariable m_changed; ///< m_state
    Services m_services GUARDED_BY(m_mutex);
    State m_state GUARDED_BY(m_mutex) = State::Closed;
    bool m_valid GUARDED_BY(m_mutex) = true;
    bool m_shutdown GUARDED_BY(m_mutex) = false;
    std::uint64_t m_attempt GUARDED_BY(m_mutex) = 0; ///< counts openings
    bool m_abandoned GUARDED_BY(m_mutex) = false;    ///< closed again while still opening
    bool m_lost GUARDED_BY(m_mutex) = false;         ///< the device of this opening
    bool m_lossPending GUARDED_BY(m_mutex) = false;
    Clock::time_point m_lostAt GUARDED_BY(m_mutex);
    std::optional<Exception> m_failure GUARDED_BY(m_mutex); ///< why the last opening failed
    std::shared_ptr<Transport::IDevice> m_device GUARDED_BY(m_mutex);
    DeviceMaps::Entry m_current GUARDED_BY(m_mutex);
};

} // namespace Norvane::Core
