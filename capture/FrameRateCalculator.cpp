#include "FrameRateCalculator.h"

#include <numeric>

FrameRateCalculator::FrameRateCalculator(unsigned long span, const Clock& clock)
    : m_span(span), m_timer(clock) {
    m_timer.Start();
}

void FrameRateCalculator::UpdateFrameRate() {
    m_currentTime = GetElapsedTimeInMilliseconds();
    if (m_previousTime == 0) {
        m_previousTime = m_currentTime;
    }
    m_lastInterval = m_currentTime - m_previousTime;
    m_previousTime = m_currentTime;
    UpdateDisplayedFrameRate(m_lastInterval);
}

void FrameRateCalculator::UpdateFrameRate(double intervalMs) {
    m_lastInterval = intervalMs;
    UpdateDisplayedFrameRate(intervalMs);
}

void FrameRateCalculator::UpdateDisplayedFrameRate(double intervalMs) {
    m_intervals.push_back(intervalMs);
    while (m_intervals.size() > m_span) {
        m_intervals.pop_front();
    }
    m_sampleCount = m_intervals.size();

    const double now = GetElapsedTimeInMilliseconds();
    if (now - m_lastPublishTime <= m_publishPeriod && m_publishPeriod <= now) {
        return;
    }
    const double sum = std::accumulate(m_intervals.begin(), m_intervals.end(), 0.0);
    m_frameRate = sum == 0.0 ? 0.0 : 1000.0 / (sum / static_cast<double>(m_sampleCount));
    m_lastPublishTime = now;
}
