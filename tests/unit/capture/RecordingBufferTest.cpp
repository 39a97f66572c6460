#include "RecordingBuffer.h"
#include "CountDownLatch.h"
#include "RecordingMemory.h"
#include "WriteBehind.h"
#include "WriteQueue.h"

#include "FakeCamera.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <thread>
#include <vector>

namespace {

TEST(RecordingBuffer, HandsEveryImageOverInOrderWhileItIsBeingFilled) {
    constexpr std::uint64_t kImages = 20'000;
    RecordingBuffer buffer;
    std::thread camera([&buffer] {
        for (std::uint64_t i = 1; i <= kImages; ++i) {
            buffer.Push(TestImage(i));
        }
    });
    std::uint64_t expected = 1;
    while (expected <= kImages) {
        Norvane::ImagePtr image;
        if (buffer.Pop(image)) {
            ASSERT_EQ(image->GetFrameID(), expected++);
        } else {
            std::this_thread::yield();
        }
    }
    camera.join();
    EXPECT_TRUE(buffer.IsEmpty());
}

TEST(RecordingBuffer, KeepsNoImageAliveThatWasTaken) {
    RecordingBuffer buffer;
    auto object = std::make_shared<int>();
    const std::weak_ptr<int> watched = object;
    buffer.Push(Norvane::Imaging::MakeImage({}, nullptr, 0, std::move(object)));
    Norvane::ImagePtr image;
    ASSERT_TRUE(buffer.Pop(image));
    image = nullptr;
    EXPECT_TRUE(watched.expired());
}

TEST(RecordingMemory, CopiesStayThemselvesWhileBlocksGoRound) {
    std::vector<std::uint8_t> pixels(64 * 48);
    const Norvane::ImagePtr image =
        Norvane::Image::Create(64, 48, 0, 0, Norvane::PixelFormat_Mono8, pixels.data());
    Norvane::ImagePtr last;
    {
        RecordingMemory memory;
        std::deque<Norvane::ImagePtr> kept;
        for (int i = 0; i < 200; ++i) {
            std::fill(pixels.begin(), pixels.end(), static_cast<std::uint8_t>(i));
            kept.push_back(memory.Copy(image, Norvane::PixelFormat_Mono8));
            if (i % 3 == 0) { // written and dropped: the block is used again
                const auto* first = static_cast<const std::uint8_t*>(kept.front()->GetData());
                const auto expected = static_cast<std::uint8_t>(i - static_cast<int>(kept.size()) + 1);
                ASSERT_EQ(first[0], expected);
                ASSERT_EQ(first[64 * 48 - 1], expected);
                kept.pop_front();
            }
            if (i == 100) {
                memory.Release();
            }
        }
        EXPECT_EQ(memory.Copy(image, Norvane::PixelFormat_BGR8)->GetImageSize(), pixels.size() * 3);
        last = kept.back();
    }
    EXPECT_EQ(*static_cast<const std::uint8_t*>(last->GetData()), 199)
        << "a copy outlives its memory's owner";
}

TEST(WriteQueue, WritesInOrderOneAtATimeAndWaitsForTheLast) {
    WriteQueue writes;
    std::vector<int> order; // unguarded: the writes themselves never overlap
    std::atomic<int> inside = 0;
    for (int round = 0; round < 50; ++round) { // so that a line that ran dry starts again
        for (int i = 0; i < 7; ++i) {
            writes.Add([&, i] {
                EXPECT_EQ(++inside, 1);
                order.push_back(i);
                --inside;
            });
        }
        writes.Wait();
        ASSERT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
        order.clear();
    }
}

TEST(WriteQueue, GivesWayToItsCallerOnceHoweverManyWritesThereAre) {
    const int own = getpriority(PRIO_PROCESS, 0);
    WriteQueue writes;
    std::vector<int> nice;
    for (int i = 0; i < 20; ++i) {
        writes.Add([&] { nice.push_back(getpriority(PRIO_PROCESS, 0)); });
        writes.Wait();
    }
    const int lowered = std::min(own + 5, 19);
    EXPECT_EQ(nice, std::vector<int>(20, lowered));
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), own);
}

TEST(CountDownLatch, HoldsItsOwnerUntilTheTaskIsDone) {
    std::atomic<bool> done = false;
    std::thread task;
    {
        CountDownLatch latch(1);
        task = std::thread([&] {
            std::this_thread::yield();
            done = true;
            latch.countDown();
        });
    }
    EXPECT_TRUE(done);
    task.join();
}

TEST(WriteBehind, WrittenImagesLeaveTheFileCacheWhileTheFileGrows) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("video").toStdString();
    struct statfs system {};
    if (statfs(folder.path().toUtf8(), &system) != 0 || system.f_type == TMPFS_MAGIC) {
        GTEST_SKIP() << "files in memory stay there";
    }
    constexpr std::size_t kImage = 5'000'123; // no whole pages
    constexpr int kImages = 40;
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    WriteBehind behind;
    behind.Written(path + ".missing");
    for (int i = 0; i < kImages; ++i) {
        const std::vector<char> image(kImage, static_cast<char>(i));
        ASSERT_EQ(write(file, image.data(), kImage), static_cast<ssize_t>(kImage));
        behind.Written(path);
    }
    constexpr std::size_t kBytes = kImage * kImages;
    auto* bytes = static_cast<char*>(mmap(nullptr, kBytes, PROT_READ, MAP_SHARED, file, 0));
    ASSERT_NE(bytes, MAP_FAILED);
    std::vector<unsigned char> isCached((kBytes + 4095) / 4096);
    ASSERT_EQ(mincore(bytes, kBytes, isCached.data()), 0);
    const auto cached = std::count_if(isCached.begin(), isCached.end(), [](auto flags) { return flags & 1; });
    EXPECT_LT(cached * 4096, 80'000'000);
    for (int i = 0; i < kImages; ++i) {
        EXPECT_EQ(bytes[kImage * static_cast<std::size_t>(i)], static_cast<char>(i));
        EXPECT_EQ(bytes[kImage * static_cast<std::size_t>(i + 1) - 1], static_cast<char>(i));
    }
    munmap(bytes, kBytes);
    close(file);
}

} // namespace
