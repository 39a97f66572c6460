#include "core/Acquisition.h"

#include "core/CameraFeatures.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <utility>

namespace Norvane::Core {

Acquisition::Acquisition(std::string cameraName, StreamParameters& parameters)
    : m_cameraName(std::move(cameraName)), m_parameters(parameters) {}

Acquisition::~Acquisition() {
    End(false);
}

void Acquisition::Reserve() {
    MutexLock lock(m_mutex);
    if (m_state != State::Idle) {
        throw Exception(Error::ResourceInUse, m_cameraName + " is streaming already");
    }
    m_state = State::Starting;
    m_aborted = false;
}

void Acquisition::Begin(std::shared_ptr<Transport::IDevice> device, std::shared_ptr<GenApi::INodeMap> map) {
    Run run{std::move(device), std::move(map), nullptr};
    try {
        Open(run);
        StartCamera(*run.map);
    } catch (...) {
        // A handler that ends acquisition meanwhile must not wait for this thread, which waits for it below.
        SetState(State::Stopping);
        Close(run);
        SetState(State::Idle);
        throw;
    }
    SetState(State::Streaming);
}

void Acquisition::Open(Run& run) {
    LockStreamFeatures(*run.map, true);
    const Transport::StreamSettings settings =
        m_parameters.Settings(PayloadSize(*run.map), ImagesPerSecond(*run.map));
    DispatchSettings dispatch;
    dispatch.cameraName = m_cameraName;
    dispatch.newestOnly = m_parameters.Handling() == StreamParameters::HandlingMode::NewestOnly;
    dispatch.queueLength = settings.bufferCount;

    std::unique_ptr<Transport::IStream> stream = run.device->OpenStream(settings);
    std::shared_ptr<ImageDispatcher> previous;
    {
        MutexLock lock(m_mutex);
        previous.swap(m_retired);
    }
    run.dispatcher = std::make_shared<ImageDispatcher>(dispatch, std::move(stream), m_handlers, *run.map,
                                                       std::move(previous));
    bool lost = false;
    {
        MutexLock lock(m_mutex);
        m_run = run;
        lost = m_aborted;
    }
    // The dispatcher lives until Close, which detaches first.
    m_parameters.Attach(run.dispatcher->Stream(), settings.bufferCount, [dispatcher = run.dispatcher.get()] {
        StreamParameters::Occupancy occupancy;
        occupancy.waiting = static_cast<std::int64_t>(dispatcher->Waiting());
        occupancy.held = dispatcher->Held();
        return occupancy;
    });
    if (lost) {
        throw Exception(Error::Io, m_cameraName + " was lost while acquisition began");
    }
}

bool Acquisition::End(bool tellCamera) {
    Run run;
    {
        MutexLock lock(m_mutex);
        while (m_state == State::Starting) {
            m_changed.wait(lock);
        }
        if (m_state == State::Stopping && !(m_run.dispatcher && m_run.dispatcher->IsOwnThread())) {
            while (m_state == State::Stopping) {
                m_changed.wait(lock);
            }
            return true;
        }
        if (m_state != State::Streaming) {
            return m_state == State::Stopping;
        }
        m_state = State::Stopping;
        run = m_run;
        tellCamera = tellCamera && !m_aborted;
    }
    run.dispatcher->Abort();
    if (tellCamera) {
        StopCamera(*run.map, m_cameraName);
    }
    Close(run);
    SetState(State::Idle);
    return true;
}

void Acquisition::Close(Run& run) {
    if (run.dispatcher) {
        run.dispatcher->Stop([this] { m_parameters.Detach(); });
    }
    LockStreamFeatures(*run.map, false);
    MutexLock lock(m_mutex);
    if (run.dispatcher && run.dispatcher->IsOwnThread()) {
        m_retired = run.dispatcher;
    }
    Run former;
    std::swap(former, m_run);
    lock.unlock();
}

void Acquisition::Abort() {
    std::shared_ptr<ImageDispatcher> dispatcher;
    {
        MutexLock lock(m_mutex);
        m_aborted = true;
        dispatcher = m_run.dispatcher;
    }
    if (dispatcher) {
        dispatcher->Abort();
    }
}

bool Acquisition::IsStreaming() const {
    MutexLock lock(m_mutex);
    return (m_state == State::Starting || m_state == State::Streaming) && !m_aborted;
}

ImagePtr Acquisition::Next(std::uint64_t timeoutMs) {
    std::shared_ptr<ImageDispatcher> dispatcher;
    {
        MutexLock lock(m_mutex);
        while (m_state == State::Starting) {
            m_changed.wait(lock);
        }
        if (m_aborted) {
            throw Exception(Error::Abort, m_cameraName + " was lost, so no further image comes");
        }
        if (m_state != State::Streaming) {
            throw Exception(Error::NotInitialized,
                            m_cameraName + " is not streaming; begin acquisition before asking for an image");
        }
        dispatcher = m_run.dispatcher;
    }
    if (!m_handlers.IsEmpty()) {
        throw Exception(Error::ResourceInUse, m_cameraName +
                                                  " hands its images to an image handler; unregister "
                                                  "it to ask for images one by one");
    }
    return dispatcher->Next(timeoutMs);
}

bool Acquisition::AddHandler(ImageEventHandler& handler) {
    if (!m_handlers.Add(handler)) {
        return false;
    }
    std::shared_ptr<ImageDispatcher> dispatcher;
    {
        MutexLock lock(m_mutex);
        dispatcher = m_run.dispatcher;
    }
    if (dispatcher) {
        dispatcher->OnHandlersChanged();
    }
    return true;
}

void Acquisition::SetState(State state) {
    {
        MutexLock lock(m_mutex);
        m_state = state;
    }
    m_changed.notify_all();
}

} // namespace Norvane::Core
