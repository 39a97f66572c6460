#include "transport/aravis/AravisStream.h"

#include "norvane/Log.h"
#include "transport/aravis/ChunkLayout.h"

#include <algorithm>
#include <chrono>

namespace Norvane::Transport {
namespace {

ImageStatus MapStatus(ArvBufferStatus status) {
    switch (status) {
    case ARV_BUFFER_STATUS_SUCCESS:
        return IMAGE_NO_ERROR;
    case ARV_BUFFER_STATUS_TIMEOUT:
    case ARV_BUFFER_STATUS_MISSING_PACKETS:
        return IMAGE_MISSING_PACKETS;
    case ARV_BUFFER_STATUS_WRONG_PACKET_ID:
        return IMAGE_PACKETID_INCONSISTENT;
    case ARV_BUFFER_STATUS_SIZE_MISMATCH:
        return IMAGE_LEADER_BUFFER_SIZE_INCONSISTENT;
    default:
        return IMAGE_UNKNOWN_ERROR;
    }
}

/// The first part that is a plain image, or -1.
int FindImagePart(ArvBuffer* buffer) {
    const guint parts = arv_buffer_get_n_parts(buffer);
    for (guint part = 0; part < parts; ++part) {
        if (arv_buffer_get_part_data_type(buffer, part) == ARV_BUFFER_PART_DATA_TYPE_2D_IMAGE) {
            return static_cast<int>(part);
        }
    }
    return -1;
}

/// Bytes of the rows, by the bits per pixel that a pixel format's code carries (PFNC 2.1, section 3).
std::size_t ImageBytes(const Frame& frame) {
    const std::uint64_t bitsPerPixel = (frame.pfncFormat >> 16) & 0xFF;
    return ((frame.width * bitsPerPixel + 7) / 8 + frame.paddingX) * frame.height;
}

} // namespace

AravisStream::AravisStream(std::shared_ptr<StreamCore> core, std::shared_ptr<DeviceWorker> worker,
                           std::shared_ptr<DeviceLife> life)
    : m_core(std::move(core)), m_worker(std::move(worker)), m_life(std::move(life)),
      m_latest(m_core->ExpectedGeometry()), m_wakerKey(m_life->AddWaker([weak = std::weak_ptr(m_core)] {
          if (const auto alive = weak.lock()) {
              alive->Wake();
          }
      })) {}

AravisStream::~AravisStream() {
    m_life->RemoveWaker(m_wakerKey);
    m_core->Detach();
    DeviceWorker::Patience patience;
    patience.isThere = [core = m_core] { return IsThere(core->Target()); };
    try {
        if (m_worker->Run([core = m_core] { core->Stop(); }, patience) != DeviceWorker::Outcome::Done) {
            m_worker->Post([core = m_core] { core->Stop(); });
        }
    } catch (const std::exception& error) {
        Log(LogLevel::Debug, m_core->Target().label + ": ending a stream: " + error.what());
    }
}

std::optional<Frame> AravisStream::Pop(std::uint32_t timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (auto buffer = m_core->Pop(deadline)) {
        if (auto frame = MakeFrame(std::move(buffer))) {
            return frame;
        }
    }
    return std::nullopt;
}

StreamStatistics AravisStream::Statistics() const {
    StreamStatistics statistics = m_core->ReceiveStatistics();
    statistics.deliveredImages = m_delivered;
    statistics.corruptImages = m_corrupt;
    return statistics;
}

bool AravisStream::ReadGeometry(ArvBuffer* buffer, Frame& frame) {
    const int part = FindImagePart(buffer);
    if (part < 0) {
        return false;
    }
    const auto index = static_cast<guint>(part);
    gint x = 0;
    gint y = 0;
    gint width = 0;
    gint height = 0;
    gint paddingX = 0;
    gint paddingY = 0;
    arv_buffer_get_part_region(buffer, index, &x, &y, &width, &height);
    arv_buffer_get_part_padding(buffer, index, &paddingX, &paddingY);
    frame.offsetX = static_cast<std::uint32_t>(std::max(0, x));
    frame.offsetY = static_cast<std::uint32_t>(std::max(0, y));
    frame.width = static_cast<std::uint32_t>(std::max(0, width));
    frame.height = static_cast<std::uint32_t>(std::max(0, height));
    frame.paddingX = static_cast<std::uint32_t>(std::max(0, paddingX));
    frame.pfncFormat = arv_buffer_get_part_pixel_format(buffer, index);
    std::size_t size = 0;
    frame.data =
        static_cast<std::uint8_t*>(const_cast<void*>(arv_buffer_get_part_data(buffer, index, &size)));
    frame.size = size;
    return true;
}

std::optional<Frame> AravisStream::MakeFrame(GObjectPtr<ArvBuffer> buffer) {
    const ArvBufferStatus status = arv_buffer_get_status(buffer.get());
    if (status == ARV_BUFFER_STATUS_CLEARED || status == ARV_BUFFER_STATUS_ABORTED) {
        m_core->GiveBack(buffer.release()); // nothing was received into it
        return std::nullopt;
    }
    std::size_t received = 0;
    auto* memory =
        static_cast<std::uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer.get(), &received)));
    received = std::min(received, m_core->BufferSize());

    Frame frame;
    if (status == ARV_BUFFER_STATUS_SUCCESS && ReadGeometry(buffer.get(), frame)) {
        frame.size = std::min(frame.size, m_core->BufferSize() - (frame.data - memory));
        m_latest = frame;
    } else {
        // Aravis tells the geometry of complete images only, and a stream's images are alike.
        frame = m_latest;
        frame.data = memory;
        frame.size = status == ARV_BUFFER_STATUS_SUCCESS ? received : m_core->BufferSize();
    }
    frame.status = MapStatus(status);
    if (frame.status == IMAGE_NO_ERROR) {
        ReadChunks(buffer.get(), memory, received, frame);
    } else {
        m_core->ClearUnreceived(memory, m_core->BufferSize());
    }
    const std::uint64_t frameId = arv_buffer_get_frame_id(buffer.get());
    if (frameId == StreamCore::kNoFrameId) {
        // The time that the buffer tells is that of an older image.
        frame.status = IMAGE_MISSING_LEADER;
        frame.frameId = m_frameIds.Continue();
        frame.timestampNs = m_latestTimestampNs;
    } else {
        frame.frameId = m_frameIds.Continue(frameId);
        frame.timestampNs = arv_buffer_get_timestamp(buffer.get());
        m_latestTimestampNs = frame.timestampNs;
    }
    ++m_delivered;
    if (frame.status != IMAGE_NO_ERROR) {
        ++m_corrupt;
    }
    frame.owner = std::shared_ptr<void>(
        buffer.release(), [core = m_core](void* owned) { core->GiveBack(static_cast<ArvBuffer*>(owned)); });
    return frame;
}

void AravisStream::ReadChunks(ArvBuffer* buffer, const std::uint8_t* memory, std::size_t received,
                              Frame& frame) {
    if (!arv_buffer_has_chunks(buffer)) {
        return;
    }
    const auto order = m_core->Target().technology == Technology::GigEVision ? ChunkByteOrder::BigEndian
                                                                             : ChunkByteOrder::LittleEndian;
    frame.size = std::min(frame.size, ImageBytes(frame));
    ChunkLayout layout = ParseChunks(memory, received, std::min(frame.size, received), order);
    if (layout.valid) {
        frame.chunks = std::move(layout.chunks);
        return;
    }
    // One wrong length moves all chunks before it, so none of them can be trusted.
    frame.status = IMAGE_CHUNK_DATA_INVALID;
    if (!m_toldOfChunks) {
        m_toldOfChunks = true;
        Log(LogLevel::Warning, m_core->Target().label +
                                   ": the chunk data behind an image are cut off or have a wrong length, so "
                                   "they are left out; further images of this stream are not reported");
    }
}

} // namespace Norvane::Transport
