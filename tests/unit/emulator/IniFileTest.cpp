#include "transport/emulator/IniFile.h"
#include "transport/emulator/Settings.h"

#include <gmock/gmock.h>

namespace Norvane::Transport::Emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Read {
    std::vector<Problem> problems;
    Settings settings;
    explicit Read(std::string_view text) : settings(Settings::Read(text, "/folder", problems)) {}
};

TEST(IniFile, TakesCommentsQuotesAndLineEndsApart) {
    std::vector<Problem> problems;
    const IniFile file =
        IniFile::Parse("\xEF\xBB\xBF; first\r\n[camera  A B]  # second\r\n a = 1;2 ; third\r\n"
                       "b=\" x ; \\\"y\\\" \"\r\n\n[camera \"]\"]\nc =\n",
                       problems);
    EXPECT_THAT(problems, IsEmpty());
    ASSERT_EQ(file.sections.size(), 2U);
    EXPECT_EQ(file.sections[0].name, "A B");
    ASSERT_EQ(file.sections[0].entries.size(), 2U);
    EXPECT_EQ(file.sections[0].entries[0].value, "1;2");
    EXPECT_EQ(file.sections[0].entries[1].value, " x ; \"y\" ");
    EXPECT_EQ(file.sections[0].entries[1].line, 4);
    EXPECT_EQ(file.sections[1].name, "]");
    EXPECT_EQ(file.sections[1].entries[0].value, "");
}

TEST(Settings, AnyTextNamesACamera) {
    for (const char* serial :
         {"21034567", "00001", "99999999999999999999", "Größe 3 / α", "a=b", "<&>", "-1"}) {
        const Read read(std::string("[interface I]\ntype=GEV\n[camera ") + serial + "]\nmodel = Ж\n");
        EXPECT_THAT(read.problems, IsEmpty()) << serial;
        ASSERT_EQ(read.settings.cameras.size(), 1U) << serial;
        EXPECT_EQ(read.settings.cameras[0].serial, serial);
        EXPECT_EQ(read.settings.cameras[0].model, "Ж");
    }
}

TEST(Settings, EachFaultIsOneProblemWithItsLineAndTheRestIsUsed) {
    struct Case {
        const char* line;
        const char* problem;
    };
    static constexpr Case kCases[] = {
        {"colour = red", "colour"},
        {"width = 12x", "\"12x\""},
        {"width = 15", "16 to 16384"},
        {"height = -5", "16 to 16384"},
        {"height = 99999999999999999999", "16 to 16384"},
        {"frame-rate = nan", "0.1 to 1000"},
        {"frame-rate = 0", "0.1 to 1000"},
        {"frame-rate = 1001", "0.1 to 1000"},
        {"loss = 1.5", "0 to 1"},
        {"pixel-format = Bayer", "pixel format"},
        {"access = rw", "RW, RO"},
        {"unusable = maybe", "true or false"},
        {"inference = all", "none, classification, detection"},
        {"address = 1.2.3", "address"},
        {"address = 1.2.3.256", "address"},
        {"address = 1.2.3.4.5", "address"},
        {"interface", "key = value"},
        {"= 3", "key = value"},
        {"model = \"open", "quotes"},
        {"model = \xC3(", "UTF-8"},
        {"[camera", "bracket"},
        {"[camera 1]", "second time"},
        {"[camera]", "name"},
        {"[telescope 5]", "neither an interface nor a camera"},
    };
    for (const Case& each : kCases) {
        const Read read(std::string("[interface I]\n[camera 1]\nheight = 480\n") + each.line +
                        "\n[camera 2]\nwidth = 320\n");
        ASSERT_EQ(read.problems.size(), 1U) << each.line;
        EXPECT_EQ(read.problems[0].line, 4) << each.line;
        EXPECT_THAT(read.problems[0].text, HasSubstr(each.problem));
        ASSERT_EQ(read.settings.cameras.size(), 2U) << each.line;
        EXPECT_EQ(read.settings.cameras[0].height, 480U) << each.line;
        EXPECT_EQ(read.settings.cameras[1].width, 320U) << each.line;
    }
    const Read lost("[interface I]\n[camera 1]\ninterface = J\n[camera 2]\n");
    ASSERT_EQ(lost.problems.size(), 1U);
    EXPECT_THAT(lost.problems[0].text, HasSubstr("\"J\""));
    EXPECT_EQ(lost.settings.cameras.size(), 1U);
}

} // namespace
} // namespace Norvane::Transport::Emulator
