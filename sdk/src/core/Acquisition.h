#pragma once

#include "base/Mutex.h"
#include "core/HandlerList.h"
#include "core/ImageDispatcher.h"
#include "core/StreamParameters.h"
#include "transport/Transport.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Norvane::Core {

/// Starts and stops the stream of one camera, and knows its image handlers. Owned by the camera, called on
/// any thread; the node map, the device and handlers are called with no lock held.
class Acquisition {
public:
    Acquisition(std::string cameraName, StreamParameters& parameters);
    ~Acquisition();
    Acquisition(const Acquisition&) = delete;
    Acquisition& operator=(const Acquisition&) = delete;

    /// Claims the stream for the caller, who must call Begin next.
    /// @throws Exception (ResourceInUse) when it runs or is being started or stopped.
    void Reserve() EXCLUDES(m_mutex);
    /// Opens the stream of `device` and starts the camera; both must live until End().
    void Begin(std::shared_ptr<Transport::IDevice> device, std::shared_ptr<GenApi::INodeMap> map)
        EXCLUDES(m_mutex);
    /// Stops the camera, if `tellCamera`, and closes the stream; returns after the last call of a handler,
    /// except when it is called by one. False when nothing was streaming.
    bool End(bool tellCamera) EXCLUDES(m_mutex);
    /// The camera is lost: wakes whoever waits for an image, at once. End() must follow.
    void Abort() EXCLUDES(m_mutex);

    bool IsStreaming() const EXCLUDES(m_mutex);
    /// @throws Exception (NotInitialized) when nothing is streaming, (ResourceInUse) when a handler gets the
    ///         images, (Timeout), (Abort).
    ImagePtr Next(std::uint64_t timeoutMs) EXCLUDES(m_mutex);

    bool AddHandler(ImageEventHandler& handler) EXCLUDES(m_mutex);
    bool RemoveHandler(const EventHandler& handler) { return m_handlers.Remove(handler); }

private:
    enum class State { Idle, Starting, Streaming, Stopping };

    /// One stream from its opening to its end.
    struct Run {
        std::shared_ptr<Transport::IDevice> device;
        std::shared_ptr<GenApi::INodeMap> map;
        std::shared_ptr<ImageDispatcher> dispatcher;
    };

    void Open(Run& run) EXCLUDES(m_mutex);
    void Close(Run& run) EXCLUDES(m_mutex);
    void SetState(State state) EXCLUDES(m_mutex);

    const std::string m_cameraName;
    StreamParameters& m_parameters;
    HandlerList<ImageEventHandler> m_handlers;

    mutable Mutex m_mutex;
    ConditionVariable m_changed; ///< m_state
    State m_state GUARDED_BY(m_mutex) = State::Idle;
    bool m_aborted GUARDED_BY(m_mutex) = false;
    Run m_run GUARDED_BY(m_mutex);
    /// The dispatcher of a stream that a handler ended; its thread may still be in that handler.
    std::shared_ptr<ImageDispatcher> m_retired GUARDED_BY(m_mutex);
};

} // namespace Norvane::Core
