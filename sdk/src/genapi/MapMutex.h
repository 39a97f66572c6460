#pragma once

#include "base/Mutex.h"

#include <atomic>
#include <mutex>

namespace Norvane::GenApi {

/// The recursive lock of a node map. It knows whether somebody waits for it, so that a thread with a long
/// series of operations can let others in: a mutex that is taken again at once gives them no turn.
class CAPABILITY("mutex") MapMutex {
public:
    void lock() ACQUIRE() {
        if (!m_mutex.try_lock()) {
            m_waiting.fetch_add(1);
            m_mutex.lock();
            m_waiting.fetch_sub(1);
        }
    }
    void unlock() RELEASE() { m_mutex.unlock(); }
    bool IsWaitedFor() const { return m_waiting.load() > 0; }

private:
    std::recursive_mutex m_mutex;
    std::atomic<int> m_waiting{0};
};

} // namespace Norvane::GenApi
