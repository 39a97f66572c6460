#include "CoreFixture.h"

#include <gtest/gtest.h>

#include <atomic>
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
    EXPECT_EQ(m_gates->opened, 1);
    camera->DeInit();
    camera->DeInit();
    EXPECT_FALSE(camera->IsInitialized());
    EXPECT_FALSE(m_gates->Device());
    EXPECT_EQ(camera->GetUniqueID(), "Altrona-Duskwing S-7");
}

TEST_F(CameraTest, OpeningThatTakesLongGoesOnInTheBackground) {
    const CameraPtr camera = StartWithCamera();
    m_gates->opening.Close();
    EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::Timeout);
    EXPECT_FALSE(camera->IsInitialized());
    m_gates->opening.Open();
    camera->Init();
    EXPECT_TRUE(camera->IsInitialized());
    EXPECT_EQ(m_gates->opened, 1) << "the second call finds what the first one began";
    camera->DeInit();

    m_gates->opening.Close();
    EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::Timeout);
    camera->DeInit();
    m_gates->opening.Open();
    ASSERT_TRUE(Eventually([&] { return m_gates->opened == 2 && !m_gates->Device(); }))
        << "a camera closed while it was being opened does not stay open";
    EXPECT_FALSE(camera->IsInitialized());
}

TEST_F(CameraTest, OneCameraThatDoesNotAnswerDelaysNoOther) {
    const CameraPtr first = StartWithCamera();
    m_gates->opening.Close();
    AddCamera("22");
    ASSERT_TRUE(Eventually([&] { return m_system->GetCameras(false).GetSize() == 2; }));
    const CameraPtr second = Find("22");
    auto opening = std::async(std::launch::async, [&] { return ErrorOf([&] { first->Init(); }); });
    ASSERT_TRUE(Eventually([&] { return m_gates->opening.Waiting() == 1; }));
    second->Init();
    EXPECT_TRUE(second->IsInitialized());
    EXPECT_FALSE(first->IsInitialized());
    m_gates->opening.Open();
    EXPECT_EQ(opening.get(), Error::Success);
}

TEST_F(CameraTest, NodesOutliveClosing) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    GenApi::INodeMap& map = camera->GetNodeMap();
    const GenApi::CIntegerPtr width = map.GetNode("Width");
    width->SetValue(32);
    EXPECT_EQ(width->GetValue(), 32);
    EXPECT_EQ(NumberOf(map, "WidthMax"), 64);
    camera->DeInit();
    EXPECT_EQ(width->GetValue(), 32) << "what is cached can be read";
    EXPECT_EQ(ErrorOf([&] { width->GetValue(false, true); }), Error::Io);

    g_calls = 0;
    const auto handle = GenApi::Register(map.GetNode("WidthMax"), &Count);
    Change("7", "width", "128");
    EXPECT_TRUE(Eventually([&] {
        camera->Init();
        const std::int64_t most = NumberOf(map, "WidthMax");
        camera->DeInit();
        return most == 128;
    })) << "nothing of the former opening stays cached";
    EXPECT_GE(g_calls, 1);
    GenApi::Deregister(handle);

    Change("7", "description", WriteFile("other.xml", R"(<?xml version="1.0"?>
<RegisterDescription ModelName="Other" VendorName="T" StandardNameSpace="None" SchemaMajorVersion="1"
 SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
 ProductGuid="A" VersionGuid="B" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root"/></RegisterDescription>)"));
    const auto mapIsFormer = [&](bool former) {
        return Eventually([&] {
            const bool opened = ErrorOf([&] { camera->Init(); }) == Error::Success;
            const bool as = opened && (&camera->GetNodeMap() == &map) == former;
            camera->DeInit();
            return as;
        });
    };
    EXPECT_TRUE(mapIsFormer(false)) << "another description makes another map";
    EXPECT_EQ(width->GetNode()->GetName().str(), "Width") << "while the former nodes stay alive";
    Change("7", "description", "");
    EXPECT_TRUE(mapIsFormer(true));
}

TEST_F(CameraTest, ALostCameraFailsAtOnceAndCanComeBack) {
    const CameraPtr camera = StartWithCamera();
    EventRecorder events;
    m_system->RegisterInterfaceEventHandler(events);
    camera->Init();
    SetText(camera->GetNodeMap(), "TriggerMode", "On"); // no image comes
    const GenApi::CIntegerPtr width = camera->GetNodeMap().GetNode("Width");
    camera->BeginAcquisition();
    auto grab = std::async(std::launch::async,
                           [&] { return ErrorOf([&] { camera->GetNextImage(EVENT_TIMEOUT_INFINITE); }); });
    m_gates->scanning.Close(); // so that the loss itself is seen, not the scan after it
    SetText(camera->GetNodeMap(), "DeviceReset", "1");
    EXPECT_EQ(grab.get(), Error::Abort);
    EXPECT_FALSE(camera->IsValid());
    EXPECT_FALSE(camera->IsInitialized());
    EXPECT_FALSE(camera->IsStreaming());
    EXPECT_EQ(ErrorOf([&] { width->GetValue(false, true); }), Error::Io);
    EXPECT_TRUE(Eventually([&] { return !m_gates->Device(); }));
    m_gates->scanning.Open();

    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 2; }));
    EXPECT_THAT(events.Events(), ::testing::ElementsAre("-7", "+7"));
    EXPECT_TRUE(camera->IsValid());
    camera->Init();
    EXPECT_EQ(width->GetValue(), 64);
    camera->BeginAcquisition();
    EXPECT_EQ(camera->GetNextImage()->GetFrameID(), 0U);
    camera->EndAcquisition();
    m_system->UnregisterInterfaceEventHandler(events);
}

TEST_F(CameraTest, AnOpenCameraThatAScanMissesStays) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    m_gates->scansMissCameras = true;
    const int before = m_gates->scans;
    ASSERT_TRUE(Eventually([&] { return m_gates->scans > before + 1; }));
    EXPECT_TRUE(camera->IsInitialized());
    camera->DeInit();
    EXPECT_TRUE(Eventually([&] { return !camera->IsValid(); }));
}

TEST_F(CameraTest, PolledNodesFireCallbacks) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    GenApi::INode* polled = camera->GetNodeMap().GetNode("LineStatusAll"); // a square wave of one second
    const std::int64_t first = NumberOf(camera->GetNodeMap(), "LineStatusAll");
    g_calls = 0;
    const auto handle = GenApi::Register(polled, &Count);
    EXPECT_TRUE(Eventually([&] { return g_calls > 0; }));
    EXPECT_NE(NumberOf(camera->GetNodeMap(), "LineStatusAll"), first);
    GenApi::Deregister(handle);
}

} // namespace
} // namespace Norvane::Test
