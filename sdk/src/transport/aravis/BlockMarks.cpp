#include "transport/aravis/BlockMarks.h"

#include <algorithm>
#include <cstring>

namespace Norvane::Transport {
namespace {

constexpr std::uint8_t kMark[16] = {0x9D, 0x3B, 0x52, 0xE7, 0x0C, 0xF1, 0x68, 0xA4,
                                    0x17, 0xCE, 0x83, 0x5A, 0xB9, 0x26, 0x71, 0xD0};

} // namespace

BlockMarks::BlockMarks(std::size_t blockSize) : m_blockSize(std::max<std::size_t>(1, blockSize)) {}

void BlockMarks::Mark(std::uint8_t* buffer, std::size_t size) const {
    for (std::size_t offset = 0; offset < size; offset += m_blockSize) {
        std::memcpy(buffer + offset, kMark, std::min({sizeof kMark, m_blockSize, size - offset}));
    }
}

std::size_t BlockMarks::ClearUnwritten(std::uint8_t* buffer, std::size_t size) const {
    std::size_t cleared = 0;
    for (std::size_t offset = 0; offset < size; offset += m_blockSize) {
        const std::size_t block = std::min(m_blockSize, size - offset);
        if (std::memcmp(buffer + offset, kMark, std::min(sizeof kMark, block)) == 0) {
            std::memset(buffer + offset, 0, block);
            cleared += block;
        }
    }
    return cleared;
}

} // namespace Norvane::Transport
