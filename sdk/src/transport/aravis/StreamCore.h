#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/aravis/BlockMarks.h"
#include "transport/aravis/DeviceTarget.h"
#include "transport/aravis/FrameIds.h"
#include "transport/aravis/GObjectPtr.h"
#include "transport/aravis/OpenedDevice.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace Norvane::Transport {

/// The part of a stream that outlives it: Aravis's stream with its buffers, and the way of a buffer back into
/// it. Shared by the stream, by every frame that is still in use and by Aravis's receive thread.
class StreamCore {
public:
    /// The number of a buffer's image while its leader has not come.
    static constexpr std::uint64_t kNoFrameId = UINT64_MAX;

    StreamCore(DeviceTarget target, const StreamSettings& settings);
    ~StreamCore();
    StreamCore(const StreamCore&) = delete;
    StreamCore& operator=(const StreamCore&) = delete;

    /// Creates Aravis's stream and gives it its buffers. On the device's worker; `self` is this object.
    /// @throws Exception (Io, OutOfMemory, InvalidParameter).
    void Start(std::shared_ptr<OpenedDevice> device, const std::shared_ptr<StreamCore>& self);
    /// Ends Aravis's receive thread; frames in use stay valid. On the device's worker; may block when the
    /// device is dead.
    void Stop();
    /// From now on no buffer goes back into the stream. Any thread, at once.
    void Detach();

    /// The next finished buffer, or null after the timeout, Wake or Detach. One thread at a time.
    GObjectPtr<ArvBuffer> Pop(std::chrono::steady_clock::time_point deadline);
    void Wake();
    /// Makes a buffer ready for an image and gives it back to the stream; without stream the buffer is freed.
    void GiveBack(ArvBuffer* buffer);
    /// Clears what a buffer with missing packets did not receive.
    void ClearUnreceived(std::uint8_t* data, std::size_t size) const;
    /// Receive counters of Aravis; the last known once the stream is detached.
    StreamStatistics ReceiveStatistics() const;

    const DeviceTarget& Target() const { return m_target; }
    /// What the device is set to send, for images that arrive without saying what they are.
    const Frame& ExpectedGeometry() const { return m_expected; }
    std::size_t BufferSize() const { return m_settings.payloadSize; }

private:
    static void OnStreamEvent(void* self, ArvStreamCallbackType type, ArvBuffer* buffer);
    void AddBuffers();
    void Prepare(ArvBuffer* buffer) const;
    StreamStatistics ReadStatistics() const REQUIRES(m_mutex);

    const DeviceTarget m_target;
    const StreamSettings m_settings;
    Frame m_expected;                       ///< geometry only; set by Start
    std::optional<BlockMarks> m_marks;      ///< set before the first buffer is given out
    std::shared_ptr<OpenedDevice> m_device; ///< from Start to Stop
    GObjectPtr<ArvStream> m_stream;         ///< touched by Start and Stop only

    std::atomic<std::uint64_t> m_marked{0}; ///< buffers that were marked and given back

    mutable Mutex m_mutex;
    ConditionVariable m_changed;
    ArvStream* m_attached GUARDED_BY(m_mutex) = nullptr; ///< m_stream until Detach
    std::uint64_t m_finished GUARDED_BY(m_mutex) = 0;
    bool m_waiting GUARDED_BY(m_mutex) = false;
    bool m_wake GUARDED_BY(m_mutex) = false;
    StreamStatistics m_lastStatistics GUARDED_BY(m_mutex);
};

/// Chooses the largest packet that gets through to this host, where the device can send test packets. On the
/// device's worker, once when the device is opened, so that a size set later by hand stays.
void NegotiatePacketSize(ArvDevice* device, const DeviceTarget& target);

} // namespace Norvane::Transport
