#pragma once

#include "Clock.h"

#include <cstdint>

/// Time since Start(), in steps of one millisecond whatever the unit of the reading. Used by one thread at
/// a time.
class HighResolutionTimer {
public:
    explicit HighResolutionTimer(const Clock& clock = Clock::Wall()) : m_clock(clock) {}

    void Start() { m_startTime = m_clock.NowNs(); }
    void Stop() { m_stopTime = m_clock.NowNs(); }

    /// Every reading also stops the timer. The value is a multiple of 1000.
    double GetElapsedTimeInMicroseconds();
    double GetElapsedTimeInMilliseconds() { return GetElapsedTimeInMicroseconds() / 1000.0; }
    double GetElapsedTimeInSeconds() { return GetElapsedTimeInMilliseconds() / 1000.0; }

private:
    const Clock& m_clock;
    std::int64_t m_startTime = 0; // ns
    std::int64_t m_stopTime = 0;
};
