#pragma once

#include <string>
#include <string_view>

namespace Norvane::GenICam {

/// Text of node maps, always UTF-8.
class gcstring {
public:
    gcstring() = default;
    gcstring(const char* text) : m_text(text ? text : "") {}
    gcstring(std::string text) : m_text(std::move(text)) {}
    gcstring(std::string_view text) : m_text(text) {}

    const char* c_str() const noexcept { return m_text.c_str(); }
    std::size_t length() const noexcept { return m_text.size(); }
    std::size_t size() const noexcept { return m_text.size(); }
    bool empty() const noexcept { return m_text.empty(); }
    int compare(const gcstring& other) const noexcept { return m_text.compare(other.m_text); }
    const std::string& str() const noexcept { return m_text; }
    operator std::string_view() const noexcept { return m_text; }

    gcstring& operator+=(const gcstring& other) {
        m_text += other.m_text;
        return *this;
    }
    friend gcstring operator+(gcstring left, const gcstring& right) { return left += right; }
    friend bool operator==(const gcstring& left, const gcstring& right) noexcept {
        return left.m_text == right.m_text;
    }
    friend bool operator!=(const gcstring& left, const gcstring& right) noexcept { return !(left == right); }
    friend bool operator<(const gcstring& left, const gcstring& right) noexcept {
        return left.m_text < right.m_text;
    }

private:
    std::string m_text;
};

} // namespace Norvane::GenICam
