#pragma once

#include "base/Mutex.h"
#include "core/Discovery.h"
#include "core/EventQueue.h"
#include "core/Registry.h"
#include "core/Tasks.h"
#include "norvane/System.h"
#include "transport/Transport.h"

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace Norvane::Core {

/// The camera system over given transports: joins discovery, the registry, events, background jobs and
/// polling, and takes them down in the order that lets none of them meet a dead one. It must not be destroyed
/// on a thread of its own.
class SystemImpl final : public ISystem {
public:
    explicit SystemImpl(std::vector<std::unique_ptr<Transport::ITransport>> transports);
    ~SystemImpl() override;
    SystemImpl(const SystemImpl&) = delete;
    SystemImpl& operator=(const SystemImpl&) = delete;

    LibraryVersion GetLibraryVersion() const override;
    InterfaceList GetInterfaces(bool update) override;
    CameraList GetCameras(bool update) override;
    void RegisterEventHandler(EventHandler& handler) override;
    void UnregisterEventHandler(EventHandler& handler) override;
    void RegisterInterfaceEventHandler(EventHandler& handler, bool updateInterfaces) override;
    void UnregisterInterfaceEventHandler(EventHandler& handler) override;

private:
    void AwaitPicture(bool update);
    void RunPolling() EXCLUDES(m_pollMutex);

    const std::chrono::steady_clock::time_point m_firstListBy;
    std::vector<std::shared_ptr<Transport::ITransport>> m_transports;
    const std::shared_ptr<Tasks> m_tasks = std::make_shared<Tasks>();
    const std::shared_ptr<DiscoveryBell> m_bell = std::make_shared<DiscoveryBell>();
    EventQueue m_events;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<Discovery> m_discovery;

    Mutex m_pollMutex;
    ConditionVariable m_pollEnd;
    bool m_pollStopping GUARDED_BY(m_pollMutex) = false;
    std::thread m_pollThread;
};

} // namespace Norvane::Core
