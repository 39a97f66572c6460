#include "video/AviLengths.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>

namespace Norvane::Video {

namespace {

constexpr std::int64_t kMaxRiffBytes = 0x40000000; // where the container begins its next RIFF
constexpr int kTotalFramesInAvih = 16;             // offsets behind a chunk's name and size
constexpr int kLengthInStrh = 32;

using Head = std::array<char, 16384>;

/// Where the data of the first chunk of that name begins; 0 when there is none.
std::size_t FindChunk(const Head& head, std::size_t size, std::string_view name) {
    const std::size_t found = std::string_view(head.data(), size).find(name);
    return found == std::string_view::npos ? 0 : found + 8;
}

void WriteNumber(int file, std::size_t offset, std::int64_t value) {
    std::array<unsigned char, 4> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8 * i));
    }
    // A header that cannot be brought up to date is no reason to lose frames: the next try or the end of the
    // file does it.
    [[maybe_unused]] const auto written =
        pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
}

} // namespace

void PatchAviLengths(const std::string& fileName, std::int64_t frames, std::int64_t bytes) {
    if (bytes >= kMaxRiffBytes) {
        return;
    }
    const int file = open(fileName.c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    Head head{};
    const auto size = pread(file, head.data(), head.size(), 0);
    if (size > 12 && std::memcmp(head.data(), "RIFF", 4) == 0) {
        const auto known = static_cast<std::size_t>(size);
        const std::size_t avih = FindChunk(head, known, "avih");
        const std::size_t strh = FindChunk(head, known, "strh");
        const std::size_t movi = FindChunk(head, known, "movi"); // a list: its name stands behind its size
        if (avih && strh && movi) {
            WriteNumber(file, 4, bytes - 8);
            WriteNumber(file, avih + kTotalFramesInAvih, frames);
            WriteNumber(file, strh + kLengthInStrh, frames);
            WriteNumber(file, movi - 12, bytes - static_cast<std::int64_t>(movi - 8));
        }
    }
    close(file);
}

} // namespace Norvane::Video
