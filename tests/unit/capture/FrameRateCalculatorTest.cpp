#include "FrameRateCalculator.h"

#include "DrivenClock.h"

#include <gtest/gtest.h>

namespace {

void runEvents(FrameRateCalculator& calculator, DrivenClock& clock, int count, double periodMs) {
    for (int i = 0; i < count; ++i) {
        clock.Pass(periodMs);
        calculator.UpdateFrameRate();
    }
}

TEST(HighResolutionTimer, CountsWholeMilliseconds) {
    DrivenClock clock;
    HighResolutionTimer timer(clock);
    timer.Start();
    clock.Pass(1234.999);
    EXPECT_EQ(timer.GetElapsedTimeInMicroseconds(), 1'234'000.0);
    EXPECT_EQ(timer.GetElapsedTimeInMilliseconds(), 1234.0);
    EXPECT_EQ(timer.GetElapsedTimeInSeconds(), 1.234);
}

TEST(FrameRateCalculator, BeginsWithATenthAndAnEventAloneMakesNoRate) {
    DrivenClock clock;
    FrameRateCalculator calculator(10, clock);
    EXPECT_EQ(calculator.GetFrameRate(), 0.1);
    runEvents(calculator, clock, 1, 50);
    EXPECT_EQ(calculator.GetFrameRate(), 0.0);
}

TEST(FrameRateCalculator, AveragesOverTheLatestIntervals) {
    DrivenClock clock;
    FrameRateCalculator calculator(10, clock);
    runEvents(calculator, clock, 2, 100); // pushed out of the span by what follows
    runEvents(calculator, clock, 10, 10);
    EXPECT_DOUBLE_EQ(calculator.GetFrameRate(), 100.0);
}

TEST(FrameRateCalculator, PublishesOnEveryEventAtFirstAndThenEveryTwoSeconds) {
    DrivenClock clock;
    FrameRateCalculator calculator(10, clock);
    runEvents(calculator, clock, 199, 10); // up to 1990 ms
    runEvents(calculator, clock, 1, 9);
    const double early = calculator.GetFrameRate();
    EXPECT_NEAR(early, 101.0, 0.1); // the 9 ms interval shows at once

    runEvents(calculator, clock, 60, 33); // 1980 ms after that publication
    EXPECT_DOUBLE_EQ(calculator.GetFrameRate(), early);
    runEvents(calculator, clock, 2, 33);
    EXPECT_NEAR(calculator.GetFrameRate(), 1000.0 / 33.0, 0.01);
}

} // namespace
