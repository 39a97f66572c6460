#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Writes one JSON text (RFC 8259), indented by two blanks. The caller opens and closes objects and arrays in
/// order; inside an object every value has a key. Text that is no valid UTF-8 is mended with U+FFFD, and
/// numbers that JSON cannot hold become null.
class JsonWriter {
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(std::string_view name);

    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(const std::string& text) { value(std::string_view(text)); }
    void value(std::int64_t number);
    void value(double number);
    void value(bool flag);
    void null();

    template <class T>
    void member(std::string_view name, const T& content) {
        key(name);
        value(content);
    }

    const std::string& text() const { return m_text; }

private:
    void separate();
    void open(char bracket);
    void close(char bracket);
    void quote(std::string_view text);

    std::string m_text;
    std::vector<bool> m_filled; ///< per open bracket, whether something stands in it
    bool m_afterKey = false;
};
