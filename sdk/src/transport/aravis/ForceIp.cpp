#include "transport/aravis/ForceIp.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <algorithm>
#include <arpa/inet.h>
#include <fstream>
#include <sstream>

namespace Norvane::Transport {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kProbedAddresses = 8;
constexpr auto kProbeTime = std::chrono::milliseconds(250);
constexpr auto kAnswerTime = std::chrono::milliseconds(1000);
constexpr int kTries = 3;

/// Addresses that some host of the adapter's network has claimed, by the kernel's ARP table.
std::set<std::uint32_t> ReadArpTable(const std::string& adapterName) {
    std::set<std::uint32_t> addresses;
    std::ifstream table("/proc/self/net/arp");
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string address;
        std::string type;
        std::string flags;
        std::string hardware;
        std::string mask;
        std::string device;
        in_addr parsed{};
        // Flag 2 is a completed entry: somebody answered.
        if (fields >> address >> type >> flags >> hardware >> mask >> device && device == adapterName &&
            (std::strtoul(flags.c_str(), nullptr, 16) & 2U) != 0 &&
            ::inet_pton(AF_INET, address.c_str(), &parsed) == 1) {
            addresses.insert(ntohl(parsed.s_addr));
        }
    }
    return addresses;
}

/// The first candidate that nobody on the network owns and the caller may have. Sending to each makes the
/// kernel ask for its owner.
std::uint32_t ChooseFreeAddress(GvcpSocket& socket, const Adapter& adapter, const std::string& label,
                                const std::vector<std::uint32_t>& candidates,
                                const std::function<bool(std::uint32_t)>& claim) {
    const std::uint16_t requestId = socket.NextRequestId();
    for (const std::uint32_t candidate : candidates) {
        socket.Send(adapter.index, adapter.record.ipAddress, candidate,
                    Gvcp::BuildDiscovery(requestId, Gvcp::AnswerBy::Unicast));
    }
    std::set<std::uint32_t> owned;
    const auto deadline = Clock::now() + kProbeTime;
    while (const auto datagram = socket.Receive(deadline)) {
        owned.insert(datagram->source);
    }
    owned.merge(ReadArpTable(adapter.name));
    for (const std::uint32_t candidate : candidates) {
        if (owned.count(candidate) == 0 && claim(candidate)) {
            return candidate;
        }
    }
    throw Exception(Error::NotAvailable, label + ": no free address was found in the network of adapter " +
                                             adapter.record.id + "; give the camera one by hand");
}

} // namespace

std::vector<std::uint32_t> SuggestAddresses(std::uint32_t adapterAddress, std::uint32_t subnetMask,
                                            std::uint64_t macAddress, const std::set<std::uint32_t>& taken,
                                            std::size_t count) {
    std::vector<std::uint32_t> suggestions;
    const std::uint32_t network = adapterAddress & subnetMask;
    const std::uint64_t hosts = std::uint64_t{~subnetMask} + 1;
    if (hosts < 4) {
        return suggestions; // room for no host beside network and broadcast address, or for the adapter only
    }
    // Host numbers 1 to hosts - 2, from a start that spreads neighbouring MAC addresses.
    const std::uint64_t usable = hosts - 2;
    const std::uint64_t start = (macAddress * 0x9E3779B97F4A7C15ULL >> 32) % usable;
    for (std::uint64_t i = 0; i < usable && suggestions.size() < count; ++i) {
        const auto address = network | static_cast<std::uint32_t>(1 + (start + i) % usable);
        if (address != adapterAddress && taken.count(address) == 0) {
            suggestions.push_back(address);
        }
    }
    return suggestions;
}

std::uint32_t ForceIpAddress(const GevCamera& camera, const std::set<std::uint32_t>& taken,
                             const std::function<bool(std::uint32_t)>& claim) {
    const Adapter& adapter = camera.adapter;
    const DeviceRecord& record = camera.record;
    const std::string label = record.model + " " + record.serial;
    GvcpSocket socket;
    const std::uint32_t address =
        ChooseFreeAddress(socket, adapter, label,
                          SuggestAddresses(adapter.record.ipAddress, adapter.record.subnetMask,
                                           record.macAddress, taken, kProbedAddresses),
                          claim);

    for (int attempt = 0; attempt < kTries; ++attempt) {
        const std::uint16_t forceRequest = socket.NextRequestId();
        const std::uint16_t discoveryRequest = socket.NextRequestId();
        const auto force = Gvcp::BuildForceIp(forceRequest, record.macAddress, address,
                                              adapter.record.subnetMask, adapter.record.gateway);
        if (!socket.Send(adapter.index, adapter.record.ipAddress, kLimitedBroadcast, force)) {
            throw Exception(Error::Io, label + ": adapter " + adapter.record.id +
                                           " does not send; check that it is up and connected");
        }
        const auto start = Clock::now();
        bool asked = false;
        for (;;) {
            // The acknowledge names no camera and may get lost; a discovery answer with this camera's MAC
            // address and the new address settles it.
            const auto datagram = socket.Receive(start + (asked ? kAnswerTime : kProbeTime));
            if (!datagram) {
                if (asked) {
                    break;
                }
            } else if (const auto acknowledge = Gvcp::ParseAcknowledge(datagram->bytes)) {
                const auto answer = Gvcp::ParseDiscovery(*acknowledge);
                if (answer && answer->macAddress == record.macAddress && answer->ipAddress == address) {
                    Log(LogLevel::Info, label + ": has the address " + FormatIpAddress(address) + " now");
                    return address;
                }
                const bool forceAnswer =
                    acknowledge->requestId == forceRequest &&
                    acknowledge->command == static_cast<std::uint16_t>(Gvcp::Command::ForceIpAck);
                if (!forceAnswer) {
                    continue;
                }
                if (acknowledge->status != Gvcp::kStatusSuccess) {
                    char status[8];
                    std::snprintf(status, sizeof status, "0x%04x", acknowledge->status);
                    throw Exception(Error::Io, label + ": refuses the address " + FormatIpAddress(address) +
                                                   " (status " + status + "); is it open in a program?");
                }
            } else {
                continue;
            }
            if (!asked) {
                asked = true;
                const auto discovery = Gvcp::BuildDiscovery(discoveryRequest, Gvcp::AnswerBy::Broadcast);
                socket.Send(adapter.index, adapter.record.ipAddress, kLimitedBroadcast, discovery);
                socket.Send(adapter.index, adapter.record.ipAddress, address, discovery);
            }
        }
    }
    throw Exception(Error::Timeout, label + ": did not confirm the address " + FormatIpAddress(address) +
                                        "; check its cable and refresh the list");
}

} // namespace Norvane::Transport
