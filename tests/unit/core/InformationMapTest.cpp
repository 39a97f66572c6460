#include "CoreFixture.h"

#include <gtest/gtest.h>

namespace Norvane::Test {
namespace {

class InformationMapTest : public CoreFixture {};

std::atomic<int> g_calls{0};
void Count(GenApi::INode*) {
    ++g_calls;
}

TEST_F(InformationMapTest, DeviceMapShowsTheScan) {
    m_world->AddInterface("eth0");
    m_fake = m_world->AddCamera("cam", "eth0", "SN-42");
    m_fake->record.ipAddress = 0xA9FE0A14;
    m_fake->record.macAddress = 0x0011223344FF;
    m_fake->record.speed = "1000";
    m_fake->record.userName = "Halle 3 \xC3\x84";
    Start();
    const CameraPtr camera = m_system->GetCameras().GetByIndex(0);
    GenApi::INodeMap& map = camera->GetTLDeviceNodeMap();
    const struct {
        const char* node;
        std::string text;
    } kCases[] = {{"DeviceID", "SN-42"},
                  {"DeviceSerialNumber", std::to_string(camera->GetDeviceNumber())},
                  {"DeviceVendorName", "Altrona"},
                  {"DeviceModelName", "Fake"},
                  {"DeviceDisplayName", "Halle 3 \xC3\x84"},
                  {"DeviceInstanceId", "cam"},
                  {"DeviceType", "GigEVision"},
                  {"DeviceAccessStatus", "ReadWrite"},
                  {"DeviceCurrentSpeed", "Gigabit"},
                  {"DeviceIsUnusable", "0"},
                  {"GevDeviceIsWrongSubnet", "0"}};
    for (const auto& c : kCases) {
        ASSERT_NE(map.GetNode(c.node), nullptr) << c.node;
        EXPECT_EQ(TextOf(map, c.node), c.text) << c.node;
    }
    EXPECT_EQ(NumberOf(map, "GevDeviceIPAddress"), 0xA9FE0A14);
    EXPECT_EQ(NumberOf(map, "GevDeviceMACAddress"), 0x0011223344FF);
    camera->Init();
    EXPECT_EQ(TextOf(map, "DeviceAccessStatus"), "OpenReadWrite");
}

TEST_F(InformationMapTest, EveryFeatureCanBeRead) {
    const CameraPtr camera = StartWithCamera();
    const InterfacePtr interface = m_system->GetInterfaces().GetByIndex(0);
    for (GenApi::INodeMap* map :
         {&camera->GetTLDeviceNodeMap(), &camera->GetTLStreamNodeMap(), &interface->GetTLNodeMap()}) {
        GenApi::node_vector nodes;
        map->GetNodes(nodes);
        int read = 0;
        for (GenApi::INode* node : nodes) {
            const GenApi::CValuePtr value = node;
            if (node->IsFeature() && GenApi::IsReadable(*node) && !GenApi::CCategoryPtr(node)) {
                EXPECT_NO_THROW(value->ToString()) << node->GetName().str();
                EXPECT_FALSE(node->GetDisplayName().empty()) << node->GetName().str();
                ++read;
            }
        }
        EXPECT_GT(read, 8) << map->GetDeviceName().str();
    }
}

TEST_F(InformationMapTest, UsbCamerasHaveNoNetworkFeatures) {
    m_world->AddInterface("usb0", Transport::Technology::Usb3Vision);
    m_fake = std::make_shared<FakeCamera>("cam", "usb0", "7");
    m_fake->record.technology = Transport::Technology::Usb3Vision;
    m_fake->record.speed = "SuperSpeed";
    m_world->Plug(m_fake);
    Start();
    const CameraPtr camera = m_system->GetCameras().GetByIndex(0);
    GenApi::INodeMap& map = camera->GetTLDeviceNodeMap();
    EXPECT_EQ(TextOf(map, "DeviceType"), "USB3Vision");
    EXPECT_EQ(TextOf(map, "DeviceCurrentSpeed"), "SuperSpeed");
    for (const char* node : {"GevDeviceIPAddress", "GevDeviceIsWrongSubnet", "GevDeviceAutoForceIP"}) {
        EXPECT_EQ(map.GetNode(node)->GetAccessMode(), GenApi::NI) << node;
    }
    EXPECT_EQ(camera->GetTLStreamNodeMap().GetNode("GevTotalPacketCount")->GetAccessMode(), GenApi::NI);
}

TEST_F(InformationMapTest, OnlyWhatChangedFiresCallbacks) {
    const CameraPtr camera = StartWithCamera();
    GenApi::INodeMap& map = camera->GetTLDeviceNodeMap();
    EXPECT_EQ(TextOf(map, "GevDeviceIsWrongSubnet"), "1") << "no address at all fits no network";
    EXPECT_EQ(TextOf(map, "DeviceModelName"), "Fake");
    g_calls = 0;
    const auto unchanged = GenApi::Register(map.GetNode("DeviceModelName"), &Count);
    m_world->Change(m_fake, [](Transport::DeviceRecord& record) { record.ipAddress = 0xA9FE0A15; });
    ASSERT_TRUE(Eventually([&] { return TextOf(map, "GevDeviceIsWrongSubnet") == "0"; }));
    EXPECT_EQ(g_calls, 0);
    const auto changed = GenApi::Register(map.GetNode("GevDeviceIPAddress"), &Count);
    m_world->Change(m_fake, [](Transport::DeviceRecord& record) { record.ipAddress = 0x0A000001; });
    EXPECT_TRUE(Eventually([&] { return g_calls == 1; }));
    EXPECT_EQ(TextOf(map, "GevDeviceIsWrongSubnet"), "1");
    GenApi::Deregister(unchanged);
    GenApi::Deregister(changed);
}

TEST_F(InformationMapTest, InterfaceMapSelectsItsCameras) {
    m_world->AddInterface("eth0");
    m_world->AddCamera("a", "eth0", "11");
    const auto second = m_world->AddCamera("b", "eth0", "22");
    Start();
    const InterfacePtr interface = m_system->GetInterfaces().GetByIndex(0);
    GenApi::INodeMap& map = interface->GetTLNodeMap();
    EXPECT_EQ(TextOf(map, "InterfaceDisplayName"), "Fake eth0");
    EXPECT_EQ(TextOf(map, "InterfaceType"), "GigEVision");
    EXPECT_EQ(NumberOf(map, "DeviceCount"), 2);
    EXPECT_EQ(TextOf(map, "DeviceID"), "11");
    const GenApi::CIntegerPtr selector = map.GetNode("DeviceSelector");
    selector->SetValue(1);
    EXPECT_EQ(TextOf(map, "DeviceSerialNumber"), "22");
    EXPECT_EQ(ErrorOf([&] { selector->SetValue(2); }), Error::GenApiOutOfRange);
    m_world->Unplug(second);
    ASSERT_TRUE(Eventually([&] { return NumberOf(map, "DeviceCount") == 1; }));
    EXPECT_EQ(TextOf(map, "DeviceID"), "11") << "the selection falls back to a camera that is there";
}

TEST_F(InformationMapTest, ForcingAnAddressRunsInTheBackground) {
    const CameraPtr camera = StartWithCamera();
    const InterfacePtr interface = m_system->GetInterfaces().GetByIndex(0);
    m_world->forcing.Close();
    const GenApi::CCommandPtr ofCamera = camera->GetTLDeviceNodeMap().GetNode("GevDeviceAutoForceIP");
    const GenApi::CCommandPtr ofInterface = interface->GetTLNodeMap().GetNode("GevDeviceAutoForceIP");
    ofCamera->Execute();
    EXPECT_FALSE(ofCamera->IsDone());
    ofInterface->Execute();
    EXPECT_FALSE(ofInterface->IsDone());
    m_world->forcing.Open();
    EXPECT_TRUE(Eventually([&] { return ofCamera->IsDone() && ofInterface->IsDone(); }));
    EXPECT_EQ(m_world->forcedIps, 2);
}

} // namespace
} // namespace Norvane::Test
