#include "transport/aravis/BlockMarks.h"
#include "transport/aravis/ChunkLayout.h"
#include "transport/aravis/FrameIds.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <random>
#include <vector>

using namespace Norvane::Transport;
using Bytes = std::vector<std::uint8_t>;

TEST(BlockMarks, ClearsExactlyTheBlocksThatWereNotWritten) {
    std::mt19937 random(7);
    for (const std::size_t blockSize : {1364U, 8936U, 512U, 17U}) {
        for (const std::size_t size : {blockSize * 9, blockSize * 9 + 5, blockSize - 1, std::size_t{1}}) {
            const BlockMarks marks(blockSize);
            Bytes buffer(size, 0x77); // an older image
            marks.Mark(buffer.data(), size);
            Bytes expected(size, 0);
            std::size_t missing = 0;
            for (std::size_t offset = 0; offset < size; offset += blockSize) {
                const std::size_t block = std::min(blockSize, size - offset);
                if (random() % 2 == 0) {
                    missing += block;
                    continue;
                }
                std::fill_n(buffer.begin() + static_cast<std::ptrdiff_t>(offset), block, 0x42);
                std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(offset), block, 0x42);
            }
            EXPECT_EQ(marks.ClearUnwritten(buffer.data(), size), missing) << blockSize << " " << size;
            EXPECT_EQ(buffer, expected) << blockSize << " " << size;
        }
    }
}

TEST(FrameIds, SixteenBitsContinueAcrossTheirEnd) {
    FrameIds ids;
    EXPECT_EQ(ids.Continue(65534), 65534U);
    EXPECT_EQ(ids.Continue(65535), 65535U);
    EXPECT_EQ(ids.Continue(1), 65536U) << "zero is never sent";
    EXPECT_EQ(ids.Continue(3), 65538U) << "one image lost";
    EXPECT_EQ(ids.Continue(2), 65537U) << "late";
    EXPECT_EQ(ids.Continue(4), 65539U);
    EXPECT_EQ(ids.Continue(), 65540U) << "an image without number follows";
    std::uint64_t expected = 65540;
    for (std::uint64_t raw = 6; raw <= 65535; ++raw) {
        ASSERT_EQ(ids.Continue(raw), ++expected);
    }
    EXPECT_EQ(ids.Continue(1), 65536U + 65535U) << "the second time round";
}

TEST(FrameIds, NothingIsMadeUpBeforeTheFirstNumber) {
    FrameIds ids;
    EXPECT_EQ(ids.Continue(), 0U);
    EXPECT_EQ(ids.Continue(3), 3U);
    EXPECT_EQ(ids.Continue(65530), 65530U) << "far away: the count begins anew";
    EXPECT_EQ(ids.Continue(1), 65536U);
}

TEST(FrameIds, WideNumbersPass) {
    FrameIds ids;
    EXPECT_EQ(ids.Continue(0), 0U);
    EXPECT_EQ(ids.Continue(65535), 65535U);
    EXPECT_EQ(ids.Continue(65536), 65536U);
    EXPECT_EQ(ids.Continue(65537), 65537U);
    FrameIds late;
    EXPECT_EQ(late.Continue(0x100000000), 0x100000000U);
    EXPECT_EQ(late.Continue(5), 5U) << "the camera began anew";
}

namespace {

void AppendChunk(Bytes& payload, std::uint32_t id, const Bytes& content, ChunkByteOrder order) {
    payload.insert(payload.end(), content.begin(), content.end());
    for (const std::uint32_t word : {id, static_cast<std::uint32_t>(content.size())}) {
        for (int i = 0; i < 4; ++i) {
            const int shift = order == ChunkByteOrder::BigEndian ? 24 - 8 * i : 8 * i;
            payload.push_back(static_cast<std::uint8_t>(word >> shift));
        }
    }
}

Bytes Content(const Norvane::GenApi::ChunkView& view) {
    return {view.data, view.data + view.size};
}

} // namespace

TEST(ChunkLayout, SplitsBothByteOrders) {
    for (const auto order : {ChunkByteOrder::BigEndian, ChunkByteOrder::LittleEndian}) {
        for (const bool imageIsChunk : {true, false}) {
            Bytes payload;
            if (imageIsChunk) {
                AppendChunk(payload, 0x1000, Bytes(64, 9), order);
            } else {
                payload.resize(64);
            }
            AppendChunk(payload, 0xA001, {1, 2, 3, 4}, order);
            AppendChunk(payload, 0xA002, {}, order);
            AppendChunk(payload, 0xA003, {5, 6, 7, 8, 9, 10, 11, 12}, order);
            const ChunkLayout layout = ParseChunks(payload.data(), payload.size(), 64, order);
            EXPECT_TRUE(layout.valid);
            ASSERT_EQ(layout.chunks.size(), 3U);
            EXPECT_EQ(Content(layout.chunks.at(0xA001)), (Bytes{1, 2, 3, 4}));
            EXPECT_EQ(layout.chunks.at(0xA002).size, 0U);
            EXPECT_EQ(Content(layout.chunks.at(0xA003)), (Bytes{5, 6, 7, 8, 9, 10, 11, 12}));
        }
    }
}
