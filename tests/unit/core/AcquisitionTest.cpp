#include "CoreFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <numeric>
#include <thread>

namespace Norvane::Test {
namespace {

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

/// A camera that sends what it is asked for.
class AcquisitionTest : public CoreFixture {
protected:
    void SetUp() override {
        m_camera = StartWithCamera();
        m_camera->Init();
        SetText(m_camera->GetNodeMap(), "TriggerSelector", "FrameStart");
        SetText(m_camera->GetNodeMap(), "TriggerMode", "On");
    }
    void TearDown() override { m_camera = nullptr; }

    std::int64_t Statistic(const char* node) { return NumberOf(m_camera->GetTLStreamNodeMap(), node); }

    /// One image, delivered or lost when this returns.
    void Send() {
        const auto sent = [&] {
            return Statistic("StreamDeliveredFrameCount") + Statistic("StreamLostFrameCount");
        };
        const std::int64_t before = sent();
        SetText(m_camera->GetNodeMap(), "TriggerSoftware", "1");
        ASSERT_TRUE(Eventually([&] { return sent() > before; }));
    }

    CameraPtr m_camera;
};

TEST_F(AcquisitionTest, AStreamThatCannotBeOpenedLeavesTheCameraIdle) {
    EXPECT_EQ(ErrorOf([&] { m_camera->EndAcquisition(); }), Error::NotInitialized);
    const auto foreign = m_gates->Device()->OpenStream({});
    EXPECT_NE(ErrorOf([&] { m_camera->BeginAcquisition(); }), Error::Success);
    EXPECT_FALSE(m_camera->IsStreaming());
    EXPECT_EQ(NumberOf(m_camera->GetNodeMap(), "TLParamsLocked"), 0);
}

TEST_F(AcquisitionTest, StartsAndStopsWithTheSettingsOfTheStreamMap) {
    GenApi::INodeMap& map = m_camera->GetTLStreamNodeMap();
    const GenApi::CIntegerPtr count = map.GetNode("StreamBufferCountManual");
    m_camera->BeginAcquisition();
    EXPECT_TRUE(m_camera->IsStreaming());
    EXPECT_EQ(ErrorOf([&] { m_camera->BeginAcquisition(); }), Error::ResourceInUse);
    EXPECT_EQ(NumberOf(m_camera->GetNodeMap(), "TLParamsLocked"), 1);
    EXPECT_EQ(Statistic("StreamBufferCountResult"), 10);
    EXPECT_FALSE(GenApi::IsWritable(count->GetAccessMode())) << "locked while images are acquired";
    m_camera->EndAcquisition();
    EXPECT_FALSE(m_camera->IsStreaming());
    EXPECT_EQ(NumberOf(m_camera->GetNodeMap(), "TLParamsLocked"), 0);
    EXPECT_TRUE(GenApi::IsWritable(m_camera->GetNodeMap().GetNode("Width")->GetAccessMode()))
        << "the camera was told to stop";

    SetText(map, "StreamBufferCountMode", "Manual");
    EXPECT_EQ(ErrorOf([&] { count->SetValue(0); }), Error::GenApiOutOfRange);
    count->SetValue(3);
    SetText(map, "GevPacketResendEnable", "0");
    Change("7", "loss", "0.5");
    m_camera->BeginAcquisition();
    EXPECT_EQ(Statistic("StreamBufferCountResult"), 3);
    for (int i = 0; i < 10; ++i) {
        Send();
    }
    EXPECT_EQ(Statistic("StreamLostFrameCount"), 7) << "10 images, 3 buffers";
    EXPECT_EQ(Statistic("GevResendRequestCount"), 0);
    m_camera->EndAcquisition();
}

TEST_F(AcquisitionTest, AHandlerGetsEveryImageInOrder) {
    Recorder recorder;
    EventRecorder noImages;
    EXPECT_EQ(ErrorOf([&] { m_camera->RegisterEventHandler(noImages); }), Error::InvalidParameter);
    m_camera->RegisterEventHandler(recorder);
    EXPECT_EQ(ErrorOf([&] { m_camera->RegisterEventHandler(recorder); }), Error::InvalidParameter);
    m_camera->BeginAcquisition();
    std::vector<std::uint64_t> expected(25);
    std::iota(expected.begin(), expected.end(), 0);
    for (const std::uint64_t id : expected) {
        Send();
        ASSERT_TRUE(Eventually([&] { return recorder.Ids().size() == id + 1; }));
    }
    EXPECT_EQ(recorder.Ids(), expected);
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::ResourceInUse);
    EXPECT_EQ(Statistic("StreamLostFrameCount"), 0) << "buffers went back";
    m_camera->EndAcquisition();
    EXPECT_EQ(Statistic("StreamDeliveredFrameCount"), 25) << "the last values stay readable";
    m_camera->UnregisterEventHandler(recorder);
    m_camera->UnregisterEventHandler(recorder);
}

TEST_F(AcquisitionTest, ASlowHandlerCostsUnderruns) {
    Recorder recorder;
    recorder.gate.Close();
    m_camera->RegisterEventHandler(recorder);
    m_camera->BeginAcquisition();
    Send();
    ASSERT_TRUE(Eventually([&] { return recorder.gate.Waiting() == 1; }));
    for (int i = 1; i < 15; ++i) {
        Send();
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
        Send();
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
        SetText(m_camera->GetNodeMap(), "TriggerSoftware", "1");
        ASSERT_TRUE(Eventually([&] { return left.load(); }));
        EXPECT_FALSE(m_camera->IsStreaming());
        m_camera->UnregisterEventHandler(recorder);
        // The thread of the former run may still be leaving the handler; the next run waits for it.
        m_camera->BeginAcquisition();
        Send();
        EXPECT_EQ(m_camera->GetNextImage(5000)->GetFrameID(), 0U);
        m_camera->EndAcquisition();
    }
}

TEST_F(AcquisitionTest, AThrowingHandlerLosesOnlyItsImage) {
    Recorder recorder;
    recorder.onImage = [](const ImagePtr& image) {
        if (image->GetFrameID() == 0) {
            throw Exception(Error::Io, "disk full");
        }
    };
    m_camera->RegisterEventHandler(recorder);
    m_camera->BeginAcquisition();
    Send();
    Send();
    EXPECT_TRUE(Eventually([&] { return recorder.Ids().size() == 2; }));
    m_camera->EndAcquisition();
    m_camera->UnregisterEventHandler(recorder);
}

TEST_F(AcquisitionTest, NextImageGivesTheOldestAndWakesAtTheEnd) {
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::NotInitialized);
    m_camera->BeginAcquisition();
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0); }), Error::Timeout);
    EXPECT_EQ(ErrorOf([&] { m_camera->GetNextImage(0, 1); }), Error::InvalidId);
    Send();
    Send();
    const ImagePtr image = m_camera->GetNextImage();
    EXPECT_EQ(image->GetFrameID(), 0U);
    EXPECT_EQ(image->GetPixelFormat(), PixelFormat_Mono8);
    EXPECT_EQ(image->GetWidth(), 64U);
    EXPECT_EQ(m_camera->GetNextImage()->GetFrameID(), 1U);

    auto grab = std::async(std::launch::async, [&] { return ErrorOf([&] { m_camera->GetNextImage(); }); });
    m_camera->EndAcquisition();
    const Error woken = grab.get();
    EXPECT_TRUE(woken == Error::Abort || woken == Error::NotInitialized); // before or after the end
    EXPECT_EQ(image->GetFrameID(), 0U) << "an image outlives its stream";
}

TEST_F(AcquisitionTest, NewestOnlyDropsOlderImages) {
    SetText(m_camera->GetTLStreamNodeMap(), "StreamBufferHandlingMode", "NewestOnly");
    m_camera->BeginAcquisition();
    for (int i = 0; i < 30; ++i) {
        Send();
    }
    EXPECT_LT(Statistic("StreamLostFrameCount"), 20) << "30 images, 10 buffers";
    int images = 1;
    while (m_camera->GetNextImage(5000)->GetFrameID() != 29) {
        ++images;
    }
    EXPECT_LT(images, 10);
    m_camera->EndAcquisition();
}

} // namespace
} // namespace Norvane::Test
