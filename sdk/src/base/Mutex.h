#pragma once

#include <condition_variable>
#include <mutex>

/// A mutex whose use clang checks (-Wthread-safety): fields say which mutex guards them, functions which
/// mutex they need. Other compilers see plain std types.
#if defined(__clang__)
#define NORVANE_TSA(x) __attribute__((x))
#else
#define NORVANE_TSA(x)
#endif
#define CAPABILITY(x) NORVANE_TSA(capability(x))
#define SCOPED_CAPABILITY NORVANE_TSA(scoped_lockable)
#define GUARDED_BY(x) NORVANE_TSA(guarded_by(x))
#define REQUIRES(...) NORVANE_TSA(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) NORVANE_TSA(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) NORVANE_TSA(acquire_capability(__VA_ARGS__))
#define RELEASE(...) NORVANE_TSA(release_capability(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS NORVANE_TSA(no_thread_safety_analysis)

namespace Norvane {

class CAPABILITY("mutex") Mutex {
public:
    void lock() ACQUIRE() { m_mutex.lock(); }
    void unlock() RELEASE() { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

/// Holds a mutex for a scope; can be left and taken again inside it, as a condition variable does.
class SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexLock() RELEASE() {
        if (m_held) {
            m_mutex.unlock();
        }
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void lock() ACQUIRE() {
        m_mutex.lock();
        m_held = true;
    }
    void unlock() RELEASE() {
        m_mutex.unlock();
        m_held = false;
    }

private:
    Mutex& m_mutex;
    bool m_held = true;
};

/// Waits on a MutexLock.
using ConditionVariable = std::condition_variable_any;

} // namespace Norvane
