#include "genapi/Formula.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace Norvane::GenApi {
namespace {

const Formula::Names kNames{
    {"A", "B", "VAR.Max"}, {{"K", 2.5}, {"N", 4}}, {{"X", "A+B"}, {"Y", "X*X"}, {"Z", "Z+1"}}};

const auto kLoad = [](std::size_t index) {
    constexpr std::int64_t kValues[] = {5, 3, 100};
    return kValues[index];
};

std::string Result(const std::string& text, Formula::Kind kind) {
    try {
        std::pmr::monotonic_buffer_resource memory;
        const auto formula = Formula::Compile(text, kNames, kind, memory);
        return kind == Formula::Kind::Integer ? std::to_string(formula.EvaluateInteger(kLoad))
                                              : FormatShortest(formula.EvaluateFloat(kLoad));
    } catch (const Exception& error) {
        return error.what();
    }
}

/// What the comparison with another engine cannot judge; the common operators are compared there.
TEST(Formula, Values) {
    struct Case {
        const char* text;
        const char* asInteger;
        const char* asFloat;
    };
    for (const Case& c : {
             Case{" A\n +\t1 ", "6", "6"},
             {"X*2", "16", "16"},
             {"Y", "64", "64"},
             {"A*K", "12", "12.5"},
             {"A+N", "9", "9"},
             {"VAR.Max-1", "99", "99"},
             {"A==5", "1", "1"},
             {"A!=5", "0", "0"},
             {"(B-3)=0?7:A/(B-3)", "7", "7"},
             {"B=3||A/(B-3)", "1", "1"},
             {"B=4&&A/(B-3)", "0", "0"},
             {"7&&2", "1", "1"},
             {"0||2", "1", "1"},
             {"A>3?A>5?1:2:3", "2", "2"},
             {"A<3?1:A<6?2:3", "2", "2"},
             {"0x7FFFFFFFFFFFFFFF+1", "-9223372036854775808", "9223372036854775808"},
             {"0xFFFFFFFFFFFFFFFF", "-1", "-1"},
             {"(0-0x7FFFFFFFFFFFFFFF-1)/(0-1)", "-9223372036854775808", "9223372036854775808"},
             {"1<<64", "0", "0"},
             {"-1>>70", "-1", "-1"},
             {"2**62", "4611686018427387904", "4611686018427387904"},
             {"2**(0-1)", "0", "0.5"},
             {"SQRT(2*8)", "4", "4"},
             {"TRUNC(0-2.5)", "-2", "-2"},
             {"FLOOR(0-2.5)", "-3", "-3"},
             {"CEIL(2.1)", "3", "3"},
             {"ROUND(2.5)", "3", "3"},
             {"ROUND(2.346,2)", "2", "2.35"},
             {"LG(1000)", "3", "3"},
             {"E()", "2", "2.718281828459045"},
             {"PI", "3", "3.141592653589793"},
             {"SGN(0-7)", "-1", "-1"},
             {"NEG(A)", "-5", "-5"},
         }) {
        EXPECT_EQ(Result(c.text, Formula::Kind::Integer), c.asInteger) << c.text;
        EXPECT_EQ(Result(c.text, Formula::Kind::Float), c.asFloat) << c.text;
    }
}

TEST(Formula, Faults) {
    const auto kind = Formula::Kind::Integer;
    EXPECT_EQ(Result("A/(B-3)", kind), "the formula divides by zero");
    EXPECT_EQ(Result("A%0", kind), "the formula divides by zero");
    EXPECT_EQ(Result("1.0/0", Formula::Kind::Float), "the formula divides by zero");
    EXPECT_EQ(Result("10.5**100", kind), "the result is outside the range of 64-bit integers");
    EXPECT_EQ(Result("A+", kind), "'A+': the formula ends where a value is due at character 3");
    EXPECT_EQ(Result("A B", kind), "'A B': unexpected 'B' at character 3");
    EXPECT_EQ(Result("(A", kind), "'(A': ')' is missing at character 3");
    EXPECT_EQ(Result("A?B", kind), "'A?B': ':' is missing at character 4");
    EXPECT_EQ(Result("WIDTH", kind), "'WIDTH': 'WIDTH' is neither a variable nor a constant at character 1");
    EXPECT_EQ(Result("Z", kind), "'Z+1': the expression 'Z' uses itself at character 2");
    EXPECT_NE(Result("", kind).find("ends"), std::string::npos);
    for (const std::string& deep :
         {std::string(100000, '('), std::string(100000, '-'), "A" + std::string(100000, '?'), [] {
              std::string powers = "A";
              for (int i = 0; i < 50000; ++i) {
                  powers += "**A";
              }
              return powers;
          }()}) {
        EXPECT_FALSE(Result(deep, kind).empty());
    }
}

TEST(Formula, ReadsAVariableOnceAndOnlyIfNeeded) {
    int reads[2] = {0, 0};
    const auto load = [&reads](std::size_t index) { return static_cast<std::int64_t>(++reads[index]); };
    std::pmr::monotonic_buffer_resource memory;
    const auto formula =
        Formula::Compile("A*A+A > 0 ? A : B", {{"A", "B"}, {}, {}}, Formula::Kind::Integer, memory);
    EXPECT_EQ(formula.EvaluateInteger(load), 1);
    EXPECT_EQ(reads[0], 1);
    EXPECT_EQ(reads[1], 0);
}

} // namespace
} // namespace Norvane::GenApi
