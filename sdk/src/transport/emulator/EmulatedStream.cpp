#include "transport/emulator/EmulatedStream.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Norvane::Transport::Emulator {

EmulatedStream::EmulatedStream(std::shared_ptr<EmulatedCamera> camera, const StreamSettings& settings)
    : m_camera(std::move(camera)), m_settings(settings), m_random(m_camera->Seed()) {
    if (!m_camera->IsAlive()) {
        throw Exception(Error::Io, "the camera has left; it cannot stream");
    }
    const std::size_t bytes = std::max<std::size_t>(settings.payloadSize, m_camera->PayloadSize());
    {
        const MutexLock lock(m_pool->mutex);
        for (std::uint32_t i = 0; i < std::max(1U, settings.bufferCount); ++i) {
            auto buffer = std::make_unique<Buffer>();
            buffer->memory.resize(bytes);
            m_pool->free.push_back(buffer.get());
            m_pool->all.push_back(std::move(buffer));
        }
    }
    m_renderer.Prepare(m_camera->CurrentImageSettings());
    if (!m_camera->TakeStream()) {
        throw Exception(Error::ResourceInUse, "the camera streams already");
    }
    m_thread = std::thread([this] { Run(); });
}

EmulatedStream::~EmulatedStream() {
    m_stop = true;
    m_camera->WakeStream();
    m_thread.join();
    m_camera->ReturnStream();
    // Frames nobody fetched hold the pool: let them go before it.
    std::deque<Frame> left;
    const MutexLock lock(m_pool->mutex);
    left.swap(m_pool->ready);
    m_pool->woken = true;
    m_pool->finished.notify_all();
}

void EmulatedStream::Run() {
    while (const auto image = m_camera->WaitForImage(m_stop)) {
        if (Buffer* buffer = TakeFree()) {
            Deliver(*image, *buffer);
        }
    }
    // The camera left or the stream ends: whoever waits for an image learns it now.
    Wake();
}

EmulatedStream::Buffer* EmulatedStream::TakeFree() {
    const MutexLock lock(m_pool->mutex);
    if (m_pool->free.empty()) {
        ++m_pool->statistics.underruns;
        return nullptr;
    }
    Buffer* buffer = m_pool->free.back();
    m_pool->free.pop_back();
    return buffer;
}

void EmulatedStream::Deliver(const EmulatedCamera::Image& image, Buffer& buffer) {
    const ImageSettings& settings = *image.settings;
    const ImageGeometry& geometry = settings.geometry;
    m_renderer.Prepare(image.settings);
    const std::size_t imageBytes = settings.ImageBytes();
    Frame frame;
    frame.data = buffer.memory.data();
    frame.size = imageBytes;
    frame.pfncFormat = settings.format->pfncCode;
    frame.width = geometry.width;
    frame.height = geometry.height;
    frame.offsetX = geometry.offsetX;
    frame.offsetY = geometry.offsetY;
    frame.frameId = image.frameId;
    frame.timestampNs = image.timestampNs;
    // Chunks that were switched on while the stream runs find no room behind the image and stay out.
    const std::size_t chunkBytes = image.chunksActive ? ChunkLayout::Size(image.chunks) : 0;
    const bool withChunks = chunkBytes > 0 && imageBytes + chunkBytes <= buffer.memory.size();
    const std::size_t payloadBytes = imageBytes + (withChunks ? chunkBytes : 0);
    if (payloadBytes > buffer.memory.size()) {
        // The image grew while the stream runs: as much as fits arrives.
        std::vector<std::uint8_t> whole(imageBytes);
        Renderer::Drawn drawn;
        m_renderer.Draw(image.frameId, image.seconds, whole.data(), drawn);
        const std::size_t rows =
            std::min<std::size_t>(geometry.height, buffer.memory.size() / settings.RowBytes());
        std::memcpy(buffer.memory.data(), whole.data(), rows * settings.RowBytes());
        buffer.drawn = {};
        frame.height = static_cast<std::uint32_t>(rows);
        frame.size = rows * settings.RowBytes();
        frame.status = IMAGE_DATA_OVERFLOW;
    } else {
        m_renderer.Draw(image.frameId, image.seconds, buffer.memory.data(), buffer.drawn);
        if (withChunks) {
            ChunkLayout::Append(buffer.memory.data(), imageBytes, image.chunks, m_camera->IsBigEndian());
        }
        frame.status = Transmit(image, payloadBytes, buffer);
        if (withChunks && frame.status == IMAGE_NO_ERROR) {
            frame.chunks = ChunkLayout::Parse(buffer.memory.data(), payloadBytes, m_camera->IsBigEndian());
            frame.chunks.erase(ChunkLayout::kImageId);
        }
    }
    frame.owner = std::shared_ptr<void>(&buffer, [pool = m_pool](void* released) {
        const MutexLock lock(pool->mutex);
        pool->free.push_back(static_cast<Buffer*>(released));
    });
    const MutexLock lock(m_pool->mutex);
    ++m_pool->statistics.deliveredImages;
    m_pool->statistics.corruptImages += frame.status != IMAGE_NO_ERROR;
    m_pool->ready.push_back(std::move(frame));
    m_pool->finished.notify_all();
}

ImageStatus EmulatedStream::Transmit(const EmulatedCamera::Image& image, std::size_t payloadBytes,
                                     Buffer& buffer) {
    const ImageSettings& settings = *image.settings;
    const bool gigE = m_camera->IsGigE();
    const std::uint64_t packetBytes = std::max<std::uint32_t>(1, image.packetBytes);
    const std::uint64_t dataPackets =
        std::max<std::uint64_t>(1, (payloadBytes + packetBytes - 1) / packetBytes);
    std::vector<std::uint64_t> missing;
    StreamStatistics change;
    change.totalPackets = gigE ? dataPackets + 2 : 0; // with leader and trailer
    if (image.loss > 0.0) {
        std::binomial_distribution<std::uint64_t> losses(dataPackets, image.loss);
        const std::uint64_t lost = losses(m_random);
        change.missedPackets = gigE ? lost : 0;
        // A packet asked for again may be lost again. The link asks twice, then gives up.
        std::uint64_t still = lost;
        if (gigE && m_settings.packetResend) {
            for (int attempt = 0; attempt < 2 && still > 0; ++attempt) {
                change.resendRequests += still;
                const std::uint64_t again =
                    std::binomial_distribution<std::uint64_t>(still, image.loss)(m_random);
                change.resendPackets += still - again;
                still = again;
            }
        }
        for (std::uint64_t i = 0; i < still; ++i) {
            missing.push_back(m_random() % dataPackets);
        }
    }
    if (image.incompleteEvery > 0 && ++m_sent % image.incompleteEvery == 0) {
        // A tenth of the image, somewhere.
        const std::uint64_t count = std::max<std::uint64_t>(1, dataPackets / 10);
        const std::uint64_t first = m_random() % (dataPackets - count + 1);
        for (std::uint64_t i = 0; i < count; ++i) {
            missing.push_back(first + i);
        }
        change.missedPackets += gigE ? count : 0;
    }
    for (const std::uint64_t packet : missing) {
        ZeroRows(settings, packet * packetBytes, (packet + 1) * packetBytes, buffer.memory.data());
    }
    if (!missing.empty()) {
        buffer.drawn = {};
    }
    const MutexLock lock(m_pool->mutex);
    StreamStatistics& total = m_pool->statistics;
    total.totalPackets += change.totalPackets;
    total.missedPackets += change.missedPackets;
    total.resendRequests += change.resendRequests;
    total.resendPackets += change.resendPackets;
    return missing.empty() ? IMAGE_NO_ERROR : gigE ? IMAGE_MISSING_PACKETS : IMAGE_DATA_INCOMPLETE;
}

void EmulatedStream::ZeroRows(const ImageSettings& settings, std::size_t firstByte, std::size_t lastByte,
                              std::uint8_t* data) {
    const std::size_t stride = settings.RowBytes();
    const std::size_t first = std::min<std::size_t>(settings.geometry.height, firstByte / stride);
    const std::size_t last =
        std::min<std::size_t>(settings.geometry.height, (lastByte + stride - 1) / stride);
    std::memset(data + first * stride, 0, (last - first) * stride);
}

std::optional<Frame> EmulatedStream::Pop(std::uint32_t timeoutMs) {
    const auto end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    MutexLock lock(m_pool->mutex);
    while (m_pool->ready.empty() && !m_pool->woken) {
        if (m_pool->finished.wait_until(lock, end) == std::cv_status::timeout) {
            break;
        }
    }
    // A wake-up counts once, and before images: who was woken wants to look around.
    if (std::exchange(m_pool->woken, false) || m_pool->ready.empty()) {
        return std::nullopt;
    }
    Frame frame = std::move(m_pool->ready.front());
    m_pool->ready.pop_front();
    return frame;
}

void EmulatedStream::Wake() {
    const MutexLock lock(m_pool->mutex);
    m_pool->woken = true;
    m_pool->finished.notify_all();
}

StreamStatistics EmulatedStream::Statistics() const {
    const MutexLock lock(m_pool->mutex);
    return m_pool->statistics;
}

} // namespace Norvane::Transport::Emulator
