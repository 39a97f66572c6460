#include "EmulatorFixture.h"

#include "../unit/aravis/FakeCamera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace Norvane::Test {
namespace {

using namespace std::chrono_literals;

/// The program's way to Aravis's simulated GigE Vision camera, over loopback.
class GigeSystemTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!FakeCamera::IsInstalled()) {
            GTEST_SKIP() << "arv-fake-gv-camera-0.8 (package aravis-tools-cli) is not installed";
        }
        setenv("NORVANE_EMULATOR", "/dev/null", 1);
        m_system = System::GetInstance();
    }

    CameraPtr FindOnLoopback() {
        CameraPtr camera;
        WaitFor(
            [&] {
                const CameraList cameras = m_system->GetCameras(true);
                camera = cameras.GetSize() > 0 ? cameras.GetByIndex(0) : CameraPtr();
                return camera.IsValid();
            },
            10s);
        return camera;
    }

    /// 512 x 512 at 20 images a second.
    static void Configure(const CameraPtr& camera) {
        SetText(camera->GetNodeMap(), "Width", "512");
        SetText(camera->GetNodeMap(), "Height", "512");
        SetText(camera->GetNodeMap(), "AcquisitionMode", "Continuous");
    }

    SystemPtr m_system;
};

TEST_F(GigeSystemTest, ACameraStreamsDisappearsAndComesBack) {
    const std::vector<std::string> arguments{"-s", "4711"};
    std::optional<FakeCamera> process(arguments);
    const CameraPtr camera = FindOnLoopback();
    ASSERT_TRUE(camera.IsValid());
    EXPECT_EQ(TextOf(camera->GetTLDeviceNodeMap(), "DeviceID"), "4711");
    EXPECT_EQ(camera->GetDeviceNumber(), 4711U);
    EXPECT_EQ(NumberOf(camera->GetTLDeviceNodeMap(), "GevDeviceIPAddress"), 0x7F000001);
    EXPECT_EQ(TextOf(camera->GetTLDeviceNodeMap(), "GevDeviceIsWrongSubnet"), "0");
    RemovalRecorder removals;
    m_system->RegisterInterfaceEventHandler(removals);
    for (int round = 0; round < 2; ++round) {
        ImageCounter counter;
        camera->Init();
        Configure(camera);
        camera->RegisterEventHandler(counter);
        camera->BeginAcquisition();
        ASSERT_TRUE(WaitFor([&] { return counter.complete >= 10; }, 10s));
        removals.removed = 0;
        process.reset();
        ASSERT_TRUE(WaitFor([&] { return removals.removed == 4711; }, 20s));
        EXPECT_FALSE(camera->IsStreaming());
        EXPECT_FALSE(camera->IsValid());
        EXPECT_EQ(m_system->GetCameras(false).GetSize(), 0U);
        camera->UnregisterEventHandler(counter);
        process.emplace(arguments);
        ASSERT_TRUE(WaitFor([&] { return camera->IsValid(); }, 20s)) << "the same object is valid again";
    }
    m_system->UnregisterInterfaceEventHandler(removals);
}

TEST_F(GigeSystemTest, ACameraThatStopsAnsweringEndsAGrab) {
    FakeCamera process;
    const CameraPtr camera = FindOnLoopback();
    ASSERT_TRUE(camera.IsValid());
    camera->Init();
    Configure(camera);
    camera->BeginAcquisition();
    auto grab = std::async(std::launch::async, [&] {
        return ErrorOf([&] {
            for (;;) {
                camera->GetNextImage();
            }
        });
    });
    process.Signal(SIGSTOP);
    EXPECT_EQ(grab.wait_for(20s), std::future_status::ready);
    process.Signal(SIGCONT);
    EXPECT_EQ(grab.get(), Error::Abort);
    EXPECT_TRUE(WaitFor([&] { return ErrorOf([&] { camera->Init(); }) == Error::Success; }, 20s))
        << "it answers again, so it can be opened again";
}

TEST_F(GigeSystemTest, LostPacketsShowInTheStatistics) {
    FakeCamera process({"-r", "5"});
    const CameraPtr camera = FindOnLoopback();
    ASSERT_TRUE(camera.IsValid());
    camera->Init();
    Configure(camera);
    ImageCounter counter;
    camera->RegisterEventHandler(counter);
    camera->BeginAcquisition();
    GenApi::INodeMap& stream = camera->GetTLStreamNodeMap();
    EXPECT_TRUE(WaitFor([&] { return NumberOf(stream, "GevResendRequestCount") > 0; }, 10s));
    EXPECT_TRUE(WaitFor([&] { return counter.images >= 20; }, 10s));
    EXPECT_GT(NumberOf(stream, "GevTotalPacketCount"), 20);
    camera->EndAcquisition();
    camera->UnregisterEventHandler(counter);
    EXPECT_GE(NumberOf(stream, "StreamDeliveredFrameCount"), counter.images);
}

} // namespace
} // namespace Norvane::Test
