#include "core/SystemImpl.h"

#include "core/LibraryThread.h"
#include "core/Version.h"
#include "norvane/Log.h"
#include "norvane/genapi/Prefetch.h"

#include <iterator>
#include <string>
#include <utility>

namespace Norvane::Core {
namespace {

using Clock = std::chrono::steady_clock;

/// How long the first list waits for the first scan.
constexpr std::chrono::milliseconds kFirstListPatience{1500};
constexpr std::chrono::milliseconds kPollPeriod{100};

} // namespace

SystemImpl::SystemImpl(std::vector<std::unique_ptr<Transport::ITransport>> transports)
    : m_firstListBy(Clock::now() + kFirstListPatience),
      m_transports(std::make_move_iterator(transports.begin()), std::make_move_iterator(transports.end())) {
    std::vector<Services> services;
    for (const std::shared_ptr<Transport::ITransport>& transport : m_transports) {
        services.push_back({transport, m_tasks, [bell = m_bell] { bell->Ring(); }});
    }
    m_registry = std::make_unique<Registry>(std::move(services), m_events);
    m_discovery = std::make_unique<Discovery>(m_transports, m_bell,
                                              [this](const Picture& picture) { m_registry->Apply(picture); });
    m_pollThread = StartThread("norvane-poll", [this] { RunPolling(); });
}

SystemImpl::~SystemImpl() {
    m_discovery->Stop();
    m_events.Stop();
    {
        MutexLock lock(m_pollMutex);
        m_pollStopping = true;
    }
    m_pollEnd.notify_all();
    m_pollThread.join();
    m_registry->Shutdown();
    GenApi::Prefetch::AwaitGivenUp(); // a device must not outlive its transport
    m_tasks->Finish();
    if (const std::size_t handles = m_registry->CountHandles()) {
        Log(LogLevel::Warning, "the camera system was released; handles to cameras or interfaces that are "
                               "still held: " +
                                   std::to_string(handles) + ", no longer valid");
    }
}

LibraryVersion SystemImpl::GetLibraryVersion() const {
    return CurrentLibraryVersion();
}

void SystemImpl::AwaitPicture(bool update) {
    m_discovery->WaitForFirst(m_firstListBy);
    if (update) {
        m_discovery->Request();
    }
}

InterfaceList SystemImpl::GetInterfaces(bool update) {
    AwaitPicture(update);
    return InterfaceList(m_registry->Interfaces());
}

CameraList SystemImpl::GetCameras(bool update) {
    AwaitPicture(update);
    return CameraList(m_registry->Cameras());
}

void SystemImpl::RegisterEventHandler(EventHandler& handler) {
    m_registry->AddSystemHandler(handler);
}

void SystemImpl::UnregisterEventHandler(EventHandler& handler) {
    m_registry->RemoveSystemHandler(handler);
}

void SystemImpl::RegisterInterfaceEventHandler(EventHandler& handler, bool updateInterfaces) {
    m_registry->AddDeviceHandler(handler);
    if (updateInterfaces) {
        m_discovery->Request();
    }
}

void SystemImpl::UnregisterInterfaceEventHandler(EventHandler& handler) {
    m_registry->RemoveDeviceHandler(handler);
}

void SystemImpl::RunPolling() {
    Clock::time_point last = Clock::now();
    MutexLock lock(m_pollMutex);
    while (!m_pollStopping) {
        m_pollEnd.wait_until(lock, last + kPollPeriod);
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - last);
        if (m_pollStopping || elapsed < kPollPeriod) {
            continue;
        }
        last += elapsed;
        lock.unlock();
        m_registry->Poll(elapsed.count());
        lock.lock();
    }
}

} // namespace Norvane::Core
