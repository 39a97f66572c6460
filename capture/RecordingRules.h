#pragma once

#include "Clock.h"
#include "RecordingTypes.h"

/// Which images of a buffered run are kept, and when the run is over. Holds what the rules must remember
/// between two images; the caller guards it where threads meet.
class RecordingRules {
public:
    explicit RecordingRules(const Clock& clock) : m_clock(clock) {}

    /// Begins a run. @param cameraFrameRate  frames per second; 0 when it is not known.
    void Start(const RecordingSettings& settings, double cameraFrameRate);
    /// Whether the image that just arrived is left out. Counts it, so it is asked once per image.
    bool ShouldSkipImage(const RecordingSettings& settings);
    /// @param buffered  images taken into the buffer so far.
    bool IsDoneGrabbing(const RecordingSettings& settings, unsigned int buffered) const;

private:
    std::int64_t ElapsedMs() const { return (m_clock.NowNs() - m_startNs) / 1'000'000; }

    const Clock& m_clock;
    unsigned int m_skipCounter = 0; // frames since the last one that was kept
    std::int64_t m_startNs = 0;
    std::int64_t m_nextSaveMs = 0;
    std::int64_t m_endMs = 0;
};
