#include "transport/aravis/StreamCore.h"

#include "norvane/Log.h"
#include "transport/aravis/ReceiveSocket.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>

namespace Norvane::Transport {
namespace {

// What precedes the data in a packet: IP and UDP header, and the stream header in its short or its extended
// form (GigE Vision 2.0, 24.2).
constexpr std::size_t kPacketOverhead = 20 + 8 + 8;
constexpr std::size_t kExtendedPacketOverhead = 20 + 8 + 20;
// A bulk packet of a high-speed USB device; that of a faster one is a multiple.
constexpr std::size_t kUsbBlock = 512;
// Holds the images of a stalled receive thread for a tenth of a second at Gigabit speed, and more.
constexpr int kWantedSocketBuffer = 32 << 20;

/// Memory of one image, on pages of its own.
struct Memory {
    void* data;
    std::size_t size;
};

void FreeMemory(void* memory) {
    const auto* owned = static_cast<Memory*>(memory);
    ::munmap(owned->data, owned->size);
    delete owned;
}

ArvBuffer* AllocateBuffer(std::size_t size, const std::string& label) {
    // The first image must not wait for fresh pages.
    void* data =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (data == MAP_FAILED) {
        throw Exception(Error::OutOfMemory, label + ": no memory for an image of " + std::to_string(size) +
                                                " bytes; make images or the number of buffers smaller");
    }
    return arv_buffer_new_full(size, data, new Memory{data, size}, &FreeMemory);
}

bool UsesExtendedIds(ArvDevice* device) {
    GErrorHolder error;
    constexpr const char* kFeature = "GevGVSPExtendedIDMode";
    if (!arv_device_is_feature_available(device, kFeature, error.Out())) {
        return false;
    }
    const char* mode = arv_device_get_string_feature_value(device, kFeature, error.Out());
    return !error && mode && std::strcmp(mode, "On") == 0;
}

std::uint32_t ReadFeature(ArvDevice* device, const char* name) {
    GErrorHolder error;
    const gint64 value = arv_device_get_integer_feature_value(device, name, error.Out());
    return error || value < 0 ? 0 : static_cast<std::uint32_t>(value);
}

Frame ReadGeometry(ArvDevice* device) {
    Frame frame;
    frame.width = ReadFeature(device, "Width");
    frame.height = ReadFeature(device, "Height");
    frame.offsetX = ReadFeature(device, "OffsetX");
    frame.offsetY = ReadFeature(device, "OffsetY");
    frame.pfncFormat = ReadFeature(device, "PixelFormat");
    return frame;
}

void DeleteSelf(void* self) {
    delete static_cast<std::shared_ptr<StreamCore>*>(self);
}

} // namespace

void NegotiatePacketSize(ArvDevice* device, const DeviceTarget& target) {
    GErrorHolder error;
    ArvGvDevice* gev = ARV_GV_DEVICE(device);
    const guint before = arv_gv_device_get_packet_size(gev, error.Out());
    const guint after = arv_gv_device_auto_packet_size(gev, error.Out());
    if (error) {
        // Not fatal: the device keeps the size that it has.
        Log(LogLevel::Info, target.label + ": the packet size could not be negotiated: " + error.Text());
    } else if (after != before) {
        Log(LogLevel::Info, target.label + ": packets of " + std::to_string(after) + " bytes");
    }
    // A size that was set by hand is replaced only when it does not get through.
    arv_gv_device_set_packet_size_adjustment(gev, ARV_GV_PACKET_SIZE_ADJUSTMENT_ON_FAILURE);
}

StreamCore::StreamCore(DeviceTarget target, const StreamSettings& settings)
    : m_target(std::move(target)), m_settings(settings) {
    if (m_settings.payloadSize == 0 || m_settings.bufferCount == 0) {
        throw Exception(Error::InvalidParameter,
                        m_target.label + ": a stream needs at least one buffer and a payload size, not " +
                            std::to_string(m_settings.bufferCount) + " buffers of " +
                            std::to_string(m_settings.payloadSize) + " bytes");
    }
}

StreamCore::~StreamCore() = default;

void StreamCore::Start(std::shared_ptr<OpenedDevice> opened, const std::shared_ptr<StreamCore>& self) {
    ArvDevice* device = opened->Get();
    GErrorHolder error;
    m_stream.reset(arv_device_create_stream_full(
        device, &StreamCore::OnStreamEvent, new std::shared_ptr<StreamCore>(self), &DeleteSelf, error.Out()));
    if (!m_stream) {
        throw Exception(error.Code(), m_target.label + ": no stream: " + error.Text());
    }
    m_device = std::move(opened);
    std::size_t block = kUsbBlock;
    if (ARV_IS_GV_STREAM(m_stream.get())) {
        const std::uint64_t packetTimeoutUs = std::uint64_t{m_settings.resendTimeoutMs} * 1000;
        g_object_set(m_stream.get(), "packet-resend",
                     m_settings.packetResend ? ARV_GV_STREAM_PACKET_RESEND_ALWAYS
                                             : ARV_GV_STREAM_PACKET_RESEND_NEVER,
                     "packet-timeout", static_cast<guint>(packetTimeoutUs), "frame-retention",
                     static_cast<guint>(std::max<std::uint64_t>(100000, 5 * packetTimeoutUs)), nullptr);
        SizeReceiveSocket(ARV_GV_STREAM(m_stream.get()), kWantedSocketBuffer, m_target.label);
        const std::size_t packet = arv_gv_device_get_packet_size(ARV_GV_DEVICE(device), error.Out());
        const std::size_t overhead = UsesExtendedIds(device) ? kExtendedPacketOverhead : kPacketOverhead;
        block = packet > overhead ? packet - overhead : kUsbBlock;
    }
    m_marks.emplace(block);
    m_expected = ReadGeometry(device);
    try {
        AddBuffers();
    } catch (...) {
        Stop(); // Aravis's stream keeps this object
        throw;
    }
    const MutexLock lock(m_mutex);
    m_attached = m_stream.get();
}

void StreamCore::AddBuffers() {
    for (std::uint32_t i = 0; i < m_settings.bufferCount; ++i) {
        GObjectPtr<ArvBuffer> buffer(AllocateBuffer(m_settings.payloadSize, m_target.label));
        Prepare(buffer.get());
        arv_stream_push_buffer(m_stream.get(), buffer.release());
    }
}

void StreamCore::Prepare(ArvBuffer* buffer) const {
    std::size_t size = 0;
    auto* data = static_cast<std::uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &size)));
    m_marks->Mark(data, m_settings.payloadSize);
    arv_buffer_set_frame_id(buffer, kNoFrameId);
}

void StreamCore::Stop() {
    m_stream.reset();
    m_device.reset();
}

void StreamCore::Detach() {
    const MutexLock lock(m_mutex);
    if (m_attached) {
        m_lastStatistics = ReadStatistics();
    }
    m_attached = nullptr;
    m_wake = true;
    m_changed.notify_all();
}

void StreamCore::OnStreamEvent(void* self, ArvStreamCallbackType type, ArvBuffer*) {
    StreamCore& core = **static_cast<std::shared_ptr<StreamCore>*>(self);
    switch (type) {
    case ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE: {
        bool waiting = false;
        {
            const MutexLock lock(core.m_mutex);
            ++core.m_finished;
            waiting = core.m_waiting;
        }
        if (waiting) { // outside of the lock, which the woken thread takes at once
            core.m_changed.notify_all();
        }
        break;
    }
    case ARV_STREAM_CALLBACK_TYPE_START_BUFFER:
        // Orders the marks that GiveBack made before the bytes that are received now. Aravis's own queue does
        // so too, but no tool that checks threads can see it there.
        core.m_marked.load(std::memory_order_acquire);
        break;
    case ARV_STREAM_CALLBACK_TYPE_INIT:
    case ARV_STREAM_CALLBACK_TYPE_EXIT:
        break;
    }
}

GObjectPtr<ArvBuffer> StreamCore::Pop(std::chrono::steady_clock::time_point deadline) {
    MutexLock lock(m_mutex);
    while (m_attached) {
        if (ArvBuffer* buffer = arv_stream_try_pop_buffer(m_attached)) {
            return GObjectPtr<ArvBuffer>(buffer);
        }
        if (m_wake) {
            m_wake = false;
            break;
        }
        const std::uint64_t seen = m_finished;
        m_waiting = true;
        bool inTime = true;
        while (inTime && m_attached && m_finished == seen && !m_wake) {
            inTime = m_changed.wait_until(lock, deadline) != std::cv_status::timeout;
        }
        m_waiting = false;
        if (!inTime && m_finished == seen) {
            break;
        }
    }
    return nullptr;
}

void StreamCore::Wake() {
    const MutexLock lock(m_mutex);
    m_wake = true;
    m_changed.notify_all();
}

void StreamCore::GiveBack(ArvBuffer* buffer) {
    Prepare(buffer);
    m_marked.fetch_add(1, std::memory_order_release);
    GObjectPtr<ArvBuffer> owner(buffer);
    const MutexLock lock(m_mutex);
    if (m_attached) {
        arv_stream_push_buffer(m_attached, owner.release());
    }
}

void StreamCore::ClearUnreceived(std::uint8_t* data, std::size_t size) const {
    m_marks->ClearUnwritten(data, size);
}

StreamStatistics StreamCore::ReceiveStatistics() const {
    const MutexLock lock(m_mutex);
    return m_attached ? ReadStatistics() : m_lastStatistics;
}

StreamStatistics StreamCore::ReadStatistics() const {
    const auto counter = [stream = m_attached](const char* name) {
        return arv_stream_get_info_uint64_by_name(stream, name);
    };
    StreamStatistics statistics;
    statistics.underruns = counter("n_underruns");
    if (ARV_IS_GV_STREAM(m_attached)) {
        statistics.totalPackets = counter("n_received_packets");
        statistics.missedPackets = counter("n_missing_packets");
        statistics.resendRequests = counter("n_resend_requests");
        statistics.resendPackets = counter("n_resent_packets");
    }
    return statistics;
}

} // namespace Norvane::Transport
