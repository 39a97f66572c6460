#include "HighResolutionTimer.h"

double HighResolutionTimer::GetElapsedTimeInMicroseconds() {
    Stop();
    const std::int64_t wholeMilliseconds = (m_stopTime - m_startTime) / 1'000'000;
    return static_cast<double>(wholeMilliseconds) * 1000.0;
}
