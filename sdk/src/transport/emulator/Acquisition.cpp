#include "transport/emulator/Acquisition.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

/// How far the images may lag behind their schedule, on a busy host, before the schedule gives in.
constexpr std::chrono::milliseconds kLargestLag{250};

} // namespace

void Acquisition::Start(Clock::time_point now) {
    m_active = true;
    m_number = 0;
    m_last.reset();
    m_start = now;
    m_burstLeft = 0;
    std::fill(std::begin(m_pending), std::end(m_pending), std::nullopt);
}

void Acquisition::Trigger(TriggerKind kind, Clock::time_point now, const Parameters& parameters) {
    if (m_active && parameters.trigger[kind] && !m_pending[kind]) {
        m_pending[kind] = now;
    }
}

std::optional<Clock::time_point> Acquisition::Earliest(const Parameters& parameters) const {
    Clock::time_point due = m_last ? *m_last + parameters.period : m_start;
    if (parameters.trigger[AcquisitionStart] && m_number == 0) {
        if (!m_pending[AcquisitionStart]) {
            return std::nullopt;
        }
        due = std::max(due, *m_pending[AcquisitionStart] + parameters.triggerDelay);
    }
    for (const TriggerKind kind : {FrameBurstStart, FrameStart}) {
        if (!parameters.trigger[kind] || (kind == FrameBurstStart && m_burstLeft > 0)) {
            continue;
        }
        if (!m_pending[kind]) {
            return std::nullopt;
        }
        due = std::max(due, *m_pending[kind] + parameters.triggerDelay);
    }
    return due;
}

std::optional<Clock::time_point> Acquisition::Due(const Parameters& parameters) const {
    return m_active ? Earliest(parameters) : std::nullopt;
}

std::uint64_t Acquisition::Take(Clock::time_point now, const Parameters& parameters) {
    const Clock::time_point due = Earliest(parameters).value_or(now);
    m_last = now - due > std::max<Clock::duration>(kLargestLag, parameters.period) ? now : due;
    m_pending[AcquisitionStart].reset();
    m_pending[FrameStart].reset();
    if (m_burstLeft == 0 && parameters.trigger[FrameBurstStart]) {
        m_burstLeft = std::max<std::uint64_t>(1, parameters.burstCount);
        m_pending[FrameBurstStart].reset();
    }
    m_burstLeft -= m_burstLeft > 0 ? 1 : 0;
    const std::uint64_t number = m_number++;
    if (parameters.mode == Mode::SingleFrame ||
        (parameters.mode == Mode::MultiFrame && m_number >= parameters.frameCount)) {
        m_active = false;
    }
    return number;
}

} // namespace Norvane::Transport::Emulator
