#include "check/Machine.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>

#include <unistd.h>

std::optional<std::string> Machine::text(const std::string& path) const {
    std::ifstream file(m_root / path);
    std::ostringstream content;
    // Some files of /sys open and then refuse to be read, such as the speed of an adapter that is down.
    if (!file || !(content << file.rdbuf())) {
        return std::nullopt;
    }
    std::string text = content.str();
    text.resize(text.find_last_not_of(" \t\n") + 1);
    return text;
}

std::optional<std::int64_t> Machine::number(const std::string& path) const {
    const std::string digits = text(path).value_or("");
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

std::vector<std::string> Machine::lines(const std::string& path) const {
    std::istringstream content(text(path).value_or(""));
    std::vector<std::string> lines;
    for (std::string line; std::getline(content, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> Machine::entries(const std::string& path) const {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_root / path, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string Machine::linkedName(const std::string& path) const {
    std::error_code error;
    return std::filesystem::read_symlink(m_root / path, error).filename();
}

bool Machine::exists(const std::string& path) const {
    std::error_code error;
    return std::filesystem::exists(m_root / path, error);
}

bool Machine::writable(const std::string& path) const {
    return access((m_root / path).c_str(), W_OK) == 0;
}
