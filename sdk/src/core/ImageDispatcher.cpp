#include "core/ImageDispatcher.h"

#include "core/LibraryThread.h"
#include "imaging/ImageFactory.h"
#include "imaging/RowPool.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/PixelFormat.h"

#include <chrono>
#include <optional>
#include <utility>

namespace Norvane::Core {
namespace {

/// Bounds how late the end of a stream is noticed should a wake-up get lost.
constexpr std::uint32_t kPopTimeoutMs = 200;
/// Longer waits than this count as waiting without limit; it keeps the deadline inside the clock's range.
constexpr std::uint64_t kLongestWaitMs = 1000ULL * 60 * 60 * 24 * 365;

} // namespace

ImageDispatcher::ImageDispatcher(DispatchSettings settings, std::unique_ptr<Transport::IStream> stream,
                                 HandlerList<ImageEventHandler>& handlers, GenApi::INodeMap& map,
                                 std::shared_ptr<ImageDispatcher> previous)
    : m_settings(std::move(settings)), m_handlers(handlers), m_stream(std::move(stream)),
      m_chunks(std::make_unique<ChunkReader>(m_settings.cameraName, map)), m_previous(std::move(previous)) {
    MutexLock lock(m_joinMutex);
    m_thread = StartThread("norvane-images", [this] { Run(); });
}

ImageDispatcher::~ImageDispatcher() {
    Stop();
    MutexLock lock(m_joinMutex);
    if (m_thread.joinable()) {
        m_thread.detach(); // the last handle was dropped by the thread itself
    }
}

ImagePtr ImageDispatcher::Next(std::uint64_t timeoutMs) {
    MutexLock lock(m_mutex);
    if (timeoutMs > kLongestWaitMs) {
        while (m_queue.empty() && !m_aborted) {
            m_changed.wait(lock);
        }
    } else {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (m_queue.empty() && !m_aborted) {
            if (m_changed.wait_until(lock, deadline) == std::cv_status::timeout && m_queue.empty() &&
                !m_aborted) {
                throw Exception(Error::Timeout, m_settings.cameraName + ": no image came within " +
                                                    std::to_string(timeoutMs) + " ms");
            }
        }
    }
    if (m_aborted) {
        throw Exception(Error::Abort,
                        m_settings.cameraName + ": acquisition ended while an image was waited for");
    }
    ImagePtr image = std::move(m_queue.front());
    m_queue.pop_front();
    lock.unlock();
    m_changed.notify_all();
    return image;
}

void ImageDispatcher::Abort() {
    std::deque<ImagePtr> dropped;
    {
        MutexLock lock(m_mutex);
        m_aborted = true;
        dropped.swap(m_queue);
    }
    m_changed.notify_all();
}

void ImageDispatcher::Stop(const std::function<void()>& beforeClosing) {
    Abort();
    if (m_stream) {
        m_stream->Wake();
    }
    Join();
    if (beforeClosing) {
        beforeClosing();
    }
    m_chunks.reset();
    m_stream.reset();
}

std::size_t ImageDispatcher::Waiting() const {
    MutexLock lock(m_mutex);
    return m_queue.size();
}

void ImageDispatcher::Join() {
    if (IsOwnThread()) {
        return;
    }
    MutexLock lock(m_joinMutex);
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void ImageDispatcher::Run() {
    m_threadId = std::this_thread::get_id();
    Imaging::StartRowWorkers();
    if (m_previous) {
        m_previous->Join();
        m_previous.reset();
    }
    while (WaitForRoom()) {
        try {
            if (const ImagePtr image = TakeImage()) {
                Deliver(image);
            }
        } catch (const std::exception& error) {
            Log(LogLevel::Warning, m_settings.cameraName + ": an image was lost: " + error.what());
        }
    }
}

bool ImageDispatcher::WaitForRoom() {
    MutexLock lock(m_mutex);
    while (!m_aborted && !m_settings.newestOnly && m_queue.size() >= m_settings.queueLength &&
           m_handlers.IsEmpty()) {
        m_changed.wait(lock);
    }
    return !m_aborted;
}

ImagePtr ImageDispatcher::TakeImage() {
    std::optional<Transport::Frame> frame = m_stream->Pop(kPopTimeoutMs);
    while (frame && m_settings.newestOnly) {
        std::optional<Transport::Frame> newer = m_stream->Pop(0);
        if (!newer) {
            break;
        }
        frame = std::move(newer);
    }
    return frame && !m_aborted ? MakeImage(*frame) : ImagePtr();
}

ImagePtr ImageDispatcher::MakeImage(Transport::Frame& frame) {
    Imaging::ImageLayout layout;
    const PixelFormatInfo* format = FindPixelFormatByPfnc(frame.pfncFormat);
    layout.format = format ? format->format : PixelFormat_Undefined;
    layout.pfncCode = frame.pfncFormat;
    layout.width = frame.width;
    layout.height = frame.height;
    layout.offsetX = frame.offsetX;
    layout.offsetY = frame.offsetY;
    layout.paddingX = frame.paddingX;
    layout.frameId = frame.frameId;
    layout.timestampNs = frame.timestampNs;
    layout.status = frame.status;

    ChunkData chunks = m_chunks->Read(frame);
    ++*m_outstanding;
    std::shared_ptr<void> owner(
        nullptr, [buffer = std::move(frame.owner), outstanding = m_outstanding](void*) mutable {
            buffer.reset();
            --*outstanding;
        });
    return Imaging::MakeImage(layout, frame.data, frame.size, std::move(owner), std::move(chunks));
}

void ImageDispatcher::Deliver(const ImagePtr& image) {
    MutexLock lock(m_mutex);
    if (m_aborted) {
        return;
    }
    if (m_settings.newestOnly) {
        m_queue.clear();
    }
    m_queue.push_back(image);
    if (m_handlers.IsEmpty()) {
        lock.unlock();
        m_changed.notify_all();
        return;
    }
    while (!m_queue.empty() && !m_aborted) {
        const ImagePtr next = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        CallHandlers(next);
        lock.lock();
    }
}

void ImageDispatcher::CallHandlers(const ImagePtr& image) {
    m_handlers.Call(1, [this, &image](ImageEventHandler& handler) {
        try {
            if (!m_aborted) {
                handler.OnImageEvent(image);
            }
        } catch (const std::exception& error) {
            if (!m_complained) {
                m_complained = true;
                Log(LogLevel::Error, m_settings.cameraName + ": an image handler failed: " + error.what());
            }
        }
    });
}

} // namespace Norvane::Core
