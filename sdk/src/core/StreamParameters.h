#pragma once

#include "base/Mutex.h"
#include "core/FunctionPort.h"
#include "norvane/genapi/NodeMapFactory.h"
#include "transport/Transport.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Norvane::Core {

/// The transport-layer stream map of a camera (descriptions/StreamParameters.xml): settings that take effect
/// when acquisition begins, and live statistics. Statistics read the running stream; after its end they show
/// its last values. Owned by its camera; nodes are read on any thread, and per image by the image handler.
class StreamParameters {
public:
    enum class HandlingMode : std::int64_t { OldestFirst = 0, NewestOnly = 1 };

    /// How many images wait for the program, and how many it holds.
    struct Occupancy {
        std::int64_t waiting = 0;
        std::int64_t held = 0;
    };

    StreamParameters(const std::string& streamId, Transport::Technology technology);
    StreamParameters(const StreamParameters&) = delete;
    StreamParameters& operator=(const StreamParameters&) = delete;

    GenApi::INodeMap& Map() const { return *m_map; }

    /// The settings of the next stream.
    /// @param payloadSize       bytes of one image, 0 when unknown.
    /// @param imagesPerSecond   0 when unknown; both matter for the automatic number of buffers.
    Transport::StreamSettings Settings(std::uint64_t payloadSize, double imagesPerSecond) const;
    HandlingMode Handling() const { return static_cast<HandlingMode>(m_handling.load()); }

    /// Shows the statistics of `stream`, which must live until Detach().
    void Attach(const Transport::IStream& stream, std::uint32_t bufferCount,
                std::function<Occupancy()> occupancy) EXCLUDES(m_mutex);
    void Detach() EXCLUDES(m_mutex);

private:
    Transport::StreamStatistics Statistics() const EXCLUDES(m_mutex);
    Occupancy CurrentOccupancy() const EXCLUDES(m_mutex);
    void AddSetting(std::int64_t address, std::atomic<std::int64_t>& value);
    void AddStatistic(std::int64_t address, std::uint64_t Transport::StreamStatistics::*field);
    void BuildPort(const std::string& streamId, Transport::Technology technology);
    void Invalidate(const char* node) const;

    std::atomic<std::int64_t> m_countMode{0};
    std::atomic<std::int64_t> m_countManual{10};
    std::atomic<std::int64_t> m_countResult{0};
    std::atomic<std::int64_t> m_handling{0};
    std::atomic<std::int64_t> m_resend{1};
    std::atomic<std::int64_t> m_resendTimeoutMs{20};

    mutable Mutex m_mutex;
    const Transport::IStream* m_stream GUARDED_BY(m_mutex) = nullptr;
    Transport::StreamStatistics m_last GUARDED_BY(m_mutex);
    std::function<Occupancy()> m_occupancy GUARDED_BY(m_mutex);

    const std::shared_ptr<FunctionPort> m_port = std::make_shared<FunctionPort>();
    std::shared_ptr<GenApi::INodeMap> m_map;
};

} // namespace Norvane::Core
