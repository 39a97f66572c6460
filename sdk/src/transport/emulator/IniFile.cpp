#include "transport/emulator/IniFile.h"

#include <cstdint>
#include <optional>

namespace Norvane::Transport::Emulator {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// The line without the comment behind it. Quotes shield comment signs.
std::string_view WithoutComment(std::string_view line) {
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted && c == '\\') {
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && (c == ';' || c == '#') && (i == 0 || IsBlank(line[i - 1]))) {
            return line.substr(0, i);
        }
    }
    return line;
}

std::optional<std::string> Unquote(std::string_view text) {
    if (text.empty() || text.front() != '"') {
        return std::string(text);
    }
    std::string result;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            return i + 1 == text.size() ? std::optional(result) : std::nullopt;
        }
        if (text[i] == '\\' && i + 1 < text.size()) {
            ++i;
        }
        result += text[i];
    }
    return std::nullopt;
}

} // namespace

bool IsUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<std::uint8_t>(text[i]);
        const std::size_t length = lead < 0x80             ? 1
                                   : (lead & 0xE0) == 0xC0 ? 2
                                   : (lead & 0xF0) == 0xE0 ? 3
                                   : (lead & 0xF8) == 0xF0 ? 4
                                                           : 0;
        if (length == 0 || i + length > text.size()) {
            return false;
        }
        std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto byte = static_cast<std::uint8_t>(text[i + k]);
            if ((byte & 0xC0) != 0x80) {
                return false;
            }
            code = code << 6 | (byte & 0x3F);
        }
        static constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        i += length;
    }
    return true;
}

IniFile IniFile::Parse(std::string_view text, std::vector<Problem>& problems) {
    IniFile file;
    if (text.substr(0, 3) == "\xEF\xBB\xBF") {
        text.remove_prefix(3);
    }
    bool inSection = false;
    int number = 0;
    while (!text.empty()) {
        ++number;
        const std::size_t end = text.find('\n');
        const std::string_view raw = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!IsUtf8(raw) || raw.find('\0') != std::string_view::npos) {
            problems.push_back({number, "the line is not UTF-8 text; it is left out"});
            inSection = inSection && Trim(raw).substr(0, 1) != "[";
            continue;
        }
        const std::string_view line = Trim(WithoutComment(raw));
        if (line.empty()) {
            continue;
        }
        if (line.front() == '[') {
            inSection = false;
            if (line.back() != ']') {
                problems.push_back({number, "\"" + std::string(line) +
                                                "\" lacks the closing bracket; the section is left out"});
                continue;
            }
            const std::string_view inner = Trim(line.substr(1, line.size() - 2));
            const std::size_t blank = inner.find_first_of(" \t");
            const auto name = Unquote(blank == std::string_view::npos ? "" : Trim(inner.substr(blank)));
            if (!name || inner.empty()) {
                problems.push_back(
                    {number, "\"" + std::string(line) + "\" is no section name; the section is left out"});
                continue;
            }
            file.sections.push_back({std::string(inner.substr(0, blank)), *name, number, {}});
            inSection = true;
            continue;
        }
        const std::size_t equals = line.find('=');
        const std::string_view key = Trim(line.substr(0, equals));
        if (equals == std::string_view::npos || key.empty()) {
            problems.push_back(
                {number, "\"" + std::string(line) +
                             "\" is neither \"[section]\" nor \"key = value\"; the line is left out"});
            continue;
        }
        const auto value = Unquote(Trim(line.substr(equals + 1)));
        if (!value) {
            problems.push_back(
                {number, std::string(key) + ": the quotes do not close; the line is left out"});
            continue;
        }
        if (inSection) {
            file.sections.back().entries.push_back({std::string(key), *value, number});
        } else if (file.sections.empty()) {
            problems.push_back(
                {number, std::string(key) + " stands before the first section; the line is left out"});
        }
    }
    return file;
}

} // namespace Norvane::Transport::Emulator
