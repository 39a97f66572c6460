#include "CoreFixture.h"

#include "core/Identity.h"

#include <gtest/gtest.h>

namespace Norvane::Test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DiscoveryTest : public CoreFixture {};

TEST_F(DiscoveryTest, ListsAnswerFromTheLatestFinishedScan) {
    m_world->AddInterface("eth0");
    m_world->AddInterface("eth1");
    m_world->AddCamera("a", "eth0", "11");
    m_world->AddCamera("b", "eth1", "22");
    m_world->AddCamera("lost", "no such interface", "33");
    Start();
    EXPECT_EQ(m_system->GetInterfaces(true).GetSize(), 2U);
    ASSERT_EQ(m_system->GetCameras(true).GetSize(), 2U);
    const InterfacePtr second = m_system->GetInterfaces(false).GetByIndex(1);
    EXPECT_EQ(second->GetInterfaceID(), "eth1");
    ASSERT_EQ(second->GetCameras(true).GetSize(), 1U);
    EXPECT_EQ(second->GetCameras(false).GetByIndex(0)->GetDeviceNumber(), 22U);
    EXPECT_EQ(ErrorOf([&] { m_system->GetCameras(false).GetByIndex(2); }), Error::InvalidParameter);

    // With the network stuck, the list still answers what the last finished scan found.
    m_world->scanning.Close();
    const int before = m_world->scans;
    ASSERT_TRUE(Eventually([&] { return m_world->scanning.Waiting() == 1; }));
    EXPECT_EQ(m_system->GetCameras(true).GetSize(), 2U);
    m_world->scanning.Open();
    EXPECT_TRUE(Eventually([&] { return m_world->scans > before; }));
}

TEST_F(DiscoveryTest, TheFirstListGivesUpOnANetworkThatDoesNotAnswer) {
    m_world->AddInterface("eth0");
    m_world->scanning.Close();
    Start();
    EXPECT_EQ(m_system->GetInterfaces(true).GetSize(), 0U);
    EventRecorder events;
    m_system->RegisterEventHandler(events);
    m_world->scanning.Open();
    // The list showed nothing, so what the first scan finds has arrived.
    EXPECT_TRUE(Eventually([&] { return events.Events().size() == 1; }));
    EXPECT_THAT(events.Events(), ElementsAre("+eth0"));
    m_system->UnregisterEventHandler(events);
}

TEST_F(DiscoveryTest, EventsTellTwoPicturesApart) {
    m_world->AddInterface("eth0");
    const auto camera = m_world->AddCamera("a", "eth0", "11");
    Start();
    EventRecorder events;
    m_system->RegisterEventHandler(events);
    m_system->RegisterInterfaceEventHandler(events);
    EXPECT_EQ(ErrorOf([&] { m_system->RegisterEventHandler(events); }), Error::InvalidParameter);
    ASSERT_EQ(m_system->GetCameras(true).GetSize(), 1U);

    m_world->AddInterface("eth1");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 1; }));
    m_world->AddCamera("b", "eth1", "22");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 2; }));
    EXPECT_EQ(m_system->GetCameras(false).GetSize(), 2U) << "a list asked for after the event shows it";
    m_world->Unplug(camera);
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 3; }));
    m_world->RemoveInterface("eth1");
    ASSERT_TRUE(Eventually([&] { return events.Events().size() == 5; }));
    EXPECT_THAT(events.Events(), ElementsAre("+eth1", "+22", "-11", "-22", "-eth1"));

    m_system->UnregisterEventHandler(events);
    m_system->UnregisterInterfaceEventHandler(events);
    const int before = m_world->scans;
    m_world->Plug(camera);
    ASSERT_TRUE(Eventually([&] { return m_world->scans > before + 1; }));
    EXPECT_EQ(events.Events().size(), 5U) << "no call after unregistering";
}

TEST_F(DiscoveryTest, WhatComesBackIsTheSameObject) {
    const CameraPtr camera = StartWithCamera();
    const InterfacePtr interface = m_system->GetInterfaces(false).GetByIndex(0);
    EXPECT_TRUE(camera->IsValid());
    m_world->Unplug(m_fake);
    m_world->RemoveInterface("eth0");
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid() && !interface->IsValid(); }));
    EXPECT_FALSE(interface->IsUsable());
    EXPECT_EQ(interface->GetCameras(false).GetSize(), 0U);
    EXPECT_EQ(TextOf(camera->GetTLDeviceNodeMap(), "DeviceModelName"), "Fake");

    m_world->AddInterface("eth0");
    m_world->Plug(m_fake);
    ASSERT_TRUE(Eventually([&] { return m_system->GetCameras(false).GetSize() == 1; }));
    EXPECT_TRUE(camera->IsValid() && interface->IsValid());
    EXPECT_EQ(m_system->GetCameras(false).GetByIndex(0), camera);
    EXPECT_EQ(m_system->GetInterfaces(false).GetByIndex(0), interface);
}

TEST_F(DiscoveryTest, AHandlerMayUnregisterItselfAndDropTheLists) {
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
    m_world->AddCamera("b", "eth0", "22");
    ASSERT_TRUE(Eventually([&] { return handler.calls == 1; }));
    m_world->Unplug(m_fake);
    ASSERT_TRUE(Eventually([&] { return !camera->IsValid(); }));
    EXPECT_EQ(handler.calls, 1);
}

TEST_F(DiscoveryTest, HandlesHeldTooLongAreOnlyInvalid) {
    CameraPtr camera = StartWithCamera();
    camera->Init();
    camera->BeginAcquisition();
    static std::string s_log;
    SetLogSink([](LogLevel level, const char* message) {
        if (level == LogLevel::Warning) {
            s_log += message;
        }
    });
    m_system.reset();
    SetLogSink(nullptr);
    EXPECT_THAT(s_log, ::testing::HasSubstr("still held: 1"));
    EXPECT_EQ(m_fake->Devices(), 0) << "the device is closed";
    EXPECT_EQ(m_fake->Register(kAcquisitionStop), 1);
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
