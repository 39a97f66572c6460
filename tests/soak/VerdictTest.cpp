#include "Verdict.h"

#include <gmock/gmock.h>

#include <functional>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// An hour at a sample a minute, each with a rest; `change` gets a sample and its number.
std::vector<Sample> Hour(const std::function<void(Sample&, int)>& change) {
    std::vector<Sample> samples;
    for (int minute = 0; minute < 60; ++minute) {
        for (const bool atRest : {false, true}) {
            Sample sample;
            sample.seconds = 60.0 * minute;
            sample.actions = 500 * minute;
            sample.isAtRest = atRest;
            sample.holding =
                atRest ? Holding{150.0, 40.0, 12, 30} : Holding{250.0 + 10 * (minute % 7), 90.0, 30, 50};
            sample.stallMs = atRest ? 5.0 : 80.0 + 20 * (minute % 5);
            change(sample, minute);
            samples.push_back(sample);
        }
    }
    return samples;
}

TEST(SoakVerdict, TellsLeaksFromChance) {
    const auto faults = [](const std::function<void(Sample&, int)>& change) {
        return FaultsOf(Hour(change), {3000.0});
    };
    EXPECT_THAT(faults([](Sample&, int) {}), IsEmpty());
    EXPECT_THAT(faults([](Sample& s, int minute) { s.holding.heapMb += minute < 15 ? 3.0 * minute : 45.0; }),
                IsEmpty())
        << "the first quarter is for warming up";
    EXPECT_THAT(faults([](Sample& s, int minute) { s.holding.threads += minute == 50 ? 4 : 0; }), IsEmpty())
        << "one sample is no trend";

    EXPECT_THAT(faults([](Sample& s, int minute) { s.holding.heapMb += 0.25 * minute; }),
                ElementsAre(HasSubstr("heap in use, MB at rest: 45.5")));
    EXPECT_THAT(faults([](Sample& s, int minute) { s.holding.threads += s.isAtRest && minute > 40 ? 1 : 0; }),
                ElementsAre("threads at rest: 12 in the second quarter, 13 in the last"));
    EXPECT_THAT(faults([](Sample& s, int minute) { s.holding.files += 2 * minute; }),
                ElementsAre(HasSubstr("open files at rest"), HasSubstr("open files in use")));
    EXPECT_THAT(faults([](Sample& s, int minute) { s.stallMs *= s.isAtRest || minute < 40 ? 1 : 4; }),
                ElementsAre(HasSubstr("longest stall")));
    EXPECT_THAT(faults([](Sample& s, int minute) { s.stallMs = minute == 3 ? 3500.0 : s.stallMs; }),
                ElementsAre(HasSubstr("stood still for 3500 ms")));
    const auto inTwoMinutes = [](const std::function<void(Sample&, int)>& change) {
        std::vector<Sample> samples = Hour(change);
        for (Sample& sample : samples) {
            sample.actions /= 30;
        }
        return FaultsOf(samples, {3000.0});
    };
    EXPECT_THAT(inTwoMinutes([](Sample& s, int minute) { s.holding.heapMb += 0.25 * minute; }), IsEmpty())
        << "caches still fill";
    EXPECT_THAT(inTwoMinutes([](Sample& s, int minute) { s.holding.heapMb += 1.0 * minute; }),
                ElementsAre(HasSubstr("heap in use, MB at rest")));
    const auto startedOnce = [](Sample& s, int minute) {
        s.holding.threads += minute > 40 ? 1 : 0;
        s.holding.files += minute > 40 ? 1 : 0;
    };
    EXPECT_THAT(inTwoMinutes(startedOnce), IsEmpty()) << "kept from its first use on";
    EXPECT_THAT(inTwoMinutes([](Sample& s, int minute) { s.holding.threads += minute / 10; }),
                ElementsAre(HasSubstr("threads at rest")));
    const auto withShadow = Hour([](Sample& s, int minute) { s.holding.residentMb += 10.0 * minute; });
    EXPECT_THAT(FaultsOf(withShadow, {3000.0}), ElementsAre(HasSubstr("resident memory, MB at rest")));
    EXPECT_THAT(FaultsOf(withShadow, {3000.0, true}), IsEmpty());
    EXPECT_THAT(FaultsOf({}, {1.0}).size(), 2U) << "nothing seen is no pass";
}

} // namespace
