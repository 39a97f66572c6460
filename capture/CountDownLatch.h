#pragma once

#include <condition_variable>
#include <mutex>

/// Lets one thread wait for tasks on others: construction counts down from the full number of permits, each
/// finished task gives its permit back, and destruction waits until all are free. Owned by the waiting
/// thread; countDown() may be called by any.
class CountDownLatch {
public:
    explicit CountDownLatch(int count = 1);
    ~CountDownLatch();
    CountDownLatch(const CountDownLatch&) = delete;
    CountDownLatch& operator=(const CountDownLatch&) = delete;

    void countDown();

private:
    static constexpr int kPermits = 2147483647;

    std::mutex m_mutex;
    std::condition_variable m_freed;
    int m_free;
};
