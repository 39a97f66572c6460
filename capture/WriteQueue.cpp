#include "WriteQueue.h"

#include "WritePriority.h"

#include <QtConcurrent>

#include <utility>

void WriteQueue::Add(std::function<void()> write) {
    {
        std::unique_lock lock(m_mutex);
        m_taken.wait(lock, [this] { return m_waiting.size() < kMostWaiting; });
        m_waiting.push_back(std::move(write));
        if (std::exchange(m_isRunning, true)) {
            return;
        }
    }
    m_running = std::make_unique<CountDownLatch>(1);
    QtConcurrent::run([this, latch = m_running.get()] { Run(*latch); });
}

void WriteQueue::Run(CountDownLatch& latch) {
    giveWayToLiveThreads();
    for (;;) {
        std::function<void()> write;
        {
            const std::lock_guard lock(m_mutex);
            if (m_waiting.empty()) {
                m_isRunning = false;
                break;
            }
            write = std::move(m_waiting.front());
            m_waiting.pop_front();
            m_taken.notify_one();
        }
        write();
    }
    latch.countDown();
}

void WriteQueue::Wait() {
    m_running.reset();
}
