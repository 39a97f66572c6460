#include "transport/aravis/DeviceWorker.h"

#include <algorithm>
#include <thread>

namespace Norvane::Transport {

using Clock = std::chrono::steady_clock;

DeviceWorker::DeviceWorker() : m_state(std::make_shared<State>()) {
    // Detached because a call into a dead device cannot be cut short; the thread owns its share of the state.
    std::thread([state = m_state] { Loop(state); }).detach();
}

DeviceWorker::~DeviceWorker() {
    const auto deadline = Clock::now() + std::chrono::seconds(1);
    MutexLock lock(m_state->mutex);
    m_state->stop = true;
    m_state->changed.notify_all();
    while (!m_state->ended) {
        if (m_state->changed.wait_until(lock, deadline) == std::cv_status::timeout) {
            break;
        }
    }
}

void DeviceWorker::Loop(const std::shared_ptr<State>& state) {
    MutexLock lock(state->mutex);
    for (;;) {
        while (state->queue.empty() && !state->stop) {
            state->changed.wait(lock);
        }
        if (state->queue.empty()) {
            break;
        }
        const std::shared_ptr<Job> job = state->queue.front();
        state->queue.pop_front();
        if (!job->cancelled) {
            job->started = true;
            lock.unlock();
            std::exception_ptr failure;
            try {
                job->work();
            } catch (...) {
                failure = std::current_exception();
            }
            job->work = nullptr; // what it owns ends here, on this thread, also when nobody waits any more
            lock.lock();
            job->failure = failure;
        }
        job->done = true;
        state->changed.notify_all();
    }
    state->ended = true;
    state->changed.notify_all();
}

DeviceWorker::Outcome DeviceWorker::Run(std::function<void()> work, const Patience& patience) {
    const auto job = std::make_shared<Job>();
    job->work = std::move(work);
    const auto deadline = Clock::now() + patience.maximum;

    MutexLock lock(m_state->mutex);
    if (m_state->interrupted) {
        return Outcome::Interrupted;
    }
    m_state->queue.push_back(job);
    m_state->changed.notify_all();
    Outcome outcome = Outcome::Done;
    auto nextLook = Clock::now() + patience.slice;
    while (!job->done) {
        if (m_state->interrupted) {
            outcome = Outcome::Interrupted;
            break;
        }
        if (m_state->changed.wait_until(lock, std::min(nextLook, deadline)) != std::cv_status::timeout ||
            job->done) {
            continue;
        }
        if (Clock::now() >= deadline) {
            outcome = Outcome::TimedOut;
            break;
        }
        lock.unlock();
        const bool there = !patience.isThere || patience.isThere();
        lock.lock();
        if (!there && !job->done) {
            outcome = Outcome::Gone;
            break;
        }
        nextLook = Clock::now() + patience.slice;
    }
    if (outcome != Outcome::Done) {
        job->cancelled = true;
        if (!job->started) {
            job->work = nullptr;
        }
        return outcome;
    }
    if (job->failure) {
        std::rethrow_exception(job->failure);
    }
    return Outcome::Done;
}

void DeviceWorker::Post(std::function<void()> work) {
    const auto job = std::make_shared<Job>();
    job->work = std::move(work);
    const MutexLock lock(m_state->mutex);
    m_state->queue.push_back(job);
    m_state->changed.notify_all();
}

void DeviceWorker::Interrupt() {
    const MutexLock lock(m_state->mutex);
    m_state->interrupted = true;
    m_state->changed.notify_all();
}

} // namespace Norvane::Transport
