#pragma once

#include "base/Mutex.h"
#include "core/ChunkReader.h"
#include "core/HandlerList.h"
#include "norvane/Image.h"
#include "transport/Transport.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace Norvane::Core {

/// What one stream's images pass on their way to the program.
struct DispatchSettings {
    std::string cameraName;
    bool newestOnly = false;     ///< drop all but the newest frame that waits
    std::size_t queueLength = 1; ///< images that may wait for Next()
};

/// Takes frames from one stream on a thread of its own, makes images of them, and calls the image handlers,
/// or, where there is none, keeps them for Next(). It takes no frame while the program is behind: those wait
/// in the stream, which counts what it has no buffer for as under-runs. Owned by the camera's acquisition.
class ImageDispatcher {
public:
    /// `previous` is a former dispatcher whose last handler call may go on; this one waits for its end before
    /// it calls a handler, so that calls never overlap. May be null.
    ImageDispatcher(DispatchSettings settings, std::unique_ptr<Transport::IStream> stream,
                    HandlerList<ImageEventHandler>& handlers, GenApi::INodeMap& map,
                    std::shared_ptr<ImageDispatcher> previous);
    /// As Stop().
    ~ImageDispatcher();
    ImageDispatcher(const ImageDispatcher&) = delete;
    ImageDispatcher& operator=(const ImageDispatcher&) = delete;

    const Transport::IStream& Stream() const { return *m_stream; }

    /// Waits for the next image. @throws Exception (Timeout), (Abort) once Abort() was called.
    ImagePtr Next(std::uint64_t timeoutMs) EXCLUDES(m_mutex);
    /// Wakes whoever waits and drops the images that wait; no handler call starts any more. Any thread.
    void Abort() EXCLUDES(m_mutex);
    /// Abort(), then waits for the last handler call, except when it is called by a handler, and then
    /// `beforeClosing` runs and the stream is closed.
    void Stop(const std::function<void()>& beforeClosing = nullptr) EXCLUDES(m_mutex);
    bool IsOwnThread() const { return std::this_thread::get_id() == m_threadId; }
    /// Called when a handler was registered.
    void OnHandlersChanged() { m_changed.notify_all(); }

    std::size_t Waiting() const EXCLUDES(m_mutex);
    /// Images that the program has and has not released.
    std::int64_t Held() const { return *m_outstanding - static_cast<std::int64_t>(Waiting()); }

private:
    void Run() EXCLUDES(m_mutex);
    /// Waits until an image can be taken from the stream; false when the dispatcher ends.
    bool WaitForRoom() EXCLUDES(m_mutex);
    ImagePtr TakeImage();
    ImagePtr MakeImage(Transport::Frame& frame);
    void Deliver(const ImagePtr& image) EXCLUDES(m_mutex);
    void CallHandlers(const ImagePtr& image);
    void Join();

    const DispatchSettings m_settings;
    HandlerList<ImageEventHandler>& m_handlers;
    std::unique_ptr<Transport::IStream> m_stream;
    std::unique_ptr<ChunkReader> m_chunks;
    std::shared_ptr<ImageDispatcher> m_previous; ///< used by the own thread only
    std::shared_ptr<std::atomic<std::int64_t>> m_outstanding = std::make_shared<std::atomic<std::int64_t>>(0);

    mutable Mutex m_mutex;
    ConditionVariable m_changed; ///< the queue, m_aborted, or the handlers
    std::deque<ImagePtr> m_queue GUARDED_BY(m_mutex);
    std::atomic<bool> m_aborted{false};
    bool m_complained = false; ///< own thread: a handler's failure is reported once

    Mutex m_joinMutex;
    std::atomic<std::thread::id> m_threadId{};
    std::thread m_thread GUARDED_BY(m_joinMutex);
};

} // namespace Norvane::Core
