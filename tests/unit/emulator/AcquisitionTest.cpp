#include "transport/emulator/Acquisition.h"

#include <gtest/gtest.h>

namespace Norvane::Transport::Emulator {
namespace {

using namespace std::chrono_literals;
using Mode = Acquisition::Mode;

const Clock::time_point kBegin{1h};

Acquisition::Parameters AtRate(std::chrono::nanoseconds period) {
    Acquisition::Parameters parameters;
    parameters.period = period;
    return parameters;
}

TEST(Acquisition, KeepsItsScheduleHoweverLateEachImageIsTaken) {
    Acquisition acquisition;
    const auto parameters = AtRate(3ms);
    acquisition.Start(kBegin);
    for (int i = 0; i < 1000; ++i) {
        const auto due = acquisition.Due(parameters);
        ASSERT_EQ(due, kBegin + i * 3ms);
        EXPECT_EQ(acquisition.Take(*due + 1ms, parameters), static_cast<std::uint64_t>(i));
    }
    // A host that was away for long does not get all the images at once.
    acquisition.Take(kBegin + 1h, parameters);
    EXPECT_EQ(acquisition.Due(parameters), kBegin + 1h + 3ms);
}

TEST(Acquisition, ANewRateCountsFromTheLastImage) {
    Acquisition acquisition;
    acquisition.Start(kBegin);
    acquisition.Take(kBegin, AtRate(1s));
    EXPECT_EQ(acquisition.Due(AtRate(20ms)), kBegin + 20ms);
}

TEST(Acquisition, ModesEndByThemselves) {
    for (const auto& [mode, count, images] :
         {std::tuple{Mode::SingleFrame, 7U, 1}, {Mode::MultiFrame, 3U, 3}, {Mode::MultiFrame, 1U, 1}}) {
        Acquisition acquisition;
        auto parameters = AtRate(1ms);
        parameters.mode = mode;
        parameters.frameCount = count;
        for (int start = 0; start < 2; ++start) {
            acquisition.Start(kBegin);
            int taken = 0;
            while (const auto due = acquisition.Due(parameters)) {
                acquisition.Take(*due, parameters);
                ++taken;
            }
            EXPECT_EQ(taken, images);
            EXPECT_FALSE(acquisition.IsActive());
        }
    }
}

TEST(Acquisition, OneTriggerGivesOneImage) {
    Acquisition acquisition;
    auto parameters = AtRate(10ms);
    parameters.trigger[Acquisition::FrameStart] = true;
    parameters.triggerDelay = 2ms;
    acquisition.Trigger(Acquisition::FrameStart, kBegin, parameters); // before the start: lost
    acquisition.Start(kBegin);
    EXPECT_FALSE(acquisition.Due(parameters));
    acquisition.Trigger(Acquisition::FrameStart, kBegin + 5ms, parameters);
    acquisition.Trigger(Acquisition::FrameStart, kBegin + 6ms, parameters); // while one waits: lost
    ASSERT_EQ(acquisition.Due(parameters), kBegin + 7ms);
    acquisition.Take(kBegin + 7ms, parameters);
    EXPECT_FALSE(acquisition.Due(parameters));
    // A trigger that comes too early for the sensor waits for it.
    acquisition.Trigger(Acquisition::FrameStart, kBegin + 8ms, parameters);
    EXPECT_EQ(acquisition.Due(parameters), kBegin + 17ms);
}

TEST(Acquisition, ABurstTriggerGivesItsImagesAndAStartTriggerOpensTheGate) {
    Acquisition acquisition;
    auto parameters = AtRate(10ms);
    parameters.trigger[Acquisition::FrameBurstStart] = true;
    parameters.trigger[Acquisition::AcquisitionStart] = true;
    parameters.burstCount = 3;
    acquisition.Start(kBegin);
    acquisition.Trigger(Acquisition::FrameBurstStart, kBegin, parameters);
    EXPECT_FALSE(acquisition.Due(parameters));
    acquisition.Trigger(Acquisition::AcquisitionStart, kBegin + 1ms, parameters);
    int images = 0;
    while (const auto due = acquisition.Due(parameters)) {
        acquisition.Take(*due, parameters);
        ++images;
    }
    EXPECT_EQ(images, 3);
    acquisition.Trigger(Acquisition::FrameBurstStart, kBegin + 1s, parameters);
    EXPECT_EQ(acquisition.Due(parameters), kBegin + 1s);
}

} // namespace
} // namespace Norvane::Transport::Emulator
