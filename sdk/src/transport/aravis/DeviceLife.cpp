#include "transport/aravis/DeviceLife.h"

#include "norvane/Log.h"

#include <utility>

namespace Norvane::Transport {

void DeviceLife::Close() {
    const MutexLock lock(m_mutex);
    m_closed = true;
    m_handler = nullptr;
    m_ended.notify_all();
}

void DeviceLife::MarkLost(const std::string& reason) {
    std::map<std::uint64_t, std::function<void()>> wakers;
    {
        const MutexLock lock(m_mutex);
        if (m_lost || m_closed) {
            return;
        }
        m_lost = true;
        wakers = m_wakers;
        m_ended.notify_all();
    }
    Log(LogLevel::Warning, m_label + ": the connection is lost: " + reason);
    for (const auto& [key, waker] : wakers) {
        waker();
    }
}

void DeviceLife::SetLostHandler(std::function<void()> handler) {
    const MutexLock lock(m_mutex);
    m_handler = std::move(handler);
    m_ended.notify_all();
}

void DeviceLife::TellWhenLost() {
    std::function<void()> handler;
    {
        MutexLock lock(m_mutex);
        while (!m_closed && !(m_lost && m_handler)) {
            m_ended.wait(lock);
        }
        if (m_closed) {
            return;
        }
        handler = std::exchange(m_handler, nullptr);
    }
    handler();
}

std::uint64_t DeviceLife::AddWaker(std::function<void()> waker) {
    const MutexLock lock(m_mutex);
    m_wakers[m_nextKey] = std::move(waker);
    return m_nextKey++;
}

void DeviceLife::RemoveWaker(std::uint64_t key) {
    const MutexLock lock(m_mutex);
    m_wakers.erase(key);
}

bool DeviceLife::WaitForEnd(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    MutexLock lock(m_mutex);
    while (!m_lost && !m_closed) {
        if (m_ended.wait_until(lock, deadline) == std::cv_status::timeout) {
            break;
        }
    }
    return m_lost || m_closed;
}

} // namespace Norvane::Transport
