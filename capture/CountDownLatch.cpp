#include "CountDownLatch.h"

CountDownLatch::CountDownLatch(int count) : m_free(kPermits - count) {}

CountDownLatch::~CountDownLatch() {
    std::unique_lock lock(m_mutex);
    m_freed.wait(lock, [this] { return m_free >= kPermits; });
}

void CountDownLatch::countDown() {
    // Notifying inside the lock: once the waiter sees the last permit, this object is gone.
    const std::lock_guard lock(m_mutex);
    ++m_free;
    m_freed.notify_all();
}
