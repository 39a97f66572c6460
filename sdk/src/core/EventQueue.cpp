#include "core/EventQueue.h"

#include "core/LibraryThread.h"
#include "norvane/Log.h"

#include <string>
#include <utility>

namespace Norvane::Core {

EventQueue::EventQueue() : m_thread(StartThread("norvane-events", [this] { Run(); })) {}

EventQueue::~EventQueue() {
    Stop();
}

void EventQueue::Post(std::function<void()> deliver) {
    {
        MutexLock lock(m_mutex);
        m_events.push_back(std::move(deliver));
    }
    m_changed.notify_all();
}

void EventQueue::Stop() {
    {
        MutexLock lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void EventQueue::Run() {
    MutexLock lock(m_mutex);
    while (!m_stopping) {
        if (m_events.empty()) {
            m_changed.wait(lock);
            continue;
        }
        const std::function<void()> deliver = std::move(m_events.front());
        m_events.pop_front();
        lock.unlock();
        try {
            deliver();
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("an event handler failed: ") + error.what());
        }
        lock.lock();
    }
}

} // namespace Norvane::Core
