#include "CoreFixture.h"

#include <gtest/gtest.h>

#include <future>

namespace Norvane::Test {
namespace {

class CameraTest : public CoreFixture {};

std::atomic<int> g_calls{0};
void Count(GenApi::INode*) {
    ++g_calls;
}

TEST_F(CameraTest, OpensAndCloses) {
    const CameraPtr camera = StartWithCamera();
    EXPECT_EQ(ErrorOf([&] { camera->GetNodeMap(); }), Error::NotInitialized);
    EXPECT_EQ(ErrorOf([&] { camera->BeginAcquisition(); }), Error::NotInitialized);
    EXPECT_EQ(camera->GetAccessMode(), GenApi::NA);
    camera->Init();
    camera->Init();
    EXPECT_TRUE(camera->IsInitialized());
    EXPECT_EQ(camera->GetAccessMode(), GenApi::RW);
    EXPECT_EQ(m_fake->Opened(), 1);
    camera->DeInit();
    camera->DeInit();
    EXPECT_FALSE(camera->IsInitialized());
    EXPECT_EQ(m_fake->Devices(), 0);
    EXPECT_EQ(camera->GetUniqueID(), "Altrona-Fake-7");
}

TEST_F(CameraTest, AReadOnlyCameraDoesNotStream) {
    const CameraPtr camera = StartWithCamera();
    m_fake->access = Transport::Access::ReadOnly;
    camera->Init();
    EXPECT_EQ(camera->GetAccessMode(), GenApi::RO);
    EXPECT_EQ(ErrorOf([&] { camera->BeginAcquisition(); }), Error::AccessDenied);
}

TEST_F(CameraTest, OpeningThatTakesLongGoesOnInTheBackground) {
    const CameraPtr camera = StartWithCamera();
    m_fake->opening.Close();
    EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::Timeout);
    EXPECT_FALSE(camera->IsInitialized());
    m_fake->opening.Open();
    camera->Init();
    EXPECT_TRUE(camera->IsInitialized());
    EXPECT_EQ(m_fake->Opened(), 1) << "the second call finds what the first one began";
    camera->DeInit();

    m_fake->opening.Close();
    EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::Timeout);
    camera->DeInit();
    m_fake->opening.Open();
    ASSERT_TRUE(Eventually([&] { return m_fake->Opened() == 2 && m_fake->Devices() == 0; }))
        << "a camera closed while it was being opened does not stay open";
    EXPECT_FALSE(camera->IsInitialized());
}

TEST_F(CameraTest, OneCameraThatDoesNotAnswerDelaysNoOther) {
    const CameraPtr first = StartWithCamera();
    m_fake->opening.Close();
    m_world->AddCamera("b", "eth0", "22");
    ASSERT_TRUE(Eventually([&] { return m_system->GetCameras(false).GetSize() == 2; }));
    const CameraPtr second = m_system->GetCameras(false).GetByIndex(1);
    auto opening = std::async(std::launch::async, [&] { return ErrorOf([&] { first->Init(); }); });
    ASSERT_TRUE(Eventually([&] { return m_fake->opening.Waiting() == 1; }));
    second->Init();
    EXPECT_TRUE(second->IsInitialized());
    EXPECT_FALSE(first->IsInitialized());
    m_fake->opening.Open();
    EXPECT_EQ(opening.get(), Error::Success);
}

TEST_F(CameraTest, NodesOutliveClosing) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    GenApi::INodeMap& map = camera->GetNodeMap();
    const GenApi::CIntegerPtr gain = map.GetNode("Gain");
    gain->SetValue(5);
    EXPECT_EQ(m_fake->Register(kGain), 5);
    EXPECT_EQ(gain->GetValue(), 5);
    camera->DeInit();
    EXPECT_EQ(gain->GetValue(), 5) << "what is cached can be read";
    EXPECT_EQ(ErrorOf([&] { gain->GetValue(false, true); }), Error::Io);

    g_calls = 0;
    const auto handle = GenApi::Register(map.GetNode("Gain"), &Count);
    m_fake->SetRegister(kGain, 9);
    camera->Init();
    EXPECT_EQ(&camera->GetNodeMap(), &map);
    EXPECT_EQ(gain->GetValue(), 9) << "nothing of the former opening stays cached";
    EXPECT_GE(g_calls, 1);
    GenApi::Deregister(handle);
    camera->DeInit();

    std::string other = m_fake->description;
    other.replace(other.find("ModelName=\"Fake\""), 16, "ModelName=\"Real\"");
    std::swap(m_fake->description, other);
    camera->Init();
    EXPECT_NE(&camera->GetNodeMap(), &map) << "another description makes another map";
    EXPECT_EQ(gain->GetNode()->GetName().str(), "Gain") << "while the former nodes stay alive";
    camera->DeInit();
    std::swap(m_fake->description, other);
    camera->Init();
    EXPECT_EQ(&camera->GetNodeMap(), &map);
}

TEST_F(CameraTest, ABrokenDescriptionLeavesACameraWithoutFeatures) {
    static std::atomic<int> s_errors{0};
    SetLogSink([](LogLevel level, const char*) { s_errors += level == LogLevel::Error ? 1 : 0; });
    const CameraPtr camera = StartWithCamera();
    for (const std::string description : {"", "no XML at all", "<RegisterDescription><Categ"}) {
        s_errors = 0;
        m_fake->description = description;
        camera->Init();
        EXPECT_EQ(camera->GetNodeMap().GetNode("AcquisitionStart"), nullptr);
        ASSERT_NE(camera->GetNodeMap().GetNode("Root"), nullptr);
        EXPECT_EQ(s_errors, 1) << description;
        camera->BeginAcquisition();
        camera->EndAcquisition();
        camera->DeInit();
    }
    SetLogSink(nullptr);
}

TEST_F(CameraTest, ALostCameraFailsAtOnceAndCanComeBack) {
    const CameraPtr camera = StartWithCamera();
    EventRecorder events;
    m_system->RegisterInterfaceEventHandler(events);
    camera->Init();
    const GenApi::CIntegerPtr gain = camera->GetNodeMap().GetNode("Gain");
    camera->BeginAcquisition();
    auto grab = std::async(std::launch::async,
                           [&] { return ErrorOf([&] { camera->GetNextImage(EVENT_TIMEOUT_INFINITE); }); });
    m_world->scanning.Close(); // so that the loss itself is seen, not the scan after it
    m_fake->Lose();
    EXPECT_EQ(grab.get(), Error::Abort);
    EXPECT_FALSE(camera->IsValid());
    EXPECT_FALSE(camera->IsInitialized());
    EXPECT_FALSE(camera->IsStreaming());
    EXPECT_EQ(ErrorOf([&] { gain->GetValue(false, true); }), Error::Io);
    EXPECT_TRUE(Eventually([&] { return m_fake->Devices() == 0 && !m_fake->IsStreaming(); }));
    m_world->scanning.Open();

    // It still answers the search, so it has left and come again.
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 2; }));
    EXPECT_THAT(events.Events(), ::testing::ElementsAre("-7", "+7"));
    EXPECT_TRUE(camera->IsValid());
    camera->Init();
    EXPECT_EQ(gain->GetValue(), 0);
    camera->BeginAcquisition();
    ASSERT_TRUE(m_fake->Send(1));
    EXPECT_EQ(camera->GetNextImage()->GetFrameID(), 1U);
    camera->EndAcquisition();
    m_system->UnregisterInterfaceEventHandler(events);
}

TEST_F(CameraTest, AnOpenCameraThatAScanMissesStays) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    m_world->Change(m_fake, [](Transport::DeviceRecord& record) { record.interfaceId = "not seen"; });
    const int before = m_world->scans;
    ASSERT_TRUE(Eventually([&] { return m_world->scans > before + 1; }));
    EXPECT_TRUE(camera->IsInitialized());
    camera->DeInit();
    EXPECT_TRUE(Eventually([&] { return !camera->IsValid(); }));
}

TEST_F(CameraTest, PolledNodesFireCallbacks) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    GenApi::INode* polled = camera->GetNodeMap().GetNode("Polled");
    EXPECT_EQ(NumberOf(camera->GetNodeMap(), "Polled"), 0);
    g_calls = 0;
    const auto handle = GenApi::Register(polled, &Count);
    m_fake->SetRegister(kPolled, 3);
    EXPECT_TRUE(Eventually([&] { return g_calls > 0; }));
    EXPECT_EQ(NumberOf(camera->GetNodeMap(), "Polled"), 3);
    GenApi::Deregister(handle);
}

} // namespace
} // namespace Norvane::Test
