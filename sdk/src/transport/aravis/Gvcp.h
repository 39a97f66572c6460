#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Builds and parses the few GigE Vision control packets that discovery needs. The section numbers are those
/// of the GigE Vision 2.0 standard. Pure functions over bytes: no sockets, any thread.
namespace Norvane::Transport::Gvcp {

constexpr std::uint16_t kPort = 3956;           ///< 15.1: the GVCP port of every device
constexpr std::size_t kMaximumPacketSize = 576; ///< 15.1: no GVCP datagram is longer, IP header included

/// 16: command and acknowledge values of a packet's header.
enum class Command : std::uint16_t {
    DiscoveryCmd = 0x0002,
    DiscoveryAck = 0x0003,
    ForceIpCmd = 0x0004,
    ForceIpAck = 0x0005,
    ReadRegisterCmd = 0x0080,
    ReadRegisterAck = 0x0081,
};

/// 19: the status codes that are told apart here.
constexpr std::uint16_t kStatusSuccess = 0x0000;
constexpr std::uint16_t kStatusAccessDenied = 0x8006;

/// 28: addresses of bootstrap registers.
constexpr std::uint32_t kControlChannelPrivilegeRegister = 0x0A00;
/// 28.4.28: bits of the control channel privilege register that say another program holds the device.
constexpr std::uint32_t kExclusiveAccess = 0x1;
constexpr std::uint32_t kControlAccess = 0x2;

/// What a device says of itself in answer to a discovery (16.1.2). Addresses are in host order.
struct DiscoveryAnswer {
    std::uint64_t macAddress = 0; ///< bits 47..0
    std::uint32_t ipAddress = 0, subnetMask = 0, gateway = 0;
    std::string vendor, model, version, manufacturerInfo, serial, userName;
};

/// The common part of an acknowledge (15.4.2); the payload points into the parsed bytes.
struct Acknowledge {
    std::uint16_t status = 0;
    std::uint16_t command = 0; ///< a Command, or a value that is not known here
    std::uint16_t requestId = 0;
    std::span<const std::uint8_t> payload;
};

/// Whether a device may answer by broadcast, as one must whose address does not fit the asker's network.
enum class AnswerBy { Unicast, Broadcast };

/// 16.1.1. `requestId` must not be 0 (15.4.1).
std::vector<std::uint8_t> BuildDiscovery(std::uint16_t requestId, AnswerBy answerBy);
/// 16.2.1. Gives the device of that MAC address another network address until its next restart.
std::vector<std::uint8_t> BuildForceIp(std::uint16_t requestId, std::uint64_t macAddress,
                                       std::uint32_t ipAddress, std::uint32_t subnetMask,
                                       std::uint32_t gateway);
/// 16.3.1, for one register.
std::vector<std::uint8_t> BuildReadRegister(std::uint16_t requestId, std::uint32_t address);

/// Nothing when the bytes are no acknowledge: too short, a command, or fewer bytes than the header promises.
std::optional<Acknowledge> ParseAcknowledge(std::span<const std::uint8_t> packet);
/// Nothing unless the acknowledge is a successful and complete discovery answer.
std::optional<DiscoveryAnswer> ParseDiscovery(const Acknowledge& acknowledge);
/// The register's value, nothing unless the acknowledge is a successful answer with one register.
std::optional<std::uint32_t> ParseReadRegister(const Acknowledge& acknowledge);

} // namespace Norvane::Transport::Gvcp
