#include "transport/aravis/ForceIp.h"

#include "../ErrorOf.h"
#include "FakeCamera.h"
#include "LostCamera.h"

#include <algorithm>
#include <gmock/gmock.h>

using namespace Norvane::Transport;
using namespace std::chrono_literals;
using Norvane::Error;
using Norvane::Test::ErrorOf;

namespace {

using Manner = LostCamera::Manner;

/// The address that the transport would choose first; another host owns it.
const std::uint32_t kOwned = SuggestAddresses(LostCamera::kAdapterAddress, LostCamera::kAdapterMask,
                                              LostCamera::kMac, {LostCamera::kAdapterAddress}, 1)
                                 .front();

} // namespace

TEST(SuggestAddresses, StayInTheNetworkAndAvoidTakenOnes) {
    const std::uint32_t adapter = 0xC0A80105;
    const auto all = SuggestAddresses(adapter, 0xFFFFFFF0, 42, {0xC0A80101, 0xC0A8010E}, 100);
    EXPECT_THAT(std::set<std::uint32_t>(all.begin(), all.end()),
                testing::ElementsAre(0xC0A80102, 0xC0A80103, 0xC0A80104, 0xC0A80106, 0xC0A80107, 0xC0A80108,
                                     0xC0A80109, 0xC0A8010A, 0xC0A8010B, 0xC0A8010C, 0xC0A8010D));
    EXPECT_EQ(all.size(), 11U) << "each once";
    EXPECT_EQ(SuggestAddresses(adapter, 0xFFFF0000, 42, {}, 8).size(), 8U);
    EXPECT_NE(SuggestAddresses(adapter, 0xFFFF0000, 42, {}, 1),
              SuggestAddresses(adapter, 0xFFFF0000, 43, {}, 1))
        << "two cameras at once do not go for the same";
    EXPECT_TRUE(SuggestAddresses(adapter, 0xFFFFFFFE, 42, {}, 8).empty()) << "no room";
    EXPECT_TRUE(SuggestAddresses(adapter, 0xFFFFFFFF, 42, {}, 8).empty());
}

TEST(ForceIp, GivesALostCameraAFreeAddress) {
    for (const Manner manner : {Manner::Obeys, Manner::ForgetsToAcknowledge}) {
        LostCamera camera(manner, kOwned);
        ASSERT_TRUE(camera.IsReady()) << "needs iproute2 and the right to make virtual adapters";
        const auto transport = CreateAravisTransport();
        const DeviceRecord record = WaitForCamera(*transport);
        EXPECT_EQ(record.interfaceId, LostCamera::kAdapter);
        EXPECT_EQ(record.ipAddress, LostCamera::kFirstAddress) << "as it is, though it does not fit";
        EXPECT_EQ(record.subnetMask, 0xFFFFFF00U);
        EXPECT_EQ(record.serial, "4711");

        transport->ForceIp(record.id);
        EXPECT_EQ(camera.Address() & LostCamera::kAdapterMask,
                  LostCamera::kAdapterAddress & LostCamera::kAdapterMask);
        EXPECT_NE(camera.Address(), LostCamera::kAdapterAddress);
        EXPECT_NE(camera.Address(), kOwned) << "somebody else has it";
        const std::uint32_t given = camera.Address();
        EXPECT_EQ(WaitForCamera(*transport).ipAddress, given);
        transport->ForceIp(record.id);
        EXPECT_EQ(camera.Address(), given) << "a valid address stays";
    }
}

TEST(ForceIp, GivesNoAddressThatAnotherCameraIsGetting) {
    LostCamera camera(Manner::Obeys, kOwned);
    ASSERT_TRUE(camera.IsReady()) << "needs iproute2 and the right to make virtual adapters";
    GevDiscovery discovery;
    std::map<std::string, GevCamera> found;
    ASSERT_TRUE(WaitFor(
        [&] {
            found = discovery.Scan(
                ListAdapters(), [](const std::string&) { return GevDiscovery::Held::No; }, 300ms);
            return !found.empty();
        },
        5s));
    std::uint32_t promised = 0;
    const std::uint32_t address =
        ForceIpAddress(found.begin()->second, {LostCamera::kAdapterAddress}, [&](std::uint32_t free) {
            promised = promised == 0 ? free : promised;
            return free != promised;
        });
    EXPECT_NE(promised, 0U);
    EXPECT_NE(address, promised);
    EXPECT_EQ(camera.Address(), address);
}

TEST(ForceIp, SaysWhyItFailed) {
    const struct {
        Manner manner;
        Error error;
    } cases[] = {{Manner::IsSilent, Error::Timeout},
                 {Manner::Refuses, Error::Io},
                 {Manner::AnswersForOthers, Error::Timeout}};
    for (const auto& [manner, expected] : cases) {
        LostCamera camera(manner, kOwned);
        ASSERT_TRUE(camera.IsReady()) << "needs iproute2 and the right to make virtual adapters";
        const auto transport = CreateAravisTransport();
        const DeviceRecord record = WaitForCamera(*transport);
        Error error = Error::Success;
        EXPECT_LT(TimeOf([&] { error = ErrorOf([&] { transport->ForceIp(record.id); }); }), 5000ms);
        EXPECT_EQ(error, expected) << static_cast<int>(manner);
        EXPECT_EQ(camera.Address(), LostCamera::kFirstAddress);
    }
}
