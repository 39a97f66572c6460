#include "EmulatorFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>

namespace Norvane::Test {
namespace {

using namespace std::chrono_literals;

class EmulatorSystemTest : public EmulatorFixture {};

TEST_F(EmulatorSystemTest, UnplugAndPlugInMidStream) {
    AddInterface();
    AddCamera("1001");
    Start();
    const CameraPtr camera = Find("1001");
    ASSERT_TRUE(camera.IsValid());
    RemovalRecorder events;
    m_system->RegisterInterfaceEventHandler(events);
    for (int round = 0; round < 3; ++round) {
        ImageCounter counter;
        camera->Init();
        GenApi::INodeMap* map = &camera->GetNodeMap();
        camera->RegisterEventHandler(counter);
        camera->BeginAcquisition();
        ASSERT_TRUE(Eventually([&] { return counter.images >= 3; }));
        EXPECT_EQ(counter.bytes, 320U * 240U);
        events.removed = 0;
        events.arrivals = 0;
        Unplug("1001");
        ASSERT_TRUE(Eventually([&] { return events.removed == 1001; }));
        EXPECT_FALSE(camera->IsValid());
        EXPECT_FALSE(camera->IsStreaming());
        EXPECT_NE(ErrorOf([&] { camera->Init(); }), Error::Success);
        camera->UnregisterEventHandler(counter);
        camera->DeInit();
        AddCamera("1001");
        ASSERT_TRUE(Eventually([&] { return events.arrivals == 1; }));
        EXPECT_TRUE(camera->IsValid());
        camera->Init();
        EXPECT_EQ(&camera->GetNodeMap(), map);
    }
    m_system->UnregisterInterfaceEventHandler(events);
}

TEST_F(EmulatorSystemTest, UnplugWhileOpenAndWhileOpening) {
    AddInterface();
    AddCamera("1001", "register-delay-us=20000");
    Start();
    const CameraPtr camera = Find("1001");
    auto opening = std::async(std::launch::async, [&] { ErrorOf([&] { camera->Init(); }); });
    Unplug("1001");
    ASSERT_EQ(opening.wait_for(10s), std::future_status::ready);
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid() && !camera->IsInitialized(); }));

    AddCamera("1001");
    ASSERT_TRUE(Eventually([&] { return camera->IsValid(); }));
    ASSERT_TRUE(Eventually([&] { return ErrorOf([&] { camera->Init(); }) == Error::Success; }));
    const GenApi::CIntegerPtr width = camera->GetNodeMap().GetNode("Width");
    EXPECT_EQ(width->GetValue(), 320);
    Unplug("1001");
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid(); }));
    EXPECT_NE(ErrorOf([&] { width->GetValue(false, true); }), Error::Success);
}

TEST_F(EmulatorSystemTest, CamerasThatCannotBeWorkedWithSaySo) {
    AddInterface();
    AddCamera("1", "access=RO");
    AddCamera("2", "unusable=true");
    Start();
    const CameraPtr readOnly = Find("1");
    readOnly->Init();
    EXPECT_EQ(readOnly->GetAccessMode(), GenApi::RO);
    EXPECT_EQ(ErrorOf([&] { readOnly->BeginAcquisition(); }), Error::AccessDenied);
    EXPECT_EQ(TextOf(Find("2")->GetTLDeviceNodeMap(), "DeviceIsUnusable"), "1");
}

TEST_F(EmulatorSystemTest, ABrokenDescriptionDoesNotKeepTheCameraClosed) {
    static std::atomic<int> s_errors{0};
    AddInterface();
    AddCamera("1", "description=" + WriteFile("cut.xml", "<?xml version=\"1.0\"?><RegisterDescription><Cat"));
    AddCamera("2", "description=" + WriteFile("text.xml", "no XML at all"));
    AddCamera("3");
    Start();
    SetLogSink([](LogLevel level, const char*) { s_errors += level == LogLevel::Error ? 1 : 0; });
    for (const char* broken : {"1", "2"}) {
        const CameraPtr camera = Find(broken);
        EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::Success);
        EXPECT_EQ(camera->GetNodeMap().GetNode("PixelFormat"), nullptr);
        EXPECT_NE(camera->GetNodeMap().GetNode("Root"), nullptr);
        camera->BeginAcquisition();
        camera->EndAcquisition();
    }
    EXPECT_EQ(s_errors, 2) << "each is told once";
    SetLogSink(nullptr);
    const CameraPtr other = Find("3");
    other->Init();
    EXPECT_NE(other->GetNodeMap().GetNode("PixelFormat"), nullptr);
}

TEST_F(EmulatorSystemTest, ChunksComeWithTheImage) {
    AddInterface();
    AddCamera("1");
    Start();
    const CameraPtr camera = Find("1");
    camera->Init();
    GenApi::INodeMap& map = camera->GetNodeMap();
    SetText(map, "ChunkModeActive", "1");
    for (const char* chunk : {"FrameID", "ExposureTime"}) {
        SetText(map, "ChunkSelector", chunk);
        SetText(map, "ChunkEnable", "1");
    }
    camera->BeginAcquisition();
    for (int i = 0; i < 3; ++i) {
        const ImagePtr image = camera->GetNextImage(5000);
        const ChunkData chunks = image->GetChunkData();
        EXPECT_EQ(chunks.GetFrameID(), static_cast<std::int64_t>(image->GetFrameID()));
        EXPECT_GT(chunks.GetExposureTime(), 0.0);
        EXPECT_EQ(image->GetImageSize(), 320U * 240U);
    }
    camera->EndAcquisition();
}

TEST_F(EmulatorSystemTest, IncompleteImagesAreCounted) {
    AddInterface();
    AddCamera("1", "incomplete-every=2");
    Start();
    const CameraPtr camera = Find("1");
    camera->Init();
    ImageCounter counter;
    camera->RegisterEventHandler(counter);
    camera->BeginAcquisition();
    ASSERT_TRUE(Eventually([&] { return counter.incomplete >= 3; }));
    camera->EndAcquisition();
    camera->UnregisterEventHandler(counter);
    GenApi::INodeMap& stream = camera->GetTLStreamNodeMap();
    EXPECT_GE(NumberOf(stream, "StreamIncompleteFrameCount"), counter.incomplete);
    EXPECT_GE(NumberOf(stream, "StreamDeliveredFrameCount"), counter.images);
    EXPECT_GT(counter.images, counter.incomplete);
}

TEST_F(EmulatorSystemTest, TheSystemStartsAgainAfterItsLastHandle) {
    AddInterface();
    AddCamera("1");
    for (int round = 0; round < 3; ++round) {
        Start();
        EXPECT_EQ(System::GetInstance(), m_system) << "one system a process";
        CameraPtr camera = Find("1");
        ASSERT_TRUE(camera.IsValid());
        camera->Init();
        camera = nullptr;
        m_system = nullptr;
    }
}

TEST_F(EmulatorSystemTest, AHandlerMayDropTheLastHandle) {
    struct Dropper : InterfaceEventHandler {
        void OnDeviceArrival(std::uint64_t) override {
            system = nullptr;
            dropped = true;
        }
        void OnDeviceRemoval(std::uint64_t) override {}
        SystemPtr system;
        std::atomic<bool> dropped{false};
    };
    AddInterface();
    Start();
    EXPECT_EQ(m_system->GetCameras(true).GetSize(), 0U);
    Dropper dropper;
    dropper.system = m_system;
    m_system->RegisterInterfaceEventHandler(dropper);
    m_system = nullptr;
    AddCamera("1");
    ASSERT_TRUE(Eventually([&] { return dropper.dropped.load(); }));
    Start(); // waits for the end of the former system
    EXPECT_TRUE(Find("1").IsValid());
}

} // namespace
} // namespace Norvane::Test
