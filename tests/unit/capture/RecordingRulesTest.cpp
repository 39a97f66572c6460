#include "RecordingRules.h"

#include "DrivenClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

RecordingSettings settingsFor(RecordSaveOption option) {
    RecordingSettings settings;
    settings.saveOption = option;
    return settings;
}

/// Which of the images 1, 2, 3, ... of a run are kept, until the rules end it or `limit` images came.
std::vector<int> keptImages(RecordingRules& rules, const RecordingSettings& settings, DrivenClock& clock,
                            double periodMs, int limit = 1000) {
    std::vector<int> kept;
    for (int image = 1; image <= limit; ++image) {
        clock.Pass(periodMs);
        if (!rules.ShouldSkipImage(settings)) {
            kept.push_back(image);
        }
        if (rules.IsDoneGrabbing(settings, static_cast<unsigned int>(kept.size()))) {
            break;
        }
    }
    return kept;
}

TEST(RecordingRules, KeepsTheLastOfEveryNAndStopsAfterTheRunsShare) {
    DrivenClock clock;
    RecordingRules rules(clock);
    RecordingSettings settings = settingsFor(SAVE_ONE_OF_N);
    settings.everyN = 3;
    settings.framesToKeep = 10 / 3;
    rules.Start(settings, 30);
    EXPECT_EQ(keptImages(rules, settings, clock, 33), (std::vector<int>{3, 6, 9}));

    // A counter left over from a run that was stopped must not shift the next one.
    rules.ShouldSkipImage(settings);
    rules.Start(settings, 30);
    EXPECT_EQ(keptImages(rules, settings, clock, 33), (std::vector<int>{3, 6, 9}));
}

TEST(RecordingRules, CountsFramesOrGoesOnUntilStopped) {
    DrivenClock clock;
    RecordingRules rules(clock);
    RecordingSettings settings = settingsFor(SAVE_FRAME_COUNT);
    settings.framesToGrab = 4;
    rules.Start(settings, 30);
    EXPECT_EQ(keptImages(rules, settings, clock, 33).size(), 4U);
    settings.framesToGrab = 0;
    EXPECT_EQ(keptImages(rules, settings, clock, 33, 50).size(), 50U);
    EXPECT_EQ(keptImages(rules, settingsFor(SAVE_FOR_TIME), clock, 33, 50).size(), 50U);
}

TEST(RecordingRules, TimeLapseKeepsOneImagePerIntervalUntilTheRunIsOver) {
    DrivenClock clock;
    RecordingRules rules(clock);
    RecordingSettings settings = settingsFor(SAVE_TIME_LAPSE);
    settings.intervalMs = 100;
    settings.runMs = 500;
    rules.Start(settings, 100); // period 10 ms: first save after 90 ms, end after 490 ms
    EXPECT_EQ(keptImages(rules, settings, clock, 10), (std::vector<int>{9, 19, 29, 39, 49}));
    rules.Start(settings, 0); // the camera tells no rate
    EXPECT_EQ(keptImages(rules, settings, clock, 10), (std::vector<int>{10, 20, 30, 40, 50}));
}

TEST(RecordingRules, ATimeLapseShorterThanAPeriodKeepsEveryImageUntilTheRunIsOver) {
    struct Case {
        const char* what;
        unsigned int intervalMs;
        double cameraFrameRate;
        unsigned int runMs;
        std::size_t kept; // at an image every 10 ms
    };
    for (const Case& c :
         {Case{"interval below the period", 5, 100, 200, 20},
          Case{"interval is the period", 10, 100, 200, 19}, Case{"run below the period", 20, 100, 5, 1},
          Case{"camera tells no rate", 5, 0, 200, 20}}) {
        DrivenClock clock;
        RecordingRules rules(clock);
        RecordingSettings settings = settingsFor(SAVE_TIME_LAPSE);
        settings.intervalMs = c.intervalMs;
        settings.runMs = c.runMs;
        rules.Start(settings, c.cameraFrameRate);
        EXPECT_EQ(keptImages(rules, settings, clock, 10).size(), c.kept) << c.what;
    }
}

} // namespace
