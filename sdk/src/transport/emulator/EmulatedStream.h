#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/emulator/EmulatedCamera.h"
#include "transport/emulator/Renderer.h"

#include <atomic>
#include <deque>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The images of one emulated camera, drawn on a thread of the stream and lost, resent and counted as on a
/// real link. Ends its thread in the destructor; images that are still held keep their buffers.
class EmulatedStream : public IStream {
public:
    /// Allocates the buffers and draws the background once, so that the first image is as quick as the
    /// others.
    /// @throws Exception (ResourceInUse) while another stream of the camera runs, (Io) when it left.
    EmulatedStream(std::shared_ptr<EmulatedCamera> camera, const StreamSettings& settings);
    ~EmulatedStream() override;

    std::optional<Frame> Pop(std::uint32_t timeoutMs) override;
    void Wake() override;
    StreamStatistics Statistics() const override;

private:
    struct Buffer {
        std::vector<std::uint8_t> memory;
        Renderer::Drawn drawn;
    };
    /// Outlives the stream as long as somebody holds an image.
    struct Pool {
        Mutex mutex;
        ConditionVariable finished;
        std::vector<std::unique_ptr<Buffer>> all GUARDED_BY(mutex);
        std::vector<Buffer*> free GUARDED_BY(mutex);
        std::deque<Frame> ready GUARDED_BY(mutex);
        bool woken GUARDED_BY(mutex) = false;
        StreamStatistics statistics GUARDED_BY(mutex);
    };

    void Run();
    Buffer* TakeFree() EXCLUDES(m_pool->mutex);
    void Deliver(const EmulatedCamera::Image& image, Buffer& buffer);
    /// Sends the payload through the link: zeroes what does not arrive. @returns the image's status
    ImageStatus Transmit(const EmulatedCamera::Image& image, std::size_t payloadBytes, Buffer& buffer);
    static void ZeroRows(const ImageSettings& settings, std::size_t firstByte, std::size_t lastByte,
                         std::uint8_t* data);

    const std::shared_ptr<EmulatedCamera> m_camera;
    const StreamSettings m_settings;
    const std::shared_ptr<Pool> m_pool = std::make_shared<Pool>();
    Renderer m_renderer;
    std::mt19937_64 m_random;
    std::uint64_t m_sent = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

} // namespace Norvane::Transport::Emulator
