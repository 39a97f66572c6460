#include "core/Tasks.h"

#include "core/LibraryThread.h"
#include "norvane/Log.h"

#include <string>
#include <utility>

namespace Norvane::Core {

Tasks::~Tasks() {
    Finish();
}

bool Tasks::Run(std::function<void()> job) {
    std::list<Job> ended;
    MutexLock lock(m_mutex);
    if (m_finished) {
        return false;
    }
    for (auto it = m_jobs.begin(); it != m_jobs.end();) {
        const auto next = std::next(it);
        if (it->done) {
            ended.splice(ended.end(), m_jobs, it);
        }
        it = next;
    }
    Job& slot = m_jobs.emplace_back();
    slot.thread = StartThread("norvane-task", [this, &slot, job = std::move(job)]() mutable {
        try {
            job();
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("a background job failed: ") + error.what());
        }
        job = nullptr;
        MutexLock inner(m_mutex);
        slot.done = true;
    });
    lock.unlock();
    for (Job& old : ended) {
        old.thread.join();
    }
    return true;
}

void Tasks::Finish() {
    std::list<Job> jobs;
    {
        MutexLock lock(m_mutex);
        m_finished = true;
        // Spliced nodes keep their address, so a running job still finds its slot.
        jobs.splice(jobs.end(), m_jobs);
    }
    for (Job& job : jobs) {
        job.thread.join();
    }
}

} // namespace Norvane::Core
