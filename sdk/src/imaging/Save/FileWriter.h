#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Norvane::Imaging {

/// Writes a file so that nobody ever sees half of it: the bytes go to a temporary file beside the named one,
/// which Commit() moves into place. Without Commit() the temporary file is removed and an older file of the
/// name stays. A name that leads to a device or pipe is written directly. One thread uses it.
class FileWriter {
public:
    /// @param fileName  UTF-8
    /// @throws Exception (Io) with the system's reason when the file cannot be made.
    explicit FileWriter(const char* fileName);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// Appends, or overwrites after Seek(). @throws Exception (Io).
    void Write(const void* data, std::size_t size);
    /// The same for callbacks of C libraries, which no exception may cross: returns false, and the next
    /// Commit() or ThrowIfFailed() throws.
    bool TryWrite(const void* data, std::size_t size) noexcept;
    bool TrySeek(std::uint64_t position) noexcept;
    /// Bytes read back at the current position, at most `size`.
    std::size_t TryRead(void* data, std::size_t size) noexcept;
    std::uint64_t Position() const noexcept { return m_position; }
    std::uint64_t Size() const noexcept { return m_size; }

    void ThrowIfFailed() const;
    /// Makes the file appear under its name. @throws Exception (Io).
    void Commit();

    const std::string& Name() const noexcept { return m_name; }

private:
    bool Flush() noexcept;
    bool WriteOut(const std::uint8_t* data, std::size_t size) noexcept;
    [[noreturn]] void Throw(const char* what, int reason) const;

    std::string m_name;      ///< as the caller gave it
    std::string m_path;      ///< where links lead to
    std::string m_temporary; ///< empty when writing directly
    int m_file = -1;
    int m_reason = 0; ///< errno of the first failure
    std::uint64_t m_position = 0, m_size = 0;
    std::string m_buffer;
};

} // namespace Norvane::Imaging
