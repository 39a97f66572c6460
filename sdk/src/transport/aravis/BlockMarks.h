#pragma once

#include <cstddef>
#include <cstdint>

namespace Norvane::Transport {

/// Finds out which blocks of a receive buffer were never written. Data arrive in blocks of a known size (the
/// data of one packet), and Aravis does not tell which of them are missing. So each block starts with a mark
/// before the buffer is given out; a block that still has its mark was not received and holds bytes of an
/// older image. Marking costs one cache line a block, where clearing would cost the whole buffer.
/// The mark is a 16-byte pattern that no sensor sends by chance. Constant after construction; any thread.
class BlockMarks {
public:
    /// @param blockSize bytes of one packet's data, at least 1
    explicit BlockMarks(std::size_t blockSize);

    void Mark(std::uint8_t* buffer, std::size_t size) const;
    /// Fills every block that still has its mark with zero. Returns the number of bytes that were missing.
    std::size_t ClearUnwritten(std::uint8_t* buffer, std::size_t size) const;

private:
    std::size_t m_blockSize;
};

} // namespace Norvane::Transport
