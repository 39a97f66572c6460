#pragma once

#include <QObject>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

/// What this process holds of the machine right now.
struct Holding {
    double residentMb = 0.0;
    double heapMb = 0.0; ///< bytes that the program asked for and has not given back
    int threads = 0;
    int files = 0;

    static Holding Now();
};

/// Measures from a thread of its own how long the user-interface thread leaves an event unanswered. Made and
/// destroyed on the user-interface thread.
class StallMeter : public QObject {
public:
    StallMeter();
    ~StallMeter() override;

    /// What the user-interface thread does next; a string that lives forever. User-interface thread.
    void Label(const char* action) { m_label = action; }
    /// The longest time since the last call in milliseconds, and what was done then. It counts while the
    /// event still waits. User-interface thread.
    double TakeLongestMs(const char** action = nullptr);

protected:
    bool event(QEvent* event) override;

private:
    void Run();

    std::mutex m_mutex;
    std::condition_variable m_answered;
    bool m_isWaiting = false;
    bool m_ends = false;
    double m_longestMs = 0.0;
    const char* m_longestLabel = "";
    std::atomic<const char*> m_label = "start";
    std::thread m_thread;
};
