#include "CoreFixture.h"

#include "core/ChunkReader.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace Norvane::Test {
namespace {

using ::testing::ElementsAre;

/// Keeps frame IDs, and can be held inside a call.
class Recorder : public ImageEventHandler {
public:
    void OnImageEvent(ImagePtr image) override {
        {
            const std::lock_guard lock(m_mutex);
            m_ids.push_back(image->GetFrameID());
        }
        if (onImage) {
            onImage(image);
        }
        gate.Pass();
    }

    std::vector<std::uint64_t> Ids() const {
        const std::lock_guard lock(m_mutex);
        return m_ids;
    }

    Gate gate;
    std::function<void(const ImagePtr&)> onImage;

private:
    mutable std::mutex m_mutex;
    std::vector<std::uint64_t> m_ids;
};

class AcquisitionTest : public CoreFixture {
protected:
    void SetUp() override {
        m_camera = StartWithCamera();
        m_camera->Init();
    }
    void TearDown() override { m_camera = nullptr; }

    std::int64_t Statistic(const char* node) { return NumberOf(m_camera->GetTLStreamNodeMap(), node); }

    CameraPtr m_camera;
};

TEST_F(AcquisitionTest, StartsAndStopsTheCamera) {
    EXPECT_EQ(ErrorOf([&] { m_camera->EndAcquisition(); }), Error::NotInitialized);
    m_camera->BeginAcquisition();
    EXPECT_TRUE(m_camera->IsStreaming());
    EXPECT_EQ(ErrorOf([&] { m_camera->BeginAcquisition(); }), Error::ResourceInUse);
    EXPECT_EQ(m_fake->Register(kAcquisitionStart), 1);
    EXPECT_EQ(m_fake->Register(kParamsLocked), 1);
    EXPECT_EQ(m_fake->LastSettings().payloadSize, 8U);
    EXPECT_EQ(Statistic("StreamBufferCountResult"), 10);
    m_camera->EndAcquisition();
    EXPECT_EQ(m_fake->Register(kAcquisitionStop), 1);
    EXPECT_EQ(m_fake->Register(kParamsLocked), 0);
    EXPECT_FALSE(m_fake->IsStreaming());
    EXPECT_FALSE(m_camera->IsStreaming());
}

TEST_F(AcquisitionTest, AStreamThatCannotBeOpenedLeavesTheCameraIdle) {
    m_fake->onOpenStream = [] { throw Exception(Error::OutOfMemory, "no buffers"); };
    EXPECT_EQ(ErrorOf([&] { m_camera->BeginAcquisition(); }), Error::OutOfMemory);
    EXPECT_FALSE(m_camera->IsStreaming());
    EXPECT_EQ(m_fake->Register(kParamsLocked), 0);
    m_fake->onOpenStream = nullptr;
    m_camera->BeginAcquisition();
    m_camera->EndAcquisition();
}

TEST_F(AcquisitionTest, StreamSettingsComeFromTheStreamMap) {
    GenApi::INodeMap& map = m_camera->GetTLStreamNodeMap();
    const GenApi::CEnumerationPtr mode = map.GetNode("StreamBufferCountMode");
    const GenApi::CIntegerPtr count = map.GetNode("StreamBufferCountManual");
    const GenApi::CBooleanPtr resend = map.GetNode("GevPacketResendEnable");
    mode->SetIntValue(mode->GetEntryByName("Manual")->GetValue());
    count->SetValue(3);
    resend->SetValue(false);
    EXPECT_EQ(ErrorOf([&] { count->SetValue(0); }), Error::GenApiOutOfRange);
    m_camera->BeginAcquisition();
    EXPECT_EQ(m_fake->LastSettings().bufferCount, 3U);
    EXPECT_FALSE(m_fake->LastSettings().packetResend);
    EXPECT_EQ(Statistic("StreamBufferCountResult"), 3);
    EXPECT_FALSE(GenApi::IsWritable(count->GetAccessMode())) << "locked while images are acquired";
    m_camera->EndAcquisition();
    EXPECT_TRUE(GenApi::IsWritable(count->GetAccessMode()));
}

TEST_F(AcquisitionTest, AHandlerGetsEveryImageInOrder) {
    Recorder recorder;
    EventRecorder noImages;
    EXPECT_EQ(ErrorOf([&] { m_camera->RegisterEventHandler(noImages); }), Error::InvalidParameter);
    m_camera->RegisterEventHandler(recorder);
    EXPECT_EQ(ErrorOf([&] { m_camera->RegisterEventHandler(recorder); }), Error::InvalidParameter);
    m_camera->BeginAcquisition();
    for (std::uint64_t id = 1; id <= 5; ++id) {
        m_fake->Send(id);
    }
    ASSERT_TRUE(Eventually([&] { return recorder.Ids().size() == 5; }));
    EXPECT_THAT(recorder.Ids(), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::ResourceInUse);
    EXPECT_EQ(Statistic("StreamDeliveredFrameCount"), 5);
    EXPECT_TRUE(Eventually([&] { return m_fake->BuffersInUse() == 0; })) << "buffers went back";
    m_camera->EndAcquisition();
    EXPECT_EQ(Statistic("StreamDeliveredFrameCount"), 5) << "the last values stay readable";
    m_camera->UnregisterEventHandler(recorder);
    m_camera->UnregisterEventHandler(recorder);
}

TEST_F(AcquisitionTest, ASlowHandlerCostsUnderruns) {
    Recorder recorder;
    recorder.gate.Close();
    m_camera->RegisterEventHandler(recorder);
    m_camera->BeginAcquisition();
    m_fake->Send(1);
    ASSERT_TRUE(Eventually([&] { return recorder.gate.Waiting() == 1; }));
    for (std::uint64_t id = 2; id <= 15; ++id) {
        m_fake->Send(id);
    }
    EXPECT_EQ(Statistic("StreamLostFrameCount"), 5) << "15 images, 10 buffers";
    recorder.gate.Open();
    EXPECT_TRUE(Eventually([&] { return recorder.Ids().size() == 10; }));
    m_camera->EndAcquisition();
    m_camera->UnregisterEventHandler(recorder);
}

TEST_F(AcquisitionTest, EndingAndUnregisteringWaitForTheLastCall) {
    for (const bool end : {true, false}) {
        Recorder recorder;
        recorder.gate.Close();
        m_camera->RegisterEventHandler(recorder);
        m_camera->BeginAcquisition();
        m_fake->Send(1);
        ASSERT_TRUE(Eventually([&] { return recorder.gate.Waiting() == 1; }));
        std::atomic<bool> returned{false};
        auto stopping = std::async(std::launch::async, [&] {
            if (end) {
                m_camera->EndAcquisition();
            } else {
                m_camera->UnregisterEventHandler(recorder);
            }
            returned = true;
        });
        // Nothing says that the other thread got as far as waiting; a fault shows as a flag that is set.
        std::this_thread::yield();
        EXPECT_FALSE(returned);
        recorder.gate.Open();
        stopping.get();
        if (!end) {
            m_camera->EndAcquisition();
        }
        m_camera->UnregisterEventHandler(recorder);
    }
}

TEST_F(AcquisitionTest, AHandlerMayEndAcquisitionAndUnregisterItself) {
    for (int run = 1; run <= 3; ++run) {
        Recorder recorder;
        std::atomic<bool> left{false};
        recorder.onImage = [&](const ImagePtr&) {
            m_camera->EndAcquisition();
            m_camera->UnregisterEventHandler(recorder);
            left = true;
        };
        m_camera->RegisterEventHandler(recorder);
        m_camera->BeginAcquisition();
        m_fake->Send(1);
        ASSERT_TRUE(Eventually([&] { return left.load(); }));
        EXPECT_FALSE(m_camera->IsStreaming());
        EXPECT_FALSE(m_fake->IsStreaming());
        m_camera->UnregisterEventHandler(recorder);
        // The thread of the former run may still be leaving the handler; the next run waits for it.
        m_camera->BeginAcquisition();
        m_fake->Send(2);
        EXPECT_EQ(m_camera->GetNextImage(5000)->GetFrameID(), 2U);
        m_camera->EndAcquisition();
    }
}

TEST_F(AcquisitionTest, AThrowingHandlerLosesOnlyItsImage) {
    Recorder recorder;
    recorder.onImage = [](const ImagePtr& image) {
        if (image->GetFrameID() == 1) {
            throw Exception(Error::Io, "disk full");
        }
    };
    m_camera->RegisterEventHandler(recorder);
    m_camera->BeginAcquisition();
    m_fake->Send(1);
    m_fake->Send(2);
    EXPECT_TRUE(Eventually([&] { return recorder.Ids().size() == 2; }));
    m_camera->EndAcquisition();
    m_camera->UnregisterEventHandler(recorder);
}

TEST_F(AcquisitionTest, NextImageGivesTheOldestAndWakesAtTheEnd) {
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::NotInitialized);
    m_camera->BeginAcquisition();
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::Timeout);
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0, 1); }), Error::InvalidId);
    m_fake->Send(1);
    m_fake->Send(2);
    const ImagePtr image = m_camera->GetNextImage();
    EXPECT_EQ(image->GetFrameID(), 1U);
    EXPECT_EQ(image->GetPixelFormat(), PixelFormat_Mono8);
    EXPECT_EQ(image->GetWidth(), 4U);
    EXPECT_EQ(m_camera->GetNextImage()->GetFrameID(), 2U);

    auto grab = std::async(std::launch::async, [&] { return ErrorOf([&] { m_camera->GetNextImage(); }); });
    m_camera->EndAcquisition();
    const Error woken = grab.get();
    EXPECT_TRUE(woken == Error::Abort || woken == Error::NotInitialized); // before or after the end
    EXPECT_EQ(image->GetFrameID(), 1U) << "an image outlives its stream";
}

TEST_F(AcquisitionTest, NewestOnlyDropsOlderImages) {
    const GenApi::CEnumerationPtr handling =
        m_camera->GetTLStreamNodeMap().GetNode("StreamBufferHandlingMode");
    handling->FromString("NewestOnly");
    m_camera->BeginAcquisition();
    for (std::uint64_t id = 1; id <= 30; ++id) {
        ASSERT_TRUE(m_fake->Send(id));
        ASSERT_TRUE(Eventually([&] { return m_fake->BuffersInUse() == 1; }));
    }
    EXPECT_EQ(m_camera->GetNextImage()->GetFrameID(), 30U);
    EXPECT_EQ(Statistic("StreamLostFrameCount"), 0);
    m_camera->EndAcquisition();
}

TEST_F(AcquisitionTest, ChunksBecomeValuesOfTheImage) {
    static std::atomic<int> s_warnings{0};
    s_warnings = 0;
    SetLogSink([](LogLevel level, const char*) { s_warnings += level == LogLevel::Warning ? 1 : 0; });
    const std::vector<std::uint8_t> oneBox = {1,  0, 1,    0,    0,  0, 3,    0,
                                              0,  0, 0x40, 0x3F, // confidence 0.75
                                              10, 0, 20,   0,    30, 0, 0xFF, 0xFF};
    std::vector<std::uint8_t> tooMany = oneBox;
    tooMany[2] = 9;
    m_camera->BeginAcquisition();
    m_fake->Send(1, {{0xA1, {0x2A, 0, 0, 0, 0, 0, 0, 0}}, {0xA2, oneBox}});
    m_fake->Send(2, {{0xA1, {0x2B}}, {0xA2, tooMany}});
    m_fake->Send(3, {{0xA1, {}}, {0xA2, {}}});
    m_fake->Send(4);

    const ChunkData good = m_camera->GetNextImage()->GetChunkData();
    EXPECT_EQ(good.GetFrameID(), 42);
    ASSERT_EQ(good.GetInferenceBoundingBoxResult().GetBoxCount(), 1);
    const InferenceBoundingBox box = good.GetInferenceBoundingBoxResult().GetBoxAt(0);
    EXPECT_EQ(box.classId, 3);
    EXPECT_FLOAT_EQ(box.confidence, 0.75F);
    EXPECT_EQ(box.topLeftX, 10);
    EXPECT_EQ(box.bottomRightY, -1);
    EXPECT_EQ(ErrorOf([&] { good.GetGain(); }), Error::NotAvailable);

    for (int bad = 2; bad <= 4; ++bad) {
        const ChunkData chunks = m_camera->GetNextImage()->GetChunkData();
        EXPECT_EQ(ErrorOf([&] { chunks.GetFrameID(); }), Error::NotAvailable) << bad;
        EXPECT_EQ(ErrorOf([&] { chunks.GetInferenceBoundingBoxResult(); }), Error::NotAvailable) << bad;
    }
    m_camera->EndAcquisition();
    EXPECT_EQ(s_warnings, 1) << "a bad chunk area is told once a stream";
    SetLogSink(nullptr);
}

} // namespace
} // namespace Norvane::Test
