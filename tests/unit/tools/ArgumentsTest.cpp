#include "Arguments.h"
#include "Commands.h"
#include "Failure.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Arguments, TakesOptionsAnywhereAndNegativeValues) {
    const Arguments arguments =
        parseArguments({"set", "--map", "stream", "4711", "--json", "Gain", "-3", "--timeout=20"});
    EXPECT_EQ(arguments.command, "set");
    EXPECT_THAT(arguments.operands, ElementsAre("4711", "Gain", "-3"));
    EXPECT_EQ(arguments.map, MapKind::Stream);
    EXPECT_TRUE(arguments.json);
    EXPECT_EQ(arguments.timeoutMs, 20);
    EXPECT_THAT(parseArguments({"set", "1", "Name", "--", "--json"}).operands,
                ElementsAre("1", "Name", "--json"));
}

TEST(Arguments, WrongUsageIsToldWithItsOwnExitCode) {
    const std::vector<std::string> lines[] = {
        {"get", "--map"},
        {"get", "--map", "moon"},
        {"list", "--colour"},
        {"snap", "--timeout", "soon"},
        {"snap", "--timeout", "-1"},
        {},
        {"fly"},
        {"list", "extra"},
        {"get", "4711"},
        {"set", "1", "Gain"},
        {"describe"},
    };
    for (const auto& words : lines) {
        try {
            runCommand(parseArguments(words));
            ADD_FAILURE() << testing::PrintToString(words) << " was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), kUsage) << testing::PrintToString(words);
            EXPECT_THAT(failure.what(), testing::Not(HasSubstr("\n"))) << "an error is one line";
        }
    }
}

TEST(Arguments, EveryCommandHasHelp) {
    const std::string general = helpText("");
    for (const char* command : {"list", "features", "get", "set", "execute", "describe", "snap", "check"}) {
        EXPECT_THAT(general, HasSubstr(std::string("\n  ") + command)) << command;
        EXPECT_THAT(runCommand(parseArguments({command, "--help"})).output,
                    HasSubstr(std::string("Usage: norvane ") + command));
    }
}

} // namespace
