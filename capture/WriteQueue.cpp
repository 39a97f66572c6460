#include "WriteQueue.h"

#include "WritePriority.h"

#include <QThreadPool>

#include <utility>

void WriteQueue::Add(std::function<void()> write) {
    {
        std::unique_lock lock(m_mutex);
        m_taken.wait(lock, [this] { return m_waiting.size() < kMostWaiting; });
        m_waiting.push_back(std::move(write));
        if (std::exchange(m_isRunning, true)) {
            return;
        }
        m_running = std::make_unique<CountDownLatch>(1);
        m_latch = m_running.get();
    }
    QThreadPool::globalInstance()->start(this);
}

void WriteQueue::run() {
    giveWayToLiveThreads();
    std::unique_lock lock(m_mutex);
    CountDownLatch& latch = *m_latch;
    while (!m_waiting.empty()) {
        std::function<void()> write = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_taken.notify_one();
        lock.unlock();
        write();
        write = nullptr; // with the image, whose memory takes a while to go
        lock.lock();
    }
    m_isRunning = false;
    lock.unlock();
    latch.countDown(); // the last touch: whoever waits may destroy this object
}

void WriteQueue::Wait() {
    m_running.reset();
}
