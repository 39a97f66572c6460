#pragma once

#include "CountDownLatch.h"

#include <QRunnable>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

/// Runs file writes on Qt's pool, one after the other in the order given. The next ones wait in line while
/// one runs, so that no time passes between two files; whoever adds to a full line waits. Owned and filled by
/// one thread.
class WriteQueue : private QRunnable {
public:
    WriteQueue() { setAutoDelete(false); }
    /// As Wait().
    ~WriteQueue() override { Wait(); }
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    /// @param write  throws nothing.
    void Add(std::function<void()> write);
    /// Returns when every write is done.
    void Wait();

private:
    /// On the pool, until the line is empty.
    void run() override;

    static constexpr std::size_t kMostWaiting = 2;

    std::mutex m_mutex;
    std::condition_variable m_taken;
    std::deque<std::function<void()>> m_waiting;
    bool m_isRunning = false;
    CountDownLatch* m_latch = nullptr;         // the latest task's
    std::unique_ptr<CountDownLatch> m_running; // the same, held by the thread that fills the line
};
