#include "CoreFixture.h"

#include <gtest/gtest.h>

#include <atomic>

namespace Norvane::Test {
namespace {

class InformationMapTest : public CoreFixture {};

std::atomic<int> g_calls{0};
void Count(GenApi::INode*) {
    ++g_calls;
}

TEST_F(InformationMapTest, DeviceMapShowsTheScan) {
    AddInterface();
    AddCamera("SN-42", "user-name=Halle 3 \xC3\x84");
    Start();
    const CameraPtr camera = m_system->GetCameras().GetByIndex(0);
    GenApi::INodeMap& map = camera->GetTLDeviceNodeMap();
    const struct {
        const char* node;
        std::string text;
    } kCases[] = {{"DeviceID", "SN-42"},
                  {"DeviceSerialNumber", std::to_string(camera->GetDeviceNumber())},
                  {"DeviceVendorName", "Altrona"},
                  {"DeviceModelName", "Duskwing S"},
                  {"DeviceDisplayName", "Halle 3 \xC3\x84"},
                  {"DeviceInstanceId", "SN-42"},
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
    camera->Init();
    EXPECT_EQ(TextOf(map, "DeviceAccessStatus"), "OpenReadWrite");
    EXPECT_EQ(NumberOf(map, "GevDeviceMACAddress"), NumberOf(camera->GetNodeMap(), "GevMACAddress"));
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
    AddInterface("GigE-0", "type=U3V");
    AddCamera("7");
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
    EXPECT_EQ(TextOf(map, "GevDeviceIsWrongSubnet"), "0");
    EXPECT_EQ(TextOf(map, "DeviceModelName"), "Duskwing S");
    g_calls = 0;
    const auto unchanged = GenApi::Register(map.GetNode("DeviceModelName"), &Count);
    Change("7", "address", "10.0.0.1");
    ASSERT_TRUE(Eventually([&] { return TextOf(map, "GevDeviceIsWrongSubnet") == "1"; }));
    EXPECT_EQ(g_calls, 0);
    const auto changed = GenApi::Register(map.GetNode("GevDeviceIPAddress"), &Count);
    Change("7", "address", "169.254.10.21");
    EXPECT_TRUE(Eventually([&] { return g_calls == 1; }));
    EXPECT_EQ(TextOf(map, "GevDeviceIsWrongSubnet"), "0");
    GenApi::Deregister(unchanged);
    GenApi::Deregister(changed);
}

TEST_F(InformationMapTest, InterfaceMapSelectsItsCameras) {
    AddInterface("GigE-0", "name=Adapter");
    AddCamera("11");
    AddCamera("22");
    Start();
    const InterfacePtr interface = m_system->GetInterfaces().GetByIndex(0);
    GenApi::INodeMap& map = interface->GetTLNodeMap();
    EXPECT_EQ(TextOf(map, "InterfaceDisplayName"), "Adapter");
    EXPECT_EQ(TextOf(map, "InterfaceType"), "GigEVision");
    EXPECT_EQ(NumberOf(map, "DeviceCount"), 2);
    EXPECT_EQ(TextOf(map, "DeviceID"), "11");
    const GenApi::CIntegerPtr selector = map.GetNode("DeviceSelector");
    selector->SetValue(1);
    EXPECT_EQ(TextOf(map, "DeviceSerialNumber"), "22");
    EXPECT_EQ(ErrorOf([&] { selector->SetValue(2); }), Error::GenApiOutOfRange);
    Unplug("22");
    ASSERT_TRUE(Eventually([&] { return NumberOf(map, "DeviceCount") == 1; }));
    EXPECT_EQ(TextOf(map, "DeviceID"), "11") << "the selection falls back to a camera that is there";
}

TEST_F(InformationMapTest, ForcingAnAddressRunsInTheBackground) {
    AddInterface();
    AddCamera("7", "address=10.1.2.3");
    Start();
    GenApi::INodeMap& device = m_system->GetCameras().GetByIndex(0)->GetTLDeviceNodeMap();
    EXPECT_EQ(TextOf(device, "GevDeviceIsWrongSubnet"), "1");
    const InterfacePtr interface = m_system->GetInterfaces().GetByIndex(0);
    m_gates->forcing.Close();
    const GenApi::CCommandPtr ofCamera = device.GetNode("GevDeviceAutoForceIP");
    const GenApi::CCommandPtr ofInterface = interface->GetTLNodeMap().GetNode("GevDeviceAutoForceIP");
    for (const GenApi::CCommandPtr& force : {ofCamera, ofInterface}) {
        force->Execute();
        EXPECT_FALSE(force->IsDone());
    }
    EXPECT_TRUE(Eventually([&] { return m_gates->forcing.Waiting() == 2; }));
    m_gates->forcing.Open();
    EXPECT_TRUE(Eventually([&] { return ofCamera->IsDone() && ofInterface->IsDone(); }));
    EXPECT_TRUE(Eventually([&] { return TextOf(device, "GevDeviceIsWrongSubnet") == "0"; }));
}

} // namespace
} // namespace Norvane::Test
