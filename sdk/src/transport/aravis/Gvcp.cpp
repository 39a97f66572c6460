#include "transport/aravis/Gvcp.h"

#include <algorithm>

namespace Norvane::Transport::Gvcp {
namespace {

constexpr std::uint8_t kCommandKey = 0x42;
constexpr std::uint8_t kAcknowledgeRequired = 0x01;
constexpr std::uint8_t kAllowBroadcastAcknowledge = 0x10;
constexpr std::size_t kHeaderSize = 8;

// Offsets in the payload of a discovery acknowledge; they equal the addresses of the bootstrap registers.
constexpr std::size_t kMacHighOffset = 0x0A;
constexpr std::size_t kMacLowOffset = 0x0C;
constexpr std::size_t kIpOffset = 0x24;
constexpr std::size_t kMaskOffset = 0x34;
constexpr std::size_t kGatewayOffset = 0x44;
constexpr std::size_t kDiscoverySize = 0xF8;

// Offsets in the payload of a force-IP command.
constexpr std::size_t kForceMacHighOffset = 0x02;
constexpr std::size_t kForceMacLowOffset = 0x04;
constexpr std::size_t kForceIpOffset = 0x14;
constexpr std::size_t kForceMaskOffset = 0x24;
constexpr std::size_t kForceGatewayOffset = 0x34;
constexpr std::size_t kForceIpSize = 0x38;

void Put16(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t value) {
    bytes[offset] = static_cast<std::uint8_t>(value >> 8);
    bytes[offset + 1] = static_cast<std::uint8_t>(value);
}

void Put32(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t value) {
    Put16(bytes, offset, value >> 16);
    Put16(bytes, offset + 2, value);
}

std::uint16_t Get16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>((bytes[offset] << 8) | bytes[offset + 1]);
}

std::uint32_t Get32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return (std::uint32_t{Get16(bytes, offset)} << 16) | Get16(bytes, offset + 2);
}

/// A string field: ends at its first zero or with the field.
std::string GetText(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t length) {
    const auto field = bytes.subspan(offset, length);
    const auto end = std::find(field.begin(), field.end(), std::uint8_t{0});
    return {field.begin(), end};
}

std::vector<std::uint8_t> BuildCommand(Command command, std::uint8_t flags, std::uint16_t requestId,
                                       std::size_t payloadSize) {
    std::vector<std::uint8_t> packet(kHeaderSize + payloadSize);
    packet[0] = kCommandKey;
    packet[1] = flags;
    Put16(packet, 2, static_cast<std::uint16_t>(command));
    Put16(packet, 4, static_cast<std::uint32_t>(payloadSize));
    Put16(packet, 6, requestId);
    return packet;
}

} // namespace

std::vector<std::uint8_t> BuildDiscovery(std::uint16_t requestId, AnswerBy answerBy) {
    const std::uint8_t flags = answerBy == AnswerBy::Broadcast
                                   ? kAcknowledgeRequired | kAllowBroadcastAcknowledge
                                   : kAcknowledgeRequired;
    return BuildCommand(Command::DiscoveryCmd, flags, requestId, 0);
}

std::vector<std::uint8_t> BuildForceIp(std::uint16_t requestId, std::uint64_t macAddress,
                                       std::uint32_t ipAddress, std::uint32_t subnetMask,
                                       std::uint32_t gateway) {
    auto packet = BuildCommand(Command::ForceIpCmd, kAcknowledgeRequired | kAllowBroadcastAcknowledge,
                               requestId, kForceIpSize);
    Put16(packet, kHeaderSize + kForceMacHighOffset, static_cast<std::uint32_t>(macAddress >> 32));
    Put32(packet, kHeaderSize + kForceMacLowOffset, static_cast<std::uint32_t>(macAddress));
    Put32(packet, kHeaderSize + kForceIpOffset, ipAddress);
    Put32(packet, kHeaderSize + kForceMaskOffset, subnetMask);
    Put32(packet, kHeaderSize + kForceGatewayOffset, gateway);
    return packet;
}

std::vector<std::uint8_t> BuildReadRegister(std::uint16_t requestId, std::uint32_t address) {
    auto packet = BuildCommand(Command::ReadRegisterCmd, kAcknowledgeRequired, requestId, 4);
    Put32(packet, kHeaderSize, address);
    return packet;
}

std::optional<Acknowledge> ParseAcknowledge(std::span<const std::uint8_t> packet) {
    if (packet.size() < kHeaderSize) {
        return std::nullopt;
    }
    const std::uint16_t command = Get16(packet, 2);
    const std::size_t length = Get16(packet, 4);
    // A command's first byte is the key 0x42; read as an acknowledge it would be a status that no device has.
    if ((command & 1U) == 0 || packet[0] == kCommandKey || packet.size() - kHeaderSize < length) {
        return std::nullopt;
    }
    return Acknowledge{Get16(packet, 0), command, Get16(packet, 6), packet.subspan(kHeaderSize, length)};
}

std::optional<DiscoveryAnswer> ParseDiscovery(const Acknowledge& acknowledge) {
    const auto& payload = acknowledge.payload;
    if (acknowledge.command != static_cast<std::uint16_t>(Command::DiscoveryAck) ||
        acknowledge.status != kStatusSuccess || payload.size() < kDiscoverySize) {
        return std::nullopt;
    }
    DiscoveryAnswer answer;
    answer.macAddress = (std::uint64_t{Get16(payload, kMacHighOffset)} << 32) | Get32(payload, kMacLowOffset);
    answer.ipAddress = Get32(payload, kIpOffset);
    answer.subnetMask = Get32(payload, kMaskOffset);
    answer.gateway = Get32(payload, kGatewayOffset);
    answer.vendor = GetText(payload, 0x48, 32);
    answer.model = GetText(payload, 0x68, 32);
    answer.version = GetText(payload, 0x88, 32);
    answer.manufacturerInfo = GetText(payload, 0xA8, 48);
    answer.serial = GetText(payload, 0xD8, 16);
    answer.userName = GetText(payload, 0xE8, 16);
    return answer;
}

std::optional<std::uint32_t> ParseReadRegister(const Acknowledge& acknowledge) {
    if (acknowledge.command != static_cast<std::uint16_t>(Command::ReadRegisterAck) ||
        acknowledge.status != kStatusSuccess || acknowledge.payload.size() != 4) {
        return std::nullopt;
    }
    return Get32(acknowledge.payload, 0);
}

} // namespace Norvane::Transport::Gvcp
