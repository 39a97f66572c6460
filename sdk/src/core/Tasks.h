#pragma once

#include "base/Mutex.h"

#include <functional>
#include <list>
#include <thread>

namespace Norvane::Core {

/// Runs jobs that may wait for a device (opening, closing, forcing an address), each on a thread of its own,
/// so that no caller and no other job waits for a device that does not answer. Owned by the system; called on
/// any thread. Jobs are rare, which is why there is no pool.
class Tasks {
public:
    Tasks() = default;
    /// As Finish().
    ~Tasks();
    Tasks(const Tasks&) = delete;
    Tasks& operator=(const Tasks&) = delete;

    /// False, and the job is not run, once Finish() was called.
    bool Run(std::function<void()> job) EXCLUDES(m_mutex);
    /// Waits for the jobs that run and takes no more.
    void Finish() EXCLUDES(m_mutex);

private:
    struct Job {
        std::thread thread;
        bool done = false;
    };

    Mutex m_mutex;
    std::list<Job> m_jobs GUARDED_BY(m_mutex);
    bool m_finished GUARDED_BY(m_mutex) = false;
};

} // namespace Norvane::Core
