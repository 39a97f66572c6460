#include "imaging/RowPool.h"

#include "base/Mutex.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <thread>
#include <vector>

#include <hwy/cache_control.h>

namespace Norvane::Imaging {
namespace {

constexpr std::chrono::microseconds kSpin{200};

/// One call of RunRows, on its caller's stack.
struct Job {
    RowTask& task;
    const std::size_t rows, band;
    unsigned helpersWanted;
    std::atomic<unsigned> helpersInside{0}; ///< changed with the pool's mutex held
    Job* next = nullptr;
    std::atomic<std::size_t> taken{0};
    std::atomic<bool> failed{false};
    std::exception_ptr failure; ///< written by whoever sets `failed`, read when all have left

    Job(RowTask& t, std::size_t r, std::size_t b, unsigned h) : task(t), rows(r), band(b), helpersWanted(h) {}

    void Work() {
        for (;;) {
            const std::size_t first = taken.fetch_add(band, std::memory_order_relaxed);
            if (first >= rows) {
                return;
            }
            try {
                task.Rows(first, std::min(first + band, rows));
            } catch (...) {
                if (!failed.exchange(true)) {
                    failure = std::current_exception();
                }
                taken = rows;
            }
        }
    }

    /// The helpers are at their last bands, which are soon done: to fall asleep and be woken takes as long.
    void AwaitHelpers() const {
        const auto patience = std::chrono::steady_clock::now() + kSpin;
        while (helpersInside > 0 && std::chrono::steady_clock::now() < patience) {
            hwy::Pause();
        }
    }
};

/// The row workers. Made by the first caller that can use one, joined when the program ends.
class RowPool {
public:
    RowPool() {
        const unsigned workers = std::max(1U, std::thread::hardware_concurrency()) - 1;
        m_threads.reserve(workers);
        for (unsigned i = 0; i < workers; ++i) {
            m_threads.emplace_back([this] { Serve(); });
        }
    }

    ~RowPool() {
        {
            MutexLock lock(m_mutex);
            m_ending = true;
        }
        m_wake.notify_all();
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    void Run(Job& job) {
        const bool wantsOne = job.helpersWanted == 1; // the helpers count it down from here on
        {
            MutexLock lock(m_mutex);
            job.next = m_jobs;
            m_jobs = &job;
        }
        if (wantsOne) {
            m_wake.notify_one();
        } else {
            m_wake.notify_all();
        }
        job.Work();
        job.AwaitHelpers();
        MutexLock lock(m_mutex);
        Remove(job);
        while (job.helpersInside > 0) {
            m_left.wait(lock);
        }
        if (job.failure) {
            std::rethrow_exception(job.failure);
        }
    }

private:
    void Serve() NO_THREAD_SAFETY_ANALYSIS {
        MutexLock lock(m_mutex);
        for (;;) {
            Job* job = m_jobs;
            while (job && job->helpersWanted == 0) {
                job = job->next;
            }
            if (job) {
                --job->helpersWanted;
                ++job->helpersInside;
                lock.unlock();
                job->Work();
                lock.lock();
                if (--job->helpersInside == 0) {
                    m_left.notify_all();
                }
            } else if (m_ending) {
                return;
            } else {
                m_wake.wait(lock);
            }
        }
    }

    void Remove(Job& job) REQUIRES(m_mutex) {
        Job** link = &m_jobs;
        while (*link != &job) {
            link = &(*link)->next;
        }
        *link = job.next;
    }

    Mutex m_mutex;
    ConditionVariable m_wake, m_left;
    Job* m_jobs GUARDED_BY(m_mutex) = nullptr;
    bool m_ending GUARDED_BY(m_mutex) = false;
    std::vector<std::thread> m_threads;
};

RowPool& ThePool() {
    static RowPool pool;
    return pool;
}

std::atomic<unsigned> g_limit{0};

} // namespace

void StartRowWorkers() {
    ThePool();
}

void LimitRowThreads(unsigned threads) noexcept {
    g_limit = threads;
}

unsigned RowThreads() noexcept {
    const unsigned hardware = std::max(1U, std::thread::hardware_concurrency());
    const unsigned limit = g_limit;
    return limit == 0 ? hardware : std::min(limit, hardware);
}

void RunRows(std::size_t rows, std::size_t grain, RowTask& task) {
    const std::size_t bands = rows / std::max<std::size_t>(grain, 1);
    const auto threads = static_cast<unsigned>(std::min<std::size_t>(RowThreads(), bands));
    if (threads < 2) {
        if (rows > 0) {
            task.Rows(0, rows);
        }
        return;
    }
    // Several bands for each thread, so that one that is interrupted holds nobody up for long.
    const std::size_t band = std::max(grain, (rows + threads * 8 - 1) / (threads * 8));
    Job job(task, rows, band, threads - 1);
    ThePool().Run(job);
}

} // namespace Norvane::Imaging
