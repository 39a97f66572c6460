#include "JsonWriter.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

TEST(JsonWriter, NestsObjectsAndArrays) {
    JsonWriter json;
    json.beginObject();
    json.member("a", std::int64_t{-1});
    json.key("list");
    json.beginArray();
    json.value(true);
    json.null();
    json.beginObject();
    json.endObject();
    json.endArray();
    json.key("none");
    json.beginArray();
    json.endArray();
    json.endObject();
    EXPECT_EQ(json.text(),
              "{\n  \"a\": -1,\n  \"list\": [\n    true,\n    null,\n    {}\n  ],\n  \"none\": []\n}");
}

TEST(JsonWriter, WritesTextThatIsAlwaysValid) {
    const std::pair<std::string, std::string> cases[] = {
        {"plain", "\"plain\""},
        {"a\"b\\c", R"("a\"b\\c")"},
        {std::string("\n\t\x01\x7f", 4), R"("\n\t\u0001\u007f")"},
        {std::string("\0", 1), R"("\u0000")"},
        {"K\xC3\xB6ln \xF0\x9F\x93\xB7", "\"K\xC3\xB6ln \xF0\x9F\x93\xB7\""},
        {"\xFF", "\"\xEF\xBF\xBD\""},
        {"a\xC3", "\"a\xEF\xBF\xBD\""},
        {"\xC0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                                 // overlong
        {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},                 // surrogate
        {"\xF4\x90\x80\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}, // beyond U+10FFFF
    };
    for (const auto& [text, expected] : cases) {
        JsonWriter json;
        json.value(text);
        EXPECT_EQ(json.text(), expected);
    }
}

TEST(JsonWriter, WritesNumbersThatReadBack) {
    const std::pair<double, const char*> cases[] = {{0.1, "0.1"},
                                                    {1e300, "1e+300"},
                                                    {-2.5, "-2.5"},
                                                    {std::numeric_limits<double>::infinity(), "null"},
                                                    {std::numeric_limits<double>::quiet_NaN(), "null"}};
    for (const auto& [number, expected] : cases) {
        JsonWriter json;
        json.value(number);
        EXPECT_EQ(json.text(), expected);
    }
    JsonWriter json;
    json.value(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(json.text(), "-9223372036854775808");
}

} // namespace
