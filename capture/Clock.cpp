#include "Clock.h"

#include <chrono>

namespace {

template <class StdClock>
class ChronoClock : public Clock {
public:
    std::int64_t NowNs() const override {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(StdClock::now().time_since_epoch())
            .count();
    }
};

} // namespace

const Clock& Clock::Wall() {
    static const ChronoClock<std::chrono::system_clock> clock;
    return clock;
}

const Clock& Clock::Monotonic() {
    static const ChronoClock<std::chrono::steady_clock> clock;
    return clock;
}
