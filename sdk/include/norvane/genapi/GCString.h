#pragma once

#include <string>
#include <string_view>

namespace Norvane::GenICam {

/// Text of node maps, always UTF-8.
class gcstring {
public:
    /// Empty.
    gcstring() = default;
    /// Null counts as empty.
    gcstring(const char* text) : m_text(text ? text : "") {}
    /// Takes UTF-8 as it is; nothing checks it.
    gcstring(std::string text) : m_text(std::move(text)) {}
    /// Copies UTF-8 as it is; nothing checks it.
    gcstring(std::string_view text) : m_text(text) {}

    /// Ends with a zero byte; good until the text changes.
    const char* c_str() const noexcept { return m_text.c_str(); }
    /// Bytes, not characters.
    std::size_t length() const noexcept { return m_text.size(); }
    /// Bytes, not characters.
    std::size_t size() const noexcept { return m_text.size(); }
    /// Whether there are no bytes.
    bool empty() const noexcept { return m_text.empty(); }
    /// By bytes: below, at or above 0.
    int compare(const gcstring& other) const noexcept { return m_text.compare(other.m_text); }
    /// Good until the text changes.
    const std::string& str() const noexcept { return m_text; }
    /// Good until the text changes.
    operator std::string_view() const noexcept { return m_text; }

    /// Appends.
    gcstring& operator+=(const gcstring& other) {
        m_text += other.m_text;
        return *this;
    }
    /// Both, one after the other.
    friend gcstring operator+(gcstring left, const gcstring& right) { return left += right; }
    /// By bytes.
    friend bool operator==(const gcstring& left, const gcstring& right) noexcept {
        return left.m_text == right.m_text;
    }
    /// By bytes.
    friend bool operator!=(const gcstring& left, const gcstring& right) noexcept { return !(left == right); }
    /// By bytes, so that maps can be sorted.
    friend bool operator<(const gcstring& left, const gcstring& right) noexcept {
        return left.m_text < right.m_text;
    }

private:
    std::string m_text;
};

} // namespace Norvane::GenICam
