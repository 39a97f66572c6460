#pragma once

#include "transport/Transport.h"
#include "transport/aravis/DeviceLife.h"
#include "transport/aravis/DeviceWorker.h"
#include "transport/aravis/StreamCore.h"

#include <atomic>
#include <memory>

namespace Norvane::Transport {

/// A running stream of a GigE Vision or USB3 Vision camera: turns Aravis's buffers into frames. Owned by the
/// core's camera; Pop belongs to its dispatch thread, Wake and Statistics to anyone. Ends within a second
/// even when the camera does not answer any more.
class AravisStream final : public IStream {
public:
    AravisStream(std::shared_ptr<StreamCore> core, std::shared_ptr<DeviceWorker> worker,
                 std::shared_ptr<DeviceLife> life);
    ~AravisStream() override;

    std::optional<Frame> Pop(std::uint32_t timeoutMs) override;
    void Wake() override { m_core->Wake(); }
    StreamStatistics Statistics() const override;

private:
    std::optional<Frame> MakeFrame(GObjectPtr<ArvBuffer> buffer);
    static bool ReadGeometry(ArvBuffer* buffer, Frame& frame);
    void ReadChunks(ArvBuffer* buffer, const std::uint8_t* memory, std::size_t received, Frame& frame);

    const std::shared_ptr<StreamCore> m_core;
    const std::shared_ptr<DeviceWorker> m_worker;
    const std::shared_ptr<DeviceLife> m_life;
    Frame m_latest; ///< geometry of the latest complete image
    std::uint64_t m_latestTimestampNs = 0;
    std::uint64_t m_wakerKey;
    FrameIds m_frameIds;
    bool m_toldOfChunks = false; ///< of chunk data that cannot be split
    std::atomic<std::uint64_t> m_delivered{0};
    std::atomic<std::uint64_t> m_corrupt{0};
};

} // namespace Norvane::Transport
