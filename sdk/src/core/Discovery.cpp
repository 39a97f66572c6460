#include "core/Discovery.h"

#include "core/LibraryThread.h"
#include "norvane/Log.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Norvane::Core {
namespace {

constexpr std::chrono::milliseconds kPeriod{1000};
/// Requests come in bursts, one per interface that a list shows; a network is not asked more often than this.
constexpr std::chrono::milliseconds kShortestPause{50};

} // namespace

void DiscoveryBell::Ring() {
    MutexLock lock(m_mutex);
    if (m_discovery) {
        m_discovery->Request();
    }
}

void DiscoveryBell::Connect(Discovery* discovery) {
    MutexLock lock(m_mutex);
    m_discovery = discovery;
}

Discovery::Discovery(const std::vector<std::shared_ptr<Transport::ITransport>>& transports,
                     std::shared_ptr<DiscoveryBell> bell, Apply apply)
    : m_bell(std::move(bell)), m_apply(std::move(apply)) {
    for (const std::shared_ptr<Transport::ITransport>& transport : transports) {
        auto lane = std::make_unique<Lane>();
        lane->transport = transport;
        m_lanes.push_back(std::move(lane));
    }
    m_bell->Connect(this);
    for (const std::shared_ptr<Transport::ITransport>& transport : transports) {
        transport->SetChangeHandler([bell = m_bell] { bell->Ring(); });
    }
    m_applyThread = StartThread("norvane-discover", [this] { RunApply(); });
    for (const std::unique_ptr<Lane>& lane : m_lanes) {
        lane->thread = StartThread("norvane-scan", [this, &lane = *lane] { RunLane(lane); });
    }
}

Discovery::~Discovery() {
    Stop();
}

void Discovery::Request() {
    {
        MutexLock lock(m_mutex);
        for (const std::unique_ptr<Lane>& lane : m_lanes) {
            lane->scansWanted = lane->scansBegun + 1;
        }
        m_applyWanted = true;
    }
    m_changed.notify_all();
}

void Discovery::WaitForFirst(Clock::time_point deadline) {
    MutexLock lock(m_mutex);
    while (!m_firstApplied && !m_stopping &&
           m_changed.wait_until(lock, deadline) == std::cv_status::no_timeout) {
    }
}

void Discovery::Stop() {
    m_bell->Connect(nullptr);
    {
        MutexLock lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    for (const std::unique_ptr<Lane>& lane : m_lanes) {
        if (lane->thread.joinable()) {
            lane->thread.join();
        }
    }
    if (m_applyThread.joinable()) {
        m_applyThread.join();
    }
}

void Discovery::RunLane(Lane& lane) {
    Clock::time_point lastEnd = Clock::now() - kPeriod;
    while (WaitForTurn(lane, lastEnd)) {
        auto scan = std::make_shared<Scan>();
        scan->start = Clock::now();
        try {
            scan->found = lane.transport->Scan();
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("a search for cameras failed: ") + error.what());
        }
        lastEnd = Clock::now();
        {
            MutexLock lock(m_mutex);
            lane.latest = std::move(scan);
            m_applyWanted = true;
        }
        m_changed.notify_all();
    }
}

bool Discovery::WaitForTurn(Lane& lane, Clock::time_point lastEnd) {
    MutexLock lock(m_mutex);
    for (;;) {
        const bool wanted = lane.scansWanted > lane.scansBegun;
        const Clock::time_point due = lastEnd + (wanted ? kShortestPause : kPeriod);
        if (m_stopping || Clock::now() >= due) {
            break;
        }
        m_changed.wait_until(lock, due);
    }
    ++lane.scansBegun;
    return !m_stopping;
}

void Discovery::RunApply() {
    MutexLock lock(m_mutex);
    while (!m_stopping) {
        if (!m_applyWanted) {
            m_changed.wait(lock);
            continue;
        }
        m_applyWanted = false;
        Picture picture;
        for (const std::unique_ptr<Lane>& lane : m_lanes) {
            picture.push_back(lane->latest);
        }
        lock.unlock();
        m_apply(picture);
        lock.lock();
        if (!m_firstApplied && IsComplete(picture)) {
            m_firstApplied = true;
            m_changed.notify_all();
        }
    }
}

bool Discovery::IsComplete(const Picture& picture) {
    return std::all_of(picture.begin(), picture.end(), [](const auto& scan) { return scan != nullptr; });
}

} // namespace Norvane::Core
