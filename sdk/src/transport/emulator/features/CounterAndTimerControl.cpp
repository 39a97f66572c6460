#include "transport/emulator/features/Features.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::uint32_t kCounters = 2, kTimers = 2;

enum CounterSource { CounterOff = 0, CountsFrames = 1, CountsTriggers = 2, CountsMilliseconds = 3 };

void Count(RegisterBank& bank, CounterSource source) {
    for (std::size_t i = 0; i < kCounters; ++i) {
        if (bank.Int("CounterEventSource", i) == source) {
            const std::int64_t duration = std::max<std::int64_t>(1, bank.Int("CounterDuration", i));
            bank.SetInt("CounterValue", (bank.Int("CounterValue", i) + 1) % (duration + 1), i);
        }
    }
}

} // namespace

void CountTrigger(CameraModel& camera) {
    Count(camera.Bank(), CountsTriggers);
}

bool TimerIsActive(CameraModel& camera, std::size_t timer) {
    RegisterBank& bank = camera.Bank();
    const std::int64_t started = bank.Int("TimerStarted", timer);
    const double elapsedUs = static_cast<double>(camera.NanosecondsSincePowerUp() - started) / 1000.0;
    const double delay = bank.Real("TimerDelay", timer);
    return started >= 0 && elapsedUs >= delay && elapsedUs < delay + bank.Real("TimerDuration", timer);
}

void CountImage(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    Count(bank, CountsFrames);
    for (std::size_t i = 0; i < kTimers; ++i) {
        if (bank.Int("TimerTriggerSource", i) == 1) {
            bank.SetInt("TimerStarted", camera.NanosecondsSincePowerUp(), i);
        }
    }
}

void AddCounterAndTimerControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("CounterAndTimerControl", "Counters of events, and timers.", "Root", "Expert");
    f.Enumeration("CounterSelector", "Which counter the features below set.")
        .Expert()
        .Selects({"CounterEventSource", "CounterReset", "CounterValue", "CounterValueAtReset",
                  "CounterDuration", "CounterStatus"})
        .Entry("Counter0", 0)
        .Entry("Counter1", 1);
    f.Enumeration("CounterEventSource", "What is counted.")
        .Expert()
        .By("CounterSelector", kCounters)
        .Stored()
        .Entry("Off", CounterOff)
        .Entry("FrameStart", CountsFrames)
        .Entry("TriggerSoftware", CountsTriggers)
        .Entry("TimestampTick", CountsMilliseconds);
    bank.Add("CounterBase", RegisterBank::Type::Signed, 8, 0, kCounters);
    const auto current = [&bank, &camera](std::size_t i) {
        return bank.Int("CounterEventSource", i) == CountsMilliseconds
                   ? (camera.NanosecondsSincePowerUp() / 1000000 - bank.Int("CounterBase", i)) & 0x7FFFFFFF
                   : bank.Int("CounterValue", i);
    };
    f.Command("CounterReset", "Sets the counter to 0.").Expert().OnWrite([&bank, &camera, current] {
        const auto i =
            std::min<std::size_t>(kCounters - 1, static_cast<std::size_t>(bank.Int("CounterSelector")));
        bank.SetInt("CounterValueAtReset", current(i), i);
        bank.SetInt("CounterValue", 0, i);
        bank.SetInt("CounterBase", camera.NanosecondsSincePowerUp() / 1000000, i);
    });
    f.Integer("CounterValue", "What was counted so far.")
        .Expert()
        .By("CounterSelector", kCounters)
        .Min(0)
        .Max(0x7FFFFFFF)
        .Polled(500)
        .InvalidatedBy({"CounterReset"})
        .OnRead([&bank, current] {
            for (std::size_t i = 0; i < kCounters; ++i) {
                bank.SetInt("CounterValue", current(i), i);
            }
        });
    f.Integer("CounterValueAtReset", "What was counted before the last reset.")
        .ReadOnly()
        .Expert()
        .By("CounterSelector", kCounters)
        .InvalidatedBy({"CounterReset"});
    f.Integer("CounterDuration", "The count after which the counter starts again.")
        .Expert()
        .By("CounterSelector", kCounters)
        .Min(1)
        .Max(0x7FFFFFFF)
        .Stored()
        .Initial(0x7FFFFFFF);
    f.Enumeration("CounterStatus", "What the counter does.")
        .ReadOnly()
        .Expert()
        .By("CounterSelector", kCounters)
        .Polled(500)
        .Entry("CounterIdle", 0)
        .Entry("CounterActive", 1)
        .OnRead([&bank] {
            for (std::size_t i = 0; i < kCounters; ++i) {
                bank.SetInt("CounterStatus", bank.Int("CounterEventSource", i) != CounterOff, i);
            }
        });

    f.Enumeration("TimerSelector", "Which timer the features below set.")
        .Expert()
        .Selects(
            {"TimerDuration", "TimerDelay", "TimerReset", "TimerValue", "TimerStatus", "TimerTriggerSource"})
        .Entry("Timer0", 0)
        .Entry("Timer1", 1);
    bank.Add("TimerStarted", RegisterBank::Type::Signed, 8, 0, kTimers);
    for (std::size_t i = 0; i < kTimers; ++i) {
        bank.SetInt("TimerStarted", -1, i);
    }
    f.Float("TimerDuration", "How long the timer's signal lasts.")
        .Expert()
        .Unit("us")
        .By("TimerSelector", kTimers)
        .Min(1)
        .Max(10000000)
        .Stored()
        .Initial(1000.0);
    f.Float("TimerDelay", "Time from the trigger to the timer's signal.")
        .Expert()
        .Unit("us")
        .By("TimerSelector", kTimers)
        .Min(0)
        .Max(10000000)
        .Stored();
    f.Command("TimerReset", "Starts the timer.").Expert().OnWrite([&bank, &camera] {
        const auto i =
            std::min<std::size_t>(kTimers - 1, static_cast<std::size_t>(bank.Int("TimerSelector")));
        bank.SetInt("TimerStarted", camera.NanosecondsSincePowerUp(), i);
    });
    f.Float("TimerValue", "Time since the timer was started, up to its end.")
        .ReadOnly()
        .Expert()
        .Unit("us")
        .By("TimerSelector", kTimers)
        .Min(0)
        .Max(20000000)
        .Polled(500)
        .InvalidatedBy({"TimerReset"})
        .OnRead([&bank, &camera] {
            for (std::size_t i = 0; i < kTimers; ++i) {
                const std::int64_t started = bank.Int("TimerStarted", i);
                const double passed =
                    started < 0 ? 0.0
                                : static_cast<double>(camera.NanosecondsSincePowerUp() - started) / 1000.0;
                bank.SetReal("TimerValue",
                             std::min(passed, bank.Real("TimerDelay", i) + bank.Real("TimerDuration", i)), i);
            }
        });
    f.Enumeration("TimerStatus", "What the timer does.")
        .ReadOnly()
        .Expert()
        .By("TimerSelector", kTimers)
        .Polled(500)
        .InvalidatedBy({"TimerReset"})
        .Entry("TimerIdle", 0)
        .Entry("TimerActive", 1)
        .OnRead([&bank, &camera] {
            for (std::size_t i = 0; i < kTimers; ++i) {
                bank.SetInt("TimerStatus", TimerIsActive(camera, i), i);
            }
        });
    f.Enumeration("TimerTriggerSource", "What starts the timer.")
        .Expert()
        .By("TimerSelector", kTimers)
        .Stored()
        .Entry("Off", 0)
        .Entry("FrameStart", 1);
}

} // namespace Norvane::Transport::Emulator
