#include "ReportPrinter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

using namespace Norvane::GenApi;

namespace {

constexpr std::size_t kLongestValue = 60;

std::string plain(const FeatureValue& value) {
    struct Text {
        std::string operator()(std::monostate) const { return {}; }
        std::string operator()(bool flag) const { return flag ? "true" : "false"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const {
            std::array<char, 40> digits;
            return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
        }
        std::string operator()(const std::string& text) const { return text; }
    };
    return std::visit(Text(), value);
}

bool isSet(const FeatureValue& value) {
    return !std::holds_alternative<std::monostate>(value);
}

/// Whether a number is the end of its type's range.
bool isLimit(const FeatureValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        return *integer == std::numeric_limits<std::int64_t>::min() ||
               *integer == std::numeric_limits<std::int64_t>::max();
    }
    const auto* number = std::get_if<double>(&value);
    return number && std::abs(*number) >= static_cast<double>(std::numeric_limits<float>::max());
}

/// One line of printable text; a camera's strings may hold anything.
std::string oneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return text;
}

std::string shortened(std::string text) {
    if (text.size() <= kLongestValue) {
        return text;
    }
    std::size_t end = kLongestValue;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return text.substr(0, end) + "...";
}

std::string details(const FeatureRecord& record) {
    std::string text;
    const auto add = [&](const std::string& part) {
        text += text.empty() ? "" : "  ";
        text += part;
    };
    // A range matters to who writes, and one that a number's type sets anyway tells nothing.
    if (IsWritable(record.access) && isSet(record.minimum) && isSet(record.maximum) &&
        !(isLimit(record.minimum) && isLimit(record.maximum))) {
        add("[" + plain(record.minimum) + " .. " + plain(record.maximum) + "]");
    }
    if (IsWritable(record.access) && isSet(record.increment) &&
        record.increment != FeatureValue(std::int64_t{1})) {
        add("step " + plain(record.increment));
    }
    std::string list;
    for (const FeatureValue& value : record.validValues) {
        list += (list.empty() ? "one of " : ", ") + plain(value);
    }
    for (const EntryRecord& entry : record.entries) {
        if (IsAvailable(entry.access)) {
            list += (list.empty() ? "one of " : ", ") + entry.name;
        }
    }
    if (!list.empty()) {
        add(list);
    }
    if (!record.error.empty()) {
        add("error: " + oneLine(record.error));
    }
    return text;
}

void writeNumberFields(JsonWriter& json, const FeatureRecord& record) {
    const auto optional = [&](const char* name, const FeatureValue& value) {
        if (isSet(value)) {
            json.key(name);
            writeJson(json, value);
        }
    };
    optional("minimum", record.minimum);
    optional("maximum", record.maximum);
    optional("increment", record.increment);
    if (!record.validValues.empty()) {
        json.key("validValues");
        json.beginArray();
        for (const FeatureValue& value : record.validValues) {
            writeJson(json, value);
        }
        json.endArray();
    }
    if (!record.unit.empty()) {
        json.member("unit", record.unit);
    }
    if (!record.representation.empty()) {
        json.member("representation", record.representation);
    }
}

void writeEntries(JsonWriter& json, const FeatureRecord& record) {
    json.key("entries");
    json.beginArray();
    for (const EntryRecord& entry : record.entries) {
        json.beginObject();
        json.member("name", entry.name);
        json.member("value", entry.value);
        json.member("access", accessText(entry.access));
        json.endObject();
    }
    json.endArray();
}

} // namespace

void writeJson(JsonWriter& json, const FeatureValue& value) {
    if (!isSet(value)) {
        json.null();
        return;
    }
    std::visit(
        [&](const auto& content) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(content)>, std::monostate>) {
                json.value(content);
            }
        },
        value);
}

void writeJson(JsonWriter& json, const FeatureRecord& record) {
    json.beginObject();
    json.member("name", record.name);
    json.member("displayName", record.displayName);
    json.member("category", record.category);
    json.member("type", typeText(record.type));
    json.member("access", accessText(record.access));
    json.member("visibility", visibilityText(record.visibility));
    json.key("value");
    writeJson(json, record.value);
    if (isSet(record.value) && plain(record.value) != record.valueText) {
        json.member("text", record.valueText);
    }
    if (record.entryValue) {
        json.member("entryValue", *record.entryValue);
    }
    writeNumberFields(json, record);
    if (record.type == intfIEnumeration) {
        writeEntries(json, record);
    }
    if (!record.error.empty()) {
        json.member("error", record.error);
    }
    json.member("description", record.description);
    json.endObject();
}

std::string featureTable(const std::vector<FeatureRecord>& records) {
    std::size_t nameWidth = 0;
    std::size_t valueWidth = 0;
    std::vector<std::string> values;
    values.reserve(records.size());
    for (const FeatureRecord& record : records) {
        std::string value = shortened(oneLine(record.valueText));
        value += record.unit.empty() || value.empty() ? "" : " " + record.unit;
        nameWidth = std::max(nameWidth, record.name.size());
        valueWidth = std::max(valueWidth, std::min<std::size_t>(value.size(), 24));
        values.push_back(std::move(value));
    }
    std::string text;
    const auto column = [&text](const std::string& content, std::size_t width) {
        text += content;
        text.append(content.size() < width ? width - content.size() : 0, ' ');
        text += "  ";
    };
    const std::string* category = nullptr;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const FeatureRecord& record = records[i];
        if (!category || *category != record.category) {
            category = &record.category;
            text += (i == 0 ? "" : "\n") + (category->empty() ? "(no category)" : *category) + "\n";
        }
        text += "  ";
        column(record.name, nameWidth);
        column(typeText(record.type), 11);
        column(accessText(record.access), 2);
        column(values[i], valueWidth);
        text += details(record);
        while (!text.empty() && text.back() == ' ') {
            text.pop_back();
        }
        text += '\n';
    }
    return text;
}
