#pragma once

#include "CountDownLatch.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

/// Runs file writes on Qt's pool, one after the other in the order given. The next ones wait in line while
/// one runs, so that no time passes between two files; whoever adds to a full line waits. Owned and filled by
/// one thread.
class WriteQueue {
public:
    WriteQueue() = default;
    /// As Wait().
    ~WriteQueue() = default;
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    /// @param write  throws nothing.
    void Add(std::function<void()> write);
    /// Returns when every write is done.
    void Wait();

private:
    void Run(CountDownLatch& latch);

    static constexpr std::size_t kMostWaiting = 2;

    std::mutex m_mutex;
    std::condition_variable m_taken;
    std::deque<std::function<void()>> m_waiting;
    bool m_isRunning = false;
    std::unique_ptr<CountDownLatch> m_running; // of the pool's task; last, because its end waits for that
};
