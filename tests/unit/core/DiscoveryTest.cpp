#include "CoreFixture.h"

#include "core/Identity.h"

#include <gtest/gtest.h>

#include <atomic>

namespace Norvane::Test {
namespace {

using ::testing::ElementsAre;

class DiscoveryTest : public CoreFixture {};

TEST_F(DiscoveryTest, ListsAnswerFromTheLatestFinishedScan) {
    AddInterface("GigE-0");
    AddInterface("GigE-1");
    AddCamera("11");
    AddCamera("22", "interface=GigE-1");
    Start();
    EXPECT_EQ(m_system->GetInterfaces(true).GetSize(), 2U);
    ASSERT_EQ(m_system->GetCameras(true).GetSize(), 2U);
    const InterfacePtr second = m_system->GetInterfaces(false).GetByIndex(1);
    EXPECT_EQ(second->GetInterfaceID(), "GigE-1");
    ASSERT_EQ(second->GetCameras(true).GetSize(), 1U);
    EXPECT_EQ(second->GetCameras(false).GetByIndex(0)->GetDeviceNumber(), 22U);
    EXPECT_EQ(ErrorOf([&] { m_system->GetCameras(false).GetByIndex(2); }), Error::InvalidParameter);

    // With the network stuck, the list still answers what the last finished scan found.
    m_gates->scanning.Close();
    const int before = m_gates->scans;
    ASSERT_TRUE(Eventually([&] { return m_gates->scanning.Waiting() == 1; }));
    EXPECT_EQ(m_system->GetCameras(true).GetSize(), 2U);
    m_gates->scanning.Open();
    EXPECT_TRUE(Eventually([&] { return m_gates->scans > before; }));
}

TEST_F(DiscoveryTest, TheFirstListGivesUpOnANetworkThatDoesNotAnswer) {
    AddInterface();
    m_gates->scanning.Close();
    Start();
    EXPECT_EQ(m_system->GetInterfaces(true).GetSize(), 0U);
    EventRecorder events;
    m_system->RegisterEventHandler(events);
    m_gates->scanning.Open();
    // The list showed nothing, so what the first scan finds has arrived.
    EXPECT_TRUE(Eventually([&] { return events.Events().size() == 1; }));
    EXPECT_THAT(events.Events(), ElementsAre("+GigE-0"));
    m_system->UnregisterEventHandler(events);
}

TEST_F(DiscoveryTest, EventsTellTwoPicturesApart) {
    StartWithCamera();
    EventRecorder events;
    m_system->RegisterEventHandler(events);
    m_system->RegisterInterfaceEventHandler(events);
    EXPECT_EQ(ErrorOf([&] { m_system->RegisterEventHandler(events); }), Error::InvalidParameter);

    AddInterface("GigE-1");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 1; }));
    AddCamera("22", "interface=GigE-1");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 2; }));
    EXPECT_EQ(m_system->GetCameras(false).GetSize(), 2U) << "a list asked for after the event shows it";
    Unplug("7");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 3; }));
    RemoveInterface("GigE-1");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 5; }));
    EXPECT_THAT(events.Events(), ElementsAre("+GigE-1", "+22", "-7", "-22", "-GigE-1"));

    m_system->UnregisterEventHandler(events);
    m_system->UnregisterInterfaceEventHandler(events);
    AddCamera("7");
    ASSERT_TRUE(Eventually([&] { return m_system->GetCameras(false).GetSize() == 1; }));
    EXPECT_EQ(events.Events().size(), 5U) << "no call after unregistering";
}

TEST_F(DiscoveryTest, WhatComesBackIsTheSameObject) {
    const CameraPtr camera = StartWithCamera();
    const InterfacePtr interface = m_system->GetInterfaces(false).GetByIndex(0);
    EXPECT_TRUE(camera->IsValid());
    RemoveInterface("GigE-0");
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid() && !interface->IsValid(); }));
    EXPECT_FALSE(interface->IsUsable());
    EXPECT_EQ(interface->GetCameras(false).GetSize(), 0U);
    EXPECT_EQ(TextOf(camera->GetTLDeviceNodeMap(), "DeviceModelName"), "Duskwing S");

    AddInterface("GigE-0");
    ASSERT_TRUE(Eventually([&] { return m_system->GetCameras(false).GetSize() == 1; }));
    EXPECT_TRUE(camera->IsValid() && interface->IsValid());
    EXPECT_EQ(m_system->GetCameras(false).GetByIndex(0), camera);
    EXPECT_EQ(m_system->GetInterfaces(false).GetByIndex(0), interface);
}

TEST_F(DiscoveryTest, AHandlerMayUnregisterItselfAndAskForTheLists) {
    struct OneShot : InterfaceEventHandler {
        ISystem* system = nullptr;
        std::atomic<int> calls{0};
        void OnDeviceArrival(std::uint64_t) override {
            ++calls;
            system->GetCameras(true);
            system->UnregisterInterfaceEventHandler(*this);
        }
        void OnDeviceRemoval(std::uint64_t) override { ++calls; }
    };
    const CameraPtr camera = StartWithCamera();
    OneShot handler;
    handler.system = m_system.get();
    m_system->RegisterInterfaceEventHandler(handler);
    AddCamera("22");
    ASSERT_TRUE(Eventually([&] { return handler.calls == 1; }));
    Unplug("7");
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid(); }));
    EXPECT_EQ(handler.calls, 1);
}

TEST_F(DiscoveryTest, HandlesHeldTooLongAreOnlyInvalid) {
    const CameraPtr camera = StartWithCamera();
    camera->Init();
    camera->BeginAcquisition();
    static std::string s_log;
    SetLogSink([](LogLevel level, const char* message) {
        if (level == LogLevel::Warning) {
            s_log += message;
        }
    });
    m_system = nullptr;
    SetLogSink(nullptr);
    EXPECT_THAT(s_log, ::testing::HasSubstr("still held: 1"));
    EXPECT_FALSE(m_gates->Device()) << "the device is closed";
    EXPECT_FALSE(camera->IsValid());
    EXPECT_EQ(ErrorOf([&] { camera->Init(); }), Error::NotAvailable);
}

TEST(IdentityTest, SerialTextsBecomeNumbers) {
    const struct {
        const char* serial;
        std::uint64_t number; ///< 0: a hash
    } kCases[] = {{"21034567", 21034567},
                  {"2147483647", 2147483647},
                  {"2147483648", 0},
                  {"0", 0},
                  {"18446744073709551616", 0},
                  {"12AB", 0},
                  {"-5", 0},
                  {" 5", 0},
                  {"", 0}};
    for (const auto& c : kCases) {
        EXPECT_EQ(Core::NumberOfSerial(c.serial).value_or(0), c.number) << '"' << c.serial << '"';
        Transport::DeviceRecord record;
        record.serial = c.serial;
        const std::uint64_t number = Core::DeviceNumbers().NumberFor("k", record);
        EXPECT_GE(number, 1U);
        EXPECT_LE(number, 2147483647U);
        EXPECT_EQ(number, Core::DeviceNumbers().NumberFor("k", record)) << "the same in every run";
    }
}

TEST(IdentityTest, TwoDevicesNeverShareANumber) {
    Core::DeviceNumbers numbers;
    Transport::DeviceRecord first;
    first.vendor = "A";
    first.serial = "5";
    Transport::DeviceRecord second = first;
    second.vendor = "B";
    EXPECT_EQ(numbers.NumberFor("a", first), 5U);
    const std::uint64_t other = numbers.NumberFor("b", second);
    EXPECT_NE(other, 5U);
    EXPECT_NE(numbers.NumberFor("c", second), other) << "even with the same vendor, model and serial";
    EXPECT_EQ(numbers.NumberFor("b", second), other);
}

} // namespace
} // namespace Norvane::Test
