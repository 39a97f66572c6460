#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The files by which Linux tells about itself, below a root that a test may make up. Nothing throws: a file
/// that is missing or may not be read is nullopt, a folder without entries is empty.
class Machine {
public:
    explicit Machine(std::filesystem::path root = "/") : m_root(std::move(root)) {}

    /// A file's content without white space at its end.
    std::optional<std::string> text(const std::string& path) const;
    /// A decimal number at the start of a file.
    std::optional<std::int64_t> number(const std::string& path) const;
    /// The lines of a file.
    std::vector<std::string> lines(const std::string& path) const;
    /// Names in a folder, sorted.
    std::vector<std::string> entries(const std::string& path) const;
    /// The name at the end of what a symbolic link points to; empty where there is none.
    std::string linkedName(const std::string& path) const;
    bool exists(const std::string& path) const;
    /// Whether this process may write the file.
    bool writable(const std::string& path) const;

private:
    std::filesystem::path m_root;
};
