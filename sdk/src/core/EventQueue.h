#pragma once

#include "base/Mutex.h"

#include <deque>
#include <functional>
#include <thread>

namespace Norvane::Core {

/// Delivers arrival and removal events in order on a thread of its own, so that a slow handler delays neither
/// discovery nor a list. Owned by the system.
class EventQueue {
public:
    EventQueue();
    /// As Stop().
    ~EventQueue();
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// Any thread; `deliver` runs with no lock held.
    void Post(std::function<void()> deliver) EXCLUDES(m_mutex);
    /// Drops what is not delivered yet and waits for the delivery that goes on.
    void Stop() EXCLUDES(m_mutex);

private:
    void Run() EXCLUDES(m_mutex);

    Mutex m_mutex;
    ConditionVariable m_changed;
    std::deque<std::function<void()>> m_events GUARDED_BY(m_mutex);
    bool m_stopping GUARDED_BY(m_mutex) = false;
    std::thread m_thread;
};

} // namespace Norvane::Core
