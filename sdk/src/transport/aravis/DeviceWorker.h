#pragma once

#include "base/Mutex.h"

#include <chrono>
#include <deque>
#include <exception>
#include <functional>
#include <memory>

namespace Norvane::Transport {

/// Runs the blocking calls of one device, in order, on a thread of its own, so that no caller waits longer
/// than it wants to: Aravis retries a register access for three seconds before it gives up. Shared by a
/// device and its streams; any thread calls it.
class DeviceWorker {
public:
    enum class Outcome { Done, Interrupted, Gone, TimedOut };

    struct Patience {
        std::chrono::milliseconds slice{500}; ///< after each, the caller looks whether the device is there
        std::chrono::milliseconds maximum{10000}; ///< even when it is
        std::function<bool()> isThere;            ///< takes at most 400 ms
    };

    DeviceWorker();
    /// Waits up to a second for what is queued; a call that is stuck then ends by itself later.
    ~DeviceWorker();
    DeviceWorker(const DeviceWorker&) = delete;
    DeviceWorker& operator=(const DeviceWorker&) = delete;

    /// Runs `work` and waits for it; what it throws is thrown here. Work whose caller gave up before it
    /// began is not run; work that had begun ends by itself, so it must own all that it touches.
    Outcome Run(std::function<void()> work, const Patience& patience);
    /// Queues work that nobody waits for.
    void Post(std::function<void()> work);
    /// Makes everybody who waits in Run, now or later, return Interrupted at once.
    void Interrupt();

private:
    struct Job {
        std::function<void()> work;
        std::exception_ptr failure;
        bool started = false, done = false, cancelled = false;
    };
    struct State {
        Mutex mutex;
        ConditionVariable changed;
        std::deque<std::shared_ptr<Job>> queue GUARDED_BY(mutex);
        bool stop GUARDED_BY(mutex) = false;
        bool ended GUARDED_BY(mutex) = false;
        bool interrupted GUARDED_BY(mutex) = false;
    };
    static void Loop(const std::shared_ptr<State>& state);

    std::shared_ptr<State> m_state;
};

} // namespace Norvane::Transport
