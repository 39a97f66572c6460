#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The files of an emulated camera behind the SFNC's file access features: each has a copy in flash, which
/// outlives a power cycle, and one in memory, which is faster and covers the other. Not safe across threads;
/// the camera's mutex guards it.
class FileStore {
public:
    enum File : std::int64_t {
        UserFile1 = 0,
        UserFile2 = 1,
        InferenceNetwork = 2,
        ReadOnlyFile = 3, ///< "CalibrationData": can be read only
        FailingFile = 4,  ///< "DefectiveFile": its memory is broken behind kFailAt
        kFileCount = 5
    };
    enum class Operation { Open = 0, Close = 1, Read = 2, Write = 3, Delete = 4 };
    enum class OpenMode { Read = 0, Write = 1, ReadWrite = 2 };
    enum class Status { Success = 0, Failure = 1 };

    struct Result {
        Status status = Status::Failure;
        std::uint64_t bytes = 0; ///< moved by a read or write
    };

    static constexpr std::uint64_t kFlashBytes = 16U << 20U;  ///< all files together
    static constexpr std::uint64_t kMemoryBytes = 32U << 20U; ///< all files together
    static constexpr std::uint64_t kFailAt = 64U << 10U;

    using Content = std::vector<std::uint8_t>;
    using Files = std::array<std::optional<Content>, static_cast<std::size_t>(kFileCount)>;

    explicit FileStore(Files& flash) : m_flash(flash) {}

    Result Open(File file, OpenMode mode, bool toFlash);
    Result Close(File file);
    /// Copies up to `length` bytes from `offset` of the opened file to `to`.
    Result Read(File file, std::uint64_t offset, std::uint64_t length, std::uint8_t* to) const;
    /// Puts bytes into the opened file, which grows as needed; fails, with the bytes that still went in, when
    /// it is full.
    Result Write(File file, std::uint64_t offset, std::uint64_t length, const std::uint8_t* from);
    Result Delete(File file);
    std::uint64_t Size(File file) const;
    bool IsOpen(File file) const { return m_open[file].has_value(); }

private:
    struct Opened {
        OpenMode mode;
        bool toFlash;
    };
    const Content* Find(File file) const;
    static std::uint64_t Used(const Files& files);
    static constexpr std::uint64_t Capacity(bool flash) { return flash ? kFlashBytes : kMemoryBytes; }

    Files& m_flash;
    Files m_memory;
    std::array<std::optional<Opened>, static_cast<std::size_t>(kFileCount)> m_open;
};

} // namespace Norvane::Transport::Emulator
