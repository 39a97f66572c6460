#include "genapi/Text.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace Norvane::GenApi {

std::string_view Trim(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

namespace {

template <class T>
bool Whole(std::string_view digits, T& value, int base) {
    const auto end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, base);
    return result.ec == std::errc() && result.ptr == end && !digits.empty();
}

bool StripHexPrefix(std::string_view& text) {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
        return true;
    }
    return false;
}

} // namespace

std::optional<std::int64_t> ParseInteger(std::string_view text) noexcept {
    text = Trim(text);
    bool negative = false;
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    std::uint64_t bits = 0;
    if (StripHexPrefix(text)) {
        if (!Whole(text, bits, 16)) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(negative ? 0 - bits : bits);
    }
    if (!Whole(text, bits, 10)) {
        return std::nullopt;
    }
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (negative) {
        return bits <= kMax + 1 ? std::optional(static_cast<std::int64_t>(0 - bits)) : std::nullopt;
    }
    // 64-bit masks are written in decimal too.
    return static_cast<std::int64_t>(bits);
}

std::optional<double> ParseFloat(std::string_view text) noexcept {
    text = Trim(text);
    if (!text.empty() && text[0] == '+') {
        text.remove_prefix(1);
    }
    double value = 0;
    const auto end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (!text.empty() && result.ptr == end && result.ec == std::errc()) {
        return value;
    }
    if (!text.empty() && result.ptr == end && result.ec == std::errc::result_out_of_range) {
        const bool negative = text[0] == '-';
        const bool tiny = text.find("e-") != text.npos || text.find("E-") != text.npos;
        const double limit = tiny ? 0.0 : std::numeric_limits<double>::max();
        return negative ? -limit : limit;
    }
    if (const auto integer = ParseInteger(text)) {
        return static_cast<double>(*integer);
    }
    return std::nullopt;
}

std::optional<std::uint64_t> ParseHex(std::string_view text) noexcept {
    text = Trim(text);
    StripHexPrefix(text);
    std::uint64_t bits = 0;
    return Whole(text, bits, 16) ? std::optional(bits) : std::nullopt;
}

std::string FormatShortest(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-INF" : "INF";
    }
    char text[64];
    // Beyond 24 bits the short text of a float would no longer show the digits of a whole number.
    const auto single = static_cast<float>(std::abs(value) < 16777216.0 ? value : 0.0);
    const auto result = static_cast<double>(single) == value ? std::to_chars(text, text + sizeof text, single)
                                                             : std::to_chars(text, text + sizeof text, value);
    return {text, result.ptr};
}

std::string FormatHex(std::uint64_t value) {
    char text[20] = "0x";
    const auto result = std::to_chars(text + 2, text + sizeof text, value, 16);
    for (char* c = text + 2; c != result.ptr; ++c) {
        if (*c >= 'a') {
            *c = static_cast<char>(*c - 'a' + 'A');
        }
    }
    return {text, result.ptr};
}

} // namespace Norvane::GenApi
