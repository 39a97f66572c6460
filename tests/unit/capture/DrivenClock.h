#pragma once

#include "Clock.h"

#include <atomic>

/// Time that passes when the test says so.
class DrivenClock : public Clock {
public:
    std::int64_t NowNs() const override { return m_now; }
    void Pass(double milliseconds) { m_now += static_cast<std::int64_t>(milliseconds * 1e6); }

private:
    std::atomic<std::int64_t> m_now = 1'000'000'000;
};
