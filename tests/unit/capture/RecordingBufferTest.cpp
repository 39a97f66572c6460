#include "RecordingBuffer.h"
#include "CountDownLatch.h"

#include "FakeCamera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(RecordingBuffer, HandsEveryImageOverInOrderWhileItIsBeingFilled) {
    constexpr std::uint64_t kImages = 20'000;
    RecordingBuffer buffer;
    std::thread camera([&buffer] {
        for (std::uint64_t i = 1; i <= kImages; ++i) {
            buffer.Push(FakeImage::Make(i));
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
    auto object = std::make_shared<FakeImage>();
    const std::weak_ptr<FakeImage> watched = object;
    buffer.Push(Norvane::ImagePtr(std::move(object)));
    Norvane::ImagePtr image;
    ASSERT_TRUE(buffer.Pop(image));
    image = nullptr;
    EXPECT_TRUE(watched.expired());
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

} // namespace
