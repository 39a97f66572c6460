#include "FakeCamera.h"
#include "norvane/Exception.h"

#include <atomic>
#include <gmock/gmock.h>
#include <thread>

using namespace Norvane::Transport;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t kMono8 = 0x01080001;

/// What the simulated camera draws: a diagonal ramp that moves with the image's number.
std::uint8_t ExpectedPixel(std::uint32_t x, std::uint32_t y, std::uint64_t frameId) {
    return static_cast<std::uint8_t>((x + frameId + y) % 255);
}

struct PixelCount {
    std::size_t drawn = 0, zero = 0, foreign = 0;
};

/// The number that the first drawn pixel of an image tells, which is that of the ramp.
std::uint64_t DrawnNumber(const Frame& frame) {
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        for (std::uint32_t x = 0; x < frame.width; ++x) {
            if (const std::uint8_t pixel = frame.data[std::size_t{y} * frame.width + x]) {
                return 255 * 10 + pixel - (x + y) % 255;
            }
        }
    }
    return 0;
}

PixelCount CountPixels(const Frame& frame, std::uint64_t number) {
    PixelCount count;
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        for (std::uint32_t x = 0; x < frame.width; ++x) {
            const std::uint8_t pixel = frame.data[std::size_t{y} * frame.width + x];
            if (pixel == ExpectedPixel(x, y, number)) {
                ++count.drawn;
            } else {
                ++(pixel == 0 ? count.zero : count.foreign);
            }
        }
    }
    return count;
}

class StreamTest : public testing::Test {
protected:
    void SetUp() override {
        if (!FakeCamera::IsInstalled()) {
            GTEST_SKIP() << "package aravis-tools-cli is missing";
        }
    }
    void Open(std::vector<std::string> arguments = {}, std::uint32_t size = 512) {
        m_camera = std::make_unique<FakeCamera>(std::move(arguments));
        m_device = m_transport->Open(WaitForCamera(*m_transport).id);
        WriteRegister(*m_device, FakeCamera::kWidth, size);
        WriteRegister(*m_device, FakeCamera::kHeight, size);
        WriteRegister(*m_device, FakeCamera::kFramePeriodUs, 10000);
        m_settings.payloadSize = std::uint64_t{size} * size;
    }
    void Start() {
        m_stream = m_device->OpenStream(m_settings);
        WriteRegister(*m_device, FakeCamera::kAcquisition, 1);
    }
    void Stop() { WriteRegister(*m_device, FakeCamera::kAcquisition, 0); }

    std::unique_ptr<ITransport> m_transport = CreateAravisTransport();
    std::unique_ptr<FakeCamera> m_camera;
    std::shared_ptr<IDevice> m_device;
    StreamSettings m_settings;
    std::unique_ptr<IStream> m_stream;
};

} // namespace

TEST_F(StreamTest, DeliversConsecutiveImagesThatOutliveTheStream) {
    Open();
    Start();
    constexpr std::uint64_t kImages = 100;
    std::uint64_t lastId = 0;
    std::uint64_t lastTime = 0;
    std::optional<Frame> kept;
    for (std::uint64_t i = 0; i < kImages; ++i) {
        auto frame = m_stream->Pop(3000);
        ASSERT_TRUE(frame) << "image " << i;
        ASSERT_EQ(frame->status, Norvane::IMAGE_NO_ERROR);
        ASSERT_EQ(frame->width, 512U);
        ASSERT_EQ(frame->height, 512U);
        ASSERT_EQ(frame->pfncFormat, kMono8);
        ASSERT_EQ(frame->size, 512U * 512U);
        ASSERT_GT(frame->timestampNs, lastTime);
        if (i > 0) {
            ASSERT_EQ(frame->frameId, lastId + 1);
        }
        lastId = frame->frameId;
        lastTime = frame->timestampNs;
        kept = std::move(frame);
    }
    const StreamStatistics statistics = m_stream->Statistics();
    EXPECT_EQ(statistics.deliveredImages, kImages);
    EXPECT_EQ(statistics.corruptImages, 0U);
    EXPECT_GT(statistics.totalPackets, kImages);

    Stop();
    m_stream.reset();
    m_device.reset();
    const PixelCount count = CountPixels(*kept, kept->frameId);
    EXPECT_EQ(count.drawn, 512U * 512U) << "the image stays when stream and device are gone";
    std::thread([frame = std::move(kept)]() mutable { frame.reset(); }).join();
}

TEST_F(StreamTest, HeldImagesCostUnderrunsAndComeBack) {
    Open();
    m_settings.bufferCount = 3;
    Start();
    std::vector<Frame> held;
    while (held.size() < 3) {
        auto frame = m_stream->Pop(3000);
        ASSERT_TRUE(frame);
        held.push_back(std::move(*frame));
    }
    EXPECT_TRUE(WaitFor([&] { return m_stream->Statistics().underruns > 2; }, 5s));
    EXPECT_FALSE(m_stream->Pop(0)) << "no buffer is left to receive into";
    held.clear();
    EXPECT_TRUE(m_stream->Pop(3000)) << "returned buffers are used again";
    Stop();
}

TEST_F(StreamTest, WhatWasNotReceivedIsZeroAndNeverAnOlderImage) {
    Open({"-r", "5"});
    m_settings.packetResend = false;
    m_settings.bufferCount = 4; // so that every buffer holds an older image soon
    Start();
    int incomplete = 0;
    int withContent = 0;
    int withHoles = 0;
    for (int i = 0; i < 400 && incomplete < 25; ++i) {
        const auto frame = m_stream->Pop(3000);
        ASSERT_TRUE(frame);
        // An image without leader does not know its number, but all that is in it must be of one image.
        const bool hasNumber = frame->status != Norvane::IMAGE_MISSING_LEADER;
        const PixelCount count = CountPixels(*frame, hasNumber ? frame->frameId : DrawnNumber(*frame));
        if (frame->status == Norvane::IMAGE_NO_ERROR) {
            ASSERT_EQ(count.drawn, 512U * 512U);
            continue;
        }
        ++incomplete;
        ASSERT_EQ(count.foreign, 0U) << "image " << frame->frameId;
        ASSERT_EQ(frame->size, m_settings.payloadSize);
        ASSERT_EQ(frame->width, 512U);
        // The ramp itself is zero here and there, a missing packet is zero throughout; only a lost trailer
        // costs nothing.
        withHoles += count.zero > 100;
        withContent += count.drawn > 100000;
    }
    EXPECT_GE(withHoles, 15);
    EXPECT_GE(withContent, 5) << "what did arrive is there";
    EXPECT_GE(incomplete, 25);
    EXPECT_EQ(m_stream->Statistics().corruptImages, static_cast<std::uint64_t>(incomplete));
    EXPECT_GT(m_stream->Statistics().missedPackets, 0U);
    EXPECT_EQ(m_stream->Statistics().resendRequests, 0U);
    Stop();
}

TEST_F(StreamTest, WakeEndsAWaitingPop) {
    Open();
    m_stream = m_device->OpenStream(m_settings); // the camera does not send
    std::atomic<bool> waiting{false};
    std::thread waker([&] {
        while (!waiting) {
            std::this_thread::yield();
        }
        m_stream->Wake();
    });
    waiting = true;
    EXPECT_LT(TimeOf([&] { EXPECT_FALSE(m_stream->Pop(10000)); }), 2000ms);
    waker.join();
    EXPECT_GE(TimeOf([&] { EXPECT_FALSE(m_stream->Pop(50)); }), 45ms) << "a wake counts once";
}

TEST_F(StreamTest, NonsenseSettingsAreRefused) {
    Open();
    m_settings.payloadSize = 0;
    EXPECT_THROW(m_device->OpenStream(m_settings), Norvane::Exception);
    m_settings.payloadSize = std::uint64_t{1} << 60;
    EXPECT_THROW(m_device->OpenStream(m_settings), Norvane::Exception);
    m_settings.payloadSize = 512 * 512;
    m_settings.bufferCount = 0;
    EXPECT_THROW(m_device->OpenStream(m_settings), Norvane::Exception);
}
