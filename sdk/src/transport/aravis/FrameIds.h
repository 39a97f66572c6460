#pragma once

#include <cstdint>

namespace Norvane::Transport {

/// Makes the 16-bit block numbers of GigE Vision (1 to 65535, then 1 again; GigE Vision 2.0, 25.2.1) one
/// count that never falls back. Wider numbers, from extended identifiers or USB3 Vision, pass unchanged. Used
/// by one thread.
class FrameIds {
public:
    std::uint64_t Continue(std::uint64_t raw) {
        constexpr std::uint64_t kPeriod = 0xFFFF;
        if (m_wide || raw > kPeriod || raw == 0) {
            m_wide = true; // a 16-bit counter skips zero
            m_last = raw;
            return raw;
        }
        if (m_last == 0) {
            m_last = raw;
            return raw;
        }
        // The shorter way round: images can come a little out of order, but never half a period apart.
        const std::uint64_t forward = (raw + kPeriod - (m_last - 1) % kPeriod - 1) % kPeriod;
        if (forward <= kPeriod / 2) {
            m_last += forward;
            return m_last;
        }
        const std::uint64_t back = kPeriod - forward;
        if (m_last <= back) { // the first number was not the first
            m_last = raw;
            return raw;
        }
        return m_last - back;
    }
    /// The number of an image that has lost its own: most likely it follows the one before. 0 without one.
    std::uint64_t Continue() { return m_last == 0 ? 0 : ++m_last; }

private:
    std::uint64_t m_last = 0;
    bool m_wide = false;
};

} // namespace Norvane::Transport
