#include "genapi/NumberText.h"

#include <charconv>
#include <cstdio>

namespace Norvane::GenApi {

ERepresentation ParseRepresentation(std::string_view text, ERepresentation otherwise) {
    constexpr std::string_view kNames[] = {"Linear",    "Logarithmic", "Boolean",   "PureNumber",
                                           "HexNumber", "IPV4Address", "MACAddress"};
    for (int i = 0; i < 7; ++i) {
        if (text == kNames[i]) {
            return static_cast<ERepresentation>(i);
        }
    }
    return otherwise;
}

std::string FormatInteger(std::int64_t value, ERepresentation representation) {
    const auto bits = static_cast<std::uint64_t>(value);
    const auto byte = [bits](int index) { return static_cast<unsigned>(bits >> (8 * index)) & 0xFFu; };
    char text[32];
    switch (representation) {
    case HexNumber:
        return FormatHex(bits);
    case IPV4Address:
        std::snprintf(text, sizeof text, "%u.%u.%u.%u", byte(3), byte(2), byte(1), byte(0));
        return text;
    case MACAddress:
        std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", byte(5), byte(4), byte(3), byte(2),
                      byte(1), byte(0));
        return text;
    default:
        return std::to_string(value);
    }
}

namespace {

/// `count` groups of digits between separators, each at most 255, most significant first.
std::optional<std::int64_t> ParseGroups(std::string_view text, char separator, int count, int base) {
    std::int64_t value = 0;
    for (int i = 0; i < count; ++i) {
        const auto end = text.find(separator);
        if ((end == text.npos) != (i == count - 1)) {
            return std::nullopt;
        }
        const auto group = text.substr(0, end);
        unsigned byte = 0;
        const auto result = std::from_chars(group.data(), group.data() + group.size(), byte, base);
        if (group.empty() || result.ec != std::errc() || result.ptr != group.data() + group.size() ||
            byte > 255) {
            return std::nullopt;
        }
        value = value << 8 | byte;
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return value;
}

} // namespace

std::optional<std::int64_t> ParseIntegerText(std::string_view text, ERepresentation representation) {
    text = Trim(text);
    if (const auto value = ParseInteger(text)) {
        // Hexadecimal digits are bits; a decimal number that 64 bits hold only without a sign is another one
        // with it.
        const bool wrapped = *value < 0 && text.find_first_of("-xX") == text.npos;
        return wrapped ? std::nullopt : value;
    }
    if (representation == IPV4Address) {
        return ParseGroups(text, '.', 4, 10);
    }
    if (representation == MACAddress) {
        return ParseGroups(text, ':', 6, 16);
    }
    return std::nullopt;
}

} // namespace Norvane::GenApi
