#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Norvane::Core {

/// What one transport's latest finished scan found.
struct Scan {
    std::chrono::steady_clock::time_point start;
    Transport::ScanResult found;
};

/// The latest finished scans, one place a transport; null where the first scan goes on.
using Picture = std::vector<std::shared_ptr<const Scan>>;

class Discovery;

/// Asks discovery for a newer picture, from whatever outlives discovery: transports, cameras, interfaces. Any
/// thread; returns at once.
class DiscoveryBell {
public:
    void Ring() EXCLUDES(m_mutex);

private:
    friend class Discovery;
    void Connect(Discovery* discovery) EXCLUDES(m_mutex);

    Mutex m_mutex;
    Discovery* m_discovery GUARDED_BY(m_mutex) = nullptr;
};

/// Scans every transport on a thread of its own, about once a second and sooner on request, and hands each
/// new picture to one function on the discovery thread, one at a time. Owned by the system.
class Discovery {
public:
    using Apply = std::function<void(const Picture&)>;

    Discovery(const std::vector<std::shared_ptr<Transport::ITransport>>& transports,
              std::shared_ptr<DiscoveryBell> bell, Apply apply);
    /// As Stop().
    ~Discovery();
    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    /// Asks for a scan that begins after this call, and for the picture to be applied again meanwhile, since
    /// a camera may have been lost. Returns at once; any thread.
    void Request() EXCLUDES(m_mutex);
    /// Waits until the first scan of every transport was applied, or the deadline passed.
    void WaitForFirst(std::chrono::steady_clock::time_point deadline) EXCLUDES(m_mutex);
    /// Waits for the scans that go on, and ends the threads.
    void Stop() EXCLUDES(m_mutex);

private:
    using Clock = std::chrono::steady_clock;

    struct Lane {
        std::shared_ptr<Transport::ITransport> transport;
        std::uint64_t scansBegun = 0;
        std::uint64_t scansWanted = 1;
        std::shared_ptr<const Scan> latest;
        std::thread thread;
    };

    void RunLane(Lane& lane) EXCLUDES(m_mutex);
    /// Waits until the lane's next scan is due; false when discovery ends.
    bool WaitForTurn(Lane& lane, Clock::time_point lastEnd) EXCLUDES(m_mutex);
    void RunApply() EXCLUDES(m_mutex);
    static bool IsComplete(const Picture& picture);

    const std::shared_ptr<DiscoveryBell> m_bell;
    const Apply m_apply;
    mutable Mutex m_mutex;
    ConditionVariable m_changed;
    std::vector<std::unique_ptr<Lane>> m_lanes; ///< the lanes stay; their state is guarded by m_mutex
    bool m_stopping GUARDED_BY(m_mutex) = false;
    bool m_applyWanted GUARDED_BY(m_mutex) = false;
    bool m_firstApplied GUARDED_BY(m_mutex) = false;
    std::thread m_applyThread;
};

} // namespace Norvane::Core
