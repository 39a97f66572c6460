#pragma once

#include "HighResolutionTimer.h"

#include <atomic>
#include <deque>

/// Turns one call per event into events per second, averaged over the latest intervals and published at a
/// pace that a person can read: on every event during the first two seconds, afterwards every two seconds.
/// Updated by one thread; any thread may read the rate.
class FrameRateCalculator {
public:
    explicit FrameRateCalculator(unsigned long span = 10, const Clock& clock = Clock::Wall());

    /// Records one event now.
    void UpdateFrameRate();
    /// Records one event by the time since the one before, in ms.
    void UpdateFrameRate(double intervalMs);
    void UpdateDisplayedFrameRate(double intervalMs);

    /// Events per second; 0.1 before the first event.
    double GetFrameRate() const { return m_frameRate; }
    double GetElapsedTimeInMilliseconds() { return m_timer.GetElapsedTimeInMilliseconds(); }

private:
    unsigned long m_span; // intervals that are averaged
    std::atomic<double> m_frameRate = 0.1;
    HighResolutionTimer m_timer;
    double m_currentTime = 0; // ms, as all times below
    double m_previousTime = 0;
    double m_lastInterval = 0;
    std::deque<double> m_intervals; // newest at the back
    unsigned long m_sampleCount = 0;
    double m_lastPublishTime = 0;
    double m_publishPeriod = 2000.0;
};
