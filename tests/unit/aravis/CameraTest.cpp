#include "../ErrorOf.h"
#include "FakeCamera.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <gmock/gmock.h>

using namespace Norvane::Transport;
using namespace std::chrono_literals;
using Norvane::Error;
using Norvane::Test::ErrorOf;
using testing::HasSubstr;

namespace {

class CameraTest : public testing::Test {
protected:
    void SetUp() override {
        if (!FakeCamera::IsInstalled()) {
            GTEST_SKIP() << "package aravis-tools-cli is missing";
        }
    }
    std::unique_ptr<ITransport> m_transport = CreateAravisTransport();
};

bool ListsLoopback(const ScanResult& result) {
    return std::any_of(result.interfaces.begin(), result.interfaces.end(),
                       [](const InterfaceRecord& record) { return record.ipAddress == 0x7F000001; });
}

} // namespace

TEST_F(CameraTest, ComesAndGoesWithItsInterface) {
    const ScanResult before = m_transport->Scan();
    EXPECT_TRUE(before.devices.empty());
    EXPECT_FALSE(ListsLoopback(before)) << "loopback is only of interest while a camera answers there";

    FakeCamera camera({"-s", "NV-77"});
    const DeviceRecord record = WaitForCamera(*m_transport);
    EXPECT_EQ(record.vendor, "Aravis");
    EXPECT_EQ(record.model, "Fake");
    EXPECT_EQ(record.serial, "NV-77");
    EXPECT_EQ(record.technology, Technology::GigEVision);
    EXPECT_EQ(record.ipAddress, 0x7F000001U);
    EXPECT_EQ(record.access, Access::ReadWrite);
    ScanResult with;
    EXPECT_LT(TimeOf([&] { with = m_transport->Scan(); }), 1000ms);
    ASSERT_TRUE(ListsLoopback(with));
    EXPECT_EQ(with.devices.front(), record) << "a second scan sees the same";
    EXPECT_TRUE(std::any_of(with.interfaces.begin(), with.interfaces.end(), [&](const auto& interface) {
        return interface.id == record.interfaceId && interface.subnetMask == 0xFF000000;
    }));

    camera.Kill();
    EXPECT_TRUE(WaitFor(
        [&] {
            const ScanResult result = m_transport->Scan();
            return result.devices.empty() && !ListsLoopback(result);
        },
        5s));
}

TEST_F(CameraTest, OpensReadsAndWrites) {
    FakeCamera camera;
    const auto device = m_transport->Open(WaitForCamera(*m_transport).id);
    EXPECT_TRUE(device->IsAlive());
    EXPECT_EQ(device->CurrentAccess(), Access::ReadWrite);
    EXPECT_EQ(device->GetAccessMode(), Norvane::GenApi::RW);
    EXPECT_THAT(device->Description(), HasSubstr("<RegisterDescription"));

    WriteRegister(*device, FakeCamera::kWidth, 0x140);
    EXPECT_EQ(ReadRegister(*device, FakeCamera::kWidth), 0x140U);

    // Spans that are no whole words: the model name is a string register at 0x68.
    char model[32] = {};
    device->Read(model, 0x68, sizeof model);
    EXPECT_STREQ(model, "Fake");
    char middle[3] = {};
    device->Read(middle, 0x69, 2);
    EXPECT_STREQ(middle, "ak");
    WriteRegister(*device, FakeCamera::kHeight, 0x11223344);
    const std::uint8_t inner[2] = {0xAA, 0xBB};
    device->Write(inner, FakeCamera::kHeight + 1, 2);
    EXPECT_EQ(ReadRegister(*device, FakeCamera::kHeight), 0x11AABB44U) << "the bytes beside it stay";

    char bytes[4];
    EXPECT_EQ(ErrorOf([&] { device->Read(bytes, -4, 4); }), Error::InvalidAddress);
    EXPECT_EQ(ErrorOf([&] { device->Read(bytes, std::int64_t{1} << 33, 4); }), Error::InvalidAddress);
    EXPECT_TRUE(device->IsAlive()) << "a refused access is no loss";
}

TEST_F(CameraTest, UnknownCameraIsNotOpened) {
    EXPECT_EQ(ErrorOf([&] { m_transport->Open("gev-000000000000"); }), Error::InvalidId);
    EXPECT_EQ(ErrorOf([&] { m_transport->ForceIp("gev-000000000000"); }), Error::InvalidId);
}

TEST_F(CameraTest, IsReadOnlyWhileAnotherProgramControlsIt) {
    FakeCamera camera;
    auto holder = m_transport->Open(WaitForCamera(*m_transport).id);
    const auto other = CreateAravisTransport();
    const DeviceRecord record = WaitForCamera(*other);
    EXPECT_EQ(record.access, Access::ReadOnly);
    {
        const auto reader = other->Open(record.id);
        EXPECT_EQ(reader->CurrentAccess(), Access::ReadOnly);
        EXPECT_EQ(reader->GetAccessMode(), Norvane::GenApi::RO);
        EXPECT_NE(ReadRegister(*reader, FakeCamera::kWidth), 0U);
        EXPECT_EQ(ErrorOf([&] { WriteRegister(*reader, FakeCamera::kWidth, 64); }), Error::AccessDenied);
        EXPECT_EQ(ErrorOf([&] { reader->OpenStream({4, 512 * 512}); }), Error::AccessDenied);
    }
    EXPECT_EQ(WaitForCamera(*m_transport).access, Access::ReadWrite) << "it is this program that holds it";
    holder.reset();
    EXPECT_EQ(WaitForCamera(*other).access, Access::ReadWrite) << "closing gives control back";
    EXPECT_EQ(other->Open(record.id)->CurrentAccess(), Access::ReadWrite);
}

TEST_F(CameraTest, EveryAccessToASilentCameraEndsWithinASecond) {
    FakeCamera camera;
    const std::string id = WaitForCamera(*m_transport).id;
    auto device = m_transport->Open(id);
    std::atomic<int> lost{0};
    device->SetLostHandler([&] { ++lost; });

    camera.Signal(SIGSTOP);
    Error first = Error::Success;
    EXPECT_LT(TimeOf([&] { first = ErrorOf([&] { ReadRegister(*device, FakeCamera::kWidth); }); }), 1500ms);
    EXPECT_NE(first, Error::Success);
    EXPECT_FALSE(device->IsAlive());
    EXPECT_EQ(device->GetAccessMode(), Norvane::GenApi::NA);
    EXPECT_LT(TimeOf([&] {
                  for (int i = 0; i < 100; ++i) {
                      ASSERT_NE(ErrorOf([&] { ReadRegister(*device, FakeCamera::kWidth); }), Error::Success);
                  }
              }),
              500ms)
        << "a lost camera is not waited for again";
    EXPECT_TRUE(WaitFor([&] { return lost == 1; }, 2s));
    EXPECT_LT(TimeOf([&] { device.reset(); }), 1500ms);
    EXPECT_LT(TimeOf([&] { EXPECT_NE(ErrorOf([&] { m_transport->Open(id); }), Error::Success); }), 1500ms);

    camera.Signal(SIGCONT);
    EXPECT_TRUE(WaitFor(
        [&] {
            const auto result = m_transport->Scan();
            return !result.devices.empty() && result.devices.front().access == Access::ReadWrite;
        },
        10s));
    EXPECT_EQ(m_transport->Open(id)->CurrentAccess(), Access::ReadWrite) << "it can be opened anew";
    EXPECT_EQ(lost, 1);
}

TEST_F(CameraTest, ACameraThatLeavesIsNoticedWithoutAnAccessAndMayBeClosedThen) {
    FakeCamera camera;
    auto device = m_transport->Open(WaitForCamera(*m_transport).id);
    std::atomic<bool> closed{false};
    device->SetLostHandler([&] {
        device.reset();
        closed = true;
    });
    camera.Kill();
    EXPECT_TRUE(WaitFor([&] { return closed.load(); }, 6s));
}
