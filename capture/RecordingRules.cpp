#include "RecordingRules.h"

#include <algorithm>

void RecordingRules::Start(const RecordingSettings& settings, double cameraFrameRate) {
    m_skipCounter = 0;
    m_nextSaveMs = 0;
    m_endMs = settings.runMs;
    if (settings.saveOption == SAVE_TIME_LAPSE) {
        // One frame period early, because a frame shows what was there one period before it arrived. Nothing
        // early where the camera does not tell its rate.
        const double period = cameraFrameRate > 0.0 ? std::min(1000.0 / cameraFrameRate, 4294967295.0) : 0.0;
        const std::int64_t periodMs = static_cast<unsigned int>(period);
        if (settings.intervalMs >= periodMs) {
            m_nextSaveMs = settings.intervalMs - periodMs;
            m_endMs = std::max<std::int64_t>(settings.runMs - periodMs, 0);
        }
    }
    m_startNs = m_clock.NowNs();
}

bool RecordingRules::ShouldSkipImage(const RecordingSettings& settings) {
    switch (settings.saveOption) {
    case SAVE_ONE_OF_N:
        if (++m_skipCounter != settings.everyN) {
            return true;
        }
        m_skipCounter = 0;
        return false;
    case SAVE_TIME_LAPSE:
        if (m_nextSaveMs == 0) {
            return false;
        }
        if (ElapsedMs() < m_nextSaveMs) {
            return true;
        }
        m_nextSaveMs += settings.intervalMs;
        return false;
    case SAVE_FRAME_COUNT:
    case SAVE_FOR_TIME:
        break;
    }
    return false;
}

bool RecordingRules::IsDoneGrabbing(const RecordingSettings& settings, unsigned int buffered) const {
    switch (settings.saveOption) {
    case SAVE_FRAME_COUNT:
        return settings.framesToGrab != 0 && buffered >= settings.framesToGrab;
    case SAVE_ONE_OF_N:
        return buffered >= settings.framesToKeep;
    case SAVE_FOR_TIME:
        return false;
    case SAVE_TIME_LAPSE:
        return ElapsedMs() >= m_endMs;
    }
    return true;
}
