#pragma once

#include <cstdint>

/// A source of time that logic takes by reference, so that rates and time rules can be driven in a test.
/// Read on any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual std::int64_t NowNs() const = 0;

    /// The system's wall clock, nanoseconds since the epoch.
    static const Clock& Wall();
    /// A clock that never jumps.
    static const Clock& Monotonic();
};
