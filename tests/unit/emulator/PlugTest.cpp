#include "EmulatorFixture.h"

#include "norvane/Exception.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <thread>

namespace Norvane::Transport::Emulator {
namespace {

constexpr const char* kHeader =
    "[interface G]\ntype=GEV\naddress=10.1.0.1\nnetmask=255.255.0.0\n[interface U]\ntype=U3V\n";

class PlugTest : public EmulatorFixture {};

TEST_F(PlugTest, AHandlerThatComesTooLateIsStillCalled) {
    Start(std::string(kHeader) + "[camera 1]\n");
    const auto device = Open();
    Write(kHeader);
    ASSERT_TRUE(Eventually([&] { return !device->IsAlive(); }));
    std::atomic<bool> lost{false};
    device->SetLostHandler([&] { lost = true; });
    EXPECT_TRUE(Eventually([&] { return lost.load(); }));
}

TEST_F(PlugTest, AWaitForASlowRegisterEndsWhenTheCameraLeaves) {
    Start(std::string(kHeader) + "[camera 1]\nregister-delay-us=1000000\n");
    const auto device = Open();
    std::atomic<bool> failed{false};
    std::thread reader([&] {
        try {
            std::uint32_t word = 0;
            for (;;) {
                device->Read(&word, 0x10000, 4);
            }
        } catch (const Exception&) {
            failed = true;
        }
    });
    Write(kHeader);
    EXPECT_TRUE(Eventually([&] { return failed.load(); }));
    reader.join();
}

TEST_F(PlugTest, AnInterfaceThatCannotBeUsedHidesItsCameras) {
    Start(std::string(kHeader) + "[camera 1]\n");
    const auto device = Open();
    Write("[interface G]\nusable=false\n[camera 1]\n");
    EXPECT_TRUE(Eventually([&] { return !Find("1"); }));
    const auto interfaces = m_transport->Scan().interfaces;
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_FALSE(interfaces[0].usable);
    EXPECT_TRUE(Eventually([&] { return !device->IsAlive(); }));
}

TEST_F(PlugTest, TheSecondOneWhoOpensOnlyReads) {
    Start(std::string(kHeader) + "[camera 1]\n");
    auto first = Open();
    const auto second = Open();
    EXPECT_EQ(first->CurrentAccess(), Access::ReadWrite);
    EXPECT_EQ(second->CurrentAccess(), Access::ReadOnly);
    const auto map = Map(second);
    EXPECT_EQ(AccessOf(*map, "Width"), GenApi::RO);
    EXPECT_NO_THROW(NumberOf(*map, "Width"));
    first.reset();
    EXPECT_EQ(Open()->CurrentAccess(), Access::ReadWrite);
}

TEST_F(PlugTest, ForceIpMovesACameraIntoItsInterfacesNetwork) {
    Start(std::string(kHeader) +
          "[camera 1]\naddress=192.168.5.5\nnetmask=255.255.255.0\n[camera 2]\n[camera 3]\ninterface=U\n");
    std::atomic<int> changes{0};
    m_transport->SetChangeHandler([&] { ++changes; });
    m_transport->ForceIp("1");
    const auto moved = Find("1");
    EXPECT_EQ(moved->ipAddress & 0xFFFF0000, 0x0A010000U);
    EXPECT_EQ(moved->subnetMask, 0xFFFF0000U);
    EXPECT_NE(moved->ipAddress, Find("2")->ipAddress);
    EXPECT_NE(moved->ipAddress, 0x0A010001U);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(NumberOf(*Map(Open()), "GevCurrentIPAddress"), static_cast<std::int64_t>(moved->ipAddress));
    EXPECT_THROW(m_transport->ForceIp("3"), Exception);
    EXPECT_THROW(m_transport->ForceIp("4"), Exception);
}

TEST_F(PlugTest, AResetTakesTheCameraAwayAndBringsItBack) {
    Start(std::string(kHeader) + "[camera 1]\nwidth=64\nheight=64\n");
    const auto device = Open();
    const auto map = Map(device);
    SetText(*map, "UserSetSelector", "UserSet1");
    SetText(*map, "DeviceUserID", "Käfer");
    SetText(*map, "Width", "32");
    Execute(*map, "UserSetSave");
    SetText(*map, "UserSetDefault", "UserSet1");
    SetText(*map, "GevPersistentIPAddress", std::to_string(0x0A010909));
    SetText(*map, "GevPersistentSubnetMask", std::to_string(0xFFFF0000));
    SetText(*map, "GevCurrentIPConfigurationPersistentIP", "true");
    EXPECT_NE(Find("1")->ipAddress, 0x0A010909U);
    EXPECT_TRUE(Eventually([&] { return GenApi::CCommandPtr(map->GetNode("UserSetSave"))->IsDone(); }));
    Execute(*map, "DeviceReset");
    EXPECT_TRUE(Eventually([&] { return !device->IsAlive(); }));
    EXPECT_TRUE(Eventually([&] { return Find("1").has_value(); }));
    EXPECT_EQ(Find("1")->userName, "Käfer");
    EXPECT_EQ(Find("1")->ipAddress, 0x0A010909U);
    EXPECT_EQ(NumberOf(*Map(Open()), "Width"), 32);
}

TEST_F(PlugTest, AnotherDescriptionStandsOverAPlainRegisterFile) {
    std::ofstream(Path("other.xml")) << "<RegisterDescription/>";
    Start(std::string(kHeader) + "[camera 1]\ndescription=other.xml\nwidth=320\nheight=200\nframe-rate=200\n"
                                 "[camera 2]\ndescription=missing.xml\nwidth=64\nheight=64\n");
    const auto device = Open();
    EXPECT_EQ(device->Description(), "<RegisterDescription/>");
    std::uint32_t word = 7, zero = 5;
    device->Write(&word, 0x1234, 4);
    word = 0;
    device->Read(&word, 0x1234, 4);
    device->Read(&zero, 0xFFFFFFFFFF, 4);
    EXPECT_EQ(word, 7U);
    EXPECT_EQ(zero, 0U);
    const auto stream = device->OpenStream({});
    const auto frame = stream->Pop(10000);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->width, 320U);
    EXPECT_EQ(frame->height, 200U);
    EXPECT_THAT(Complaints(), testing::ElementsAre(testing::HasSubstr("missing.xml")));
    EXPECT_EQ(NumberOf(*Map(Open("2")), "Width"), 64);
}

} // namespace
} // namespace Norvane::Transport::Emulator
