#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace Norvane::Transport::Emulator {

using Clock = std::chrono::steady_clock;

/// When the camera exposes its images: acquisition mode, frame rate and triggers. It knows no thread and no
/// clock; the time comes in. Every due time is counted from the one before, so that the rate does not drift.
class Acquisition {
public:
    enum class Mode { Continuous = 0, SingleFrame = 1, MultiFrame = 2 };
    enum TriggerKind { AcquisitionStart = 0, FrameStart = 1, FrameBurstStart = 2, kTriggerKinds = 3 };

    struct Parameters {
        Mode mode = Mode::Continuous;
        std::uint64_t frameCount = 1;      ///< images of MultiFrame
        std::uint64_t burstCount = 1;      ///< images of one FrameBurstStart trigger
        std::chrono::nanoseconds period{}; ///< shortest time between two images
        bool trigger[kTriggerKinds] = {};  ///< which triggers are waited for
        std::chrono::nanoseconds triggerDelay{};
    };

    void Start(Clock::time_point now);
    void Stop() { m_active = false; }
    bool IsActive() const { return m_active; }
    /// A trigger of this kind arrived. One that comes while nothing waits for it is lost, except that one is
    /// kept while the image before it is still under way.
    void Trigger(TriggerKind kind, Clock::time_point now, const Parameters& parameters);

    /// When the next image is due; nothing while stopped or waiting for a trigger.
    std::optional<Clock::time_point> Due(const Parameters& parameters) const;
    /// Takes the image that is due and returns its number, counted from 0 at each start. After the last image
    /// of the mode the acquisition is no longer active.
    std::uint64_t Take(Clock::time_point now, const Parameters& parameters);

private:
    std::optional<Clock::time_point> Earliest(const Parameters& parameters) const;

    bool m_active = false;
    std::uint64_t m_number = 0;
    std::optional<Clock::time_point> m_last; ///< due time of the image before
    Clock::time_point m_start;
    std::uint64_t m_burstLeft = 0;
    std::optional<Clock::time_point> m_pending[kTriggerKinds]; ///< arrival of a trigger that is not used up
};

} // namespace Norvane::Transport::Emulator
