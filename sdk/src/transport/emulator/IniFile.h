#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Norvane::Transport::Emulator {

/// One complaint about a text file, for one log line.
struct Problem {
    int line = 0; ///< counted from 1; 0 concerns the file as a whole
    std::string text;
};

/// A key file taken apart with its line numbers kept, so that a complaint can name the line. Every line that
/// makes sense is used, whatever stands around it: a half-written file costs its last line, not its cameras.
/// (GLib's parser knows no line numbers, no comments behind a value, and gives up at the first bad line.)
///
/// Lines: `[kind name]`, `key = value`, comments after `;` or `#` at the start of a line or behind a blank. A
/// value in double quotes keeps blanks, `;` and `#`; in it \" and \\ stand for themselves. Text is UTF-8,
/// with or without a byte order mark, with LF or CRLF.
struct IniFile {
    struct Entry {
        std::string key, value;
        int line = 0;
    };
    struct Section {
        std::string kind, name; ///< "[camera 21034567]" is kind "camera", name "21034567"
        int line = 0;
        std::vector<Entry> entries; ///< a key given twice appears twice
    };

    std::vector<Section> sections;

    static IniFile Parse(std::string_view text, std::vector<Problem>& problems);
};

/// Whether the bytes are well-formed UTF-8 (RFC 3629: no overlong forms, no surrogates).
bool IsUtf8(std::string_view text);

} // namespace Norvane::Transport::Emulator
