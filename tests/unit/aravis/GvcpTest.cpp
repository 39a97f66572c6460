#include "transport/aravis/Gvcp.h"

#include <gmock/gmock.h>

using namespace Norvane::Transport::Gvcp;
using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

namespace {

/// A discovery acknowledge, field by field at the addresses of the bootstrap registers.
Bytes DiscoveryPacket(std::uint16_t requestId) {
    Bytes packet(8 + 0xF8);
    const auto put = [&packet](std::size_t offset, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), packet.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    const auto text = [&put](std::size_t offset, const std::string& value) {
        put(8 + offset, Bytes(value.begin(), value.end()));
    };
    put(0, {0x00, 0x00, 0x00, 0x03, 0x00, 0xF8, static_cast<std::uint8_t>(requestId >> 8),
            static_cast<std::uint8_t>(requestId)});
    put(8 + 0x0A, {0x00, 0x11, 0x1C, 0xF5, 0x80, 0x07});
    put(8 + 0x24, {169, 254, 3, 9});
    put(8 + 0x34, {255, 255, 0, 0});
    put(8 + 0x44, {169, 254, 0, 1});
    text(0x48, "Altrona");
    text(0x68, "Duskwing S DWS-50S5C, 32 letters");
    text(0x88, "1.4.2");
    text(0xA8, "made for testing");
    text(0xD8, "21034567");
    text(0xE8, "left door");
    return packet;
}

} // namespace

TEST(Gvcp, BuildsCommands) {
    EXPECT_THAT(BuildDiscovery(0x1234, AnswerBy::Broadcast), ElementsAre(0x42, 0x11, 0, 2, 0, 0, 0x12, 0x34));
    EXPECT_THAT(BuildDiscovery(0xFFFF, AnswerBy::Unicast), ElementsAre(0x42, 0x01, 0, 2, 0, 0, 0xFF, 0xFF));
    EXPECT_THAT(BuildReadRegister(7, 0x0A00), ElementsAre(0x42, 0x01, 0, 0x80, 0, 4, 0, 7, 0, 0, 0x0A, 0x00));

    const Bytes force = BuildForceIp(9, 0x00111CF58007, 0xC0A80142, 0xFFFFFF00, 0xC0A80101);
    Bytes expected(8 + 56);
    const Bytes header{0x42, 0x11, 0, 4, 0, 56, 0, 9, 0, 0, 0x00, 0x11, 0x1C, 0xF5, 0x80, 0x07};
    std::copy(header.begin(), header.end(), expected.begin());
    const auto put = [&expected](std::size_t offset, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    put(8 + 20, {192, 168, 1, 66});
    put(8 + 36, {255, 255, 255, 0});
    put(8 + 52, {192, 168, 1, 1});
    EXPECT_EQ(force, expected);
}

TEST(Gvcp, ReadsADiscoveryAnswer) {
    const Bytes packet = DiscoveryPacket(0x0102);
    const auto acknowledge = ParseAcknowledge(packet);
    ASSERT_TRUE(acknowledge);
    EXPECT_EQ(acknowledge->requestId, 0x0102);
    const auto answer = ParseDiscovery(*acknowledge);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->macAddress, 0x00111CF58007U);
    EXPECT_EQ(answer->ipAddress, 0xA9FE0309U);
    EXPECT_EQ(answer->subnetMask, 0xFFFF0000U);
    EXPECT_EQ(answer->gateway, 0xA9FE0001U);
    EXPECT_EQ(answer->vendor, "Altrona");
    EXPECT_EQ(answer->model, "Duskwing S DWS-50S5C, 32 letters") << "a full field has no zero at its end";
    EXPECT_EQ(answer->version, "1.4.2");
    EXPECT_EQ(answer->manufacturerInfo, "made for testing");
    EXPECT_EQ(answer->serial, "21034567");
    EXPECT_EQ(answer->userName, "left door");
}

TEST(Gvcp, EveryShorterPacketIsNoAnswer) {
    const Bytes whole = DiscoveryPacket(1);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(ParseAcknowledge(cut)) << size;
    }
    Bytes longer = whole; // bytes behind the promised length are padding
    longer.resize(whole.size() + 20);
    ASSERT_TRUE(ParseAcknowledge(longer));
    EXPECT_TRUE(ParseDiscovery(*ParseAcknowledge(longer)));
}

TEST(Gvcp, ForeignPacketsAreNoAnswer) {
    EXPECT_FALSE(ParseAcknowledge(BuildDiscovery(1, AnswerBy::Broadcast))) << "our own broadcast";

    Bytes failed = DiscoveryPacket(1);
    failed[0] = 0x80;
    failed[1] = 0x06;
    ASSERT_TRUE(ParseAcknowledge(failed));
    EXPECT_EQ(ParseAcknowledge(failed)->status, kStatusAccessDenied);
    EXPECT_FALSE(ParseDiscovery(*ParseAcknowledge(failed)));

    Bytes other = DiscoveryPacket(1);
    other[3] = 0x81;
    EXPECT_FALSE(ParseDiscovery(*ParseAcknowledge(other)));
    EXPECT_FALSE(ParseReadRegister(*ParseAcknowledge(other))) << "248 bytes are no single register";

    Bytes shortPayload = DiscoveryPacket(1);
    shortPayload[5] = 0xF4; // the header admits to less than a discovery answer has
    ASSERT_TRUE(ParseAcknowledge(shortPayload));
    EXPECT_FALSE(ParseDiscovery(*ParseAcknowledge(shortPayload)));
}
