#include "JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Bytes of the UTF-8 sequence at the start of `text`, 0 when it is none (RFC 3629).
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xC2 && lead <= 0xDF ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool surrogate = lead == 0xED && byte(1) > 0x9F;
    const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
    return overlong || surrogate || beyond ? 0 : length;
}

} // namespace

void JsonWriter::separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_filled.empty()) {
        return;
    }
    if (m_filled.back()) {
        m_text += ',';
    }
    m_filled.back() = true;
    m_text += '\n';
    m_text.append(2 * m_filled.size(), ' ');
}

void JsonWriter::open(char bracket) {
    separate();
    m_text += bracket;
    m_filled.push_back(false);
}

void JsonWriter::close(char bracket) {
    const bool filled = m_filled.back();
    m_filled.pop_back();
    if (filled) {
        m_text += '\n';
        m_text.append(2 * m_filled.size(), ' ');
    }
    m_text += bracket;
}

void JsonWriter::beginObject() {
    open('{');
}

void JsonWriter::endObject() {
    close('}');
}

void JsonWriter::beginArray() {
    open('[');
}

void JsonWriter::endArray() {
    close(']');
}

void JsonWriter::key(std::string_view name) {
    separate();
    quote(name);
    m_text += ": ";
    m_afterKey = true;
}

void JsonWriter::value(std::string_view text) {
    separate();
    quote(text);
}

void JsonWriter::value(std::int64_t number) {
    separate();
    m_text += std::to_string(number);
}

void JsonWriter::value(double number) {
    separate();
    if (!std::isfinite(number)) {
        m_text += "null";
        return;
    }
    std::array<char, 40> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    m_text.append(digits.data(), end);
}

void JsonWriter::value(bool flag) {
    separate();
    m_text += flag ? "true" : "false";
}

void JsonWriter::null() {
    separate();
    m_text += "null";
}

void JsonWriter::quote(std::string_view text) {
    m_text += '"';
    while (!text.empty()) {
        const auto c = static_cast<unsigned char>(text.front());
        const std::size_t length = sequenceLength(text);
        if (length == 0) {
            m_text += kReplacement;
        } else if (c == '"' || c == '\\') {
            m_text += '\\';
            m_text += static_cast<char>(c);
        } else if (c == '\n') {
            m_text += "\\n";
        } else if (c == '\t') {
            m_text += "\\t";
        } else if (c < 0x20 || c == 0x7F) {
            constexpr char kHex[] = "0123456789abcdef";
            m_text += "\\u00";
            m_text += kHex[c >> 4];
            m_text += kHex[c & 15];
        } else {
            m_text += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    m_text += '"';
}
