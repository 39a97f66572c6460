#pragma once

#include "base/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Norvane::Transport {

/// Whether an opened device is still there, and who wants to know when it is not. Shared by the device, its
/// streams and the threads that watch it; any thread.
class DeviceLife {
public:
    explicit DeviceLife(std::string label) : m_label(std::move(label)) {}

    bool IsLost() const { return m_lost; }
    /// Closing is no loss: from now on nobody is told.
    void Close();
    /// Only the first call has an effect: one log line with the reason, and the wakers run, on this thread.
    void MarkLost(const std::string& reason);
    /// Called once after the loss, by the thread that is in TellWhenLost.
    void SetLostHandler(std::function<void()> handler);
    /// Waits for a loss and a handler and calls it, or for Close. On the thread that watches the device: the
    /// one that found the loss may hold locks that the handler wants.
    void TellWhenLost();
    /// Called at loss, with no lock held; must be quick. Returns a key for RemoveWaker.
    std::uint64_t AddWaker(std::function<void()> waker);
    void RemoveWaker(std::uint64_t key);
    /// Waits until the device is closed or lost, at most so long. True when it is.
    bool WaitForEnd(std::chrono::milliseconds timeout);

private:
    const std::string m_label;
    std::atomic<bool> m_lost{false};
    std::atomic<bool> m_closed{false};
    Mutex m_mutex;
    ConditionVariable m_ended;
    std::function<void()> m_handler GUARDED_BY(m_mutex);
    std::map<std::uint64_t, std::function<void()>> m_wakers GUARDED_BY(m_mutex);
    std::uint64_t m_nextKey GUARDED_BY(m_mutex) = 1;
};

} // namespace Norvane::Transport
