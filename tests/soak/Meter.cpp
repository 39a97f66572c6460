#include "Meter.h"

#include <QCoreApplication>
#include <QEvent>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// In the sanitizers' run-time library; gcc 12 installs no header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kMegabyte = 1024.0 * 1024.0;
constexpr std::chrono::milliseconds kPause{5};
constexpr auto kBeat = static_cast<QEvent::Type>(QEvent::User + 77);

int entriesIn(const char* folder) {
    std::error_code error; // entries come and go while they are counted
    int count = 0;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        ++count;
    }
    return count;
}

double heapBytes() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return static_cast<double>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
#endif
}

} // namespace

Holding Holding::Now() {
    Holding now;
    double total = 0.0;
    double residentPages = 0.0;
    std::ifstream("/proc/self/statm") >> total >> residentPages;
    now.residentMb = residentPages * static_cast<double>(::sysconf(_SC_PAGESIZE)) / kMegabyte;
    now.heapMb = heapBytes() / kMegabyte;
    now.threads = entriesIn("/proc/self/task");
    now.files = entriesIn("/proc/self/fd");
    return now;
}

StallMeter::StallMeter() : m_thread([this] { Run(); }) {}

StallMeter::~StallMeter() {
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_answered.notify_all();
    m_thread.join();
}

void StallMeter::Run() {
    std::unique_lock lock(m_mutex);
    while (!m_ends) {
        m_isWaiting = true;
        lock.unlock();
        const Clock::time_point sent = Clock::now();
        QCoreApplication::postEvent(this, new QEvent(kBeat), Qt::HighEventPriority);
        lock.lock();
        while (m_isWaiting && !m_ends) {
            m_answered.wait_for(lock, kPause);
            const double ms = std::chrono::duration<double, std::milli>(Clock::now() - sent).count();
            if (ms > m_longestMs) {
                m_longestMs = ms;
                m_longestLabel = m_label;
            }
        }
        m_answered.wait_for(lock, kPause, [this] { return m_ends; });
    }
}

bool StallMeter::event(QEvent* event) {
    if (event->type() != kBeat) {
        return QObject::event(event);
    }
    {
        const std::lock_guard lock(m_mutex);
        m_isWaiting = false;
    }
    m_answered.notify_all();
    return true;
}

double StallMeter::TakeLongestMs(const char** action) {
    const std::lock_guard lock(m_mutex);
    if (action) {
        *action = m_longestLabel;
    }
    return std::exchange(m_longestMs, 0.0);
}
