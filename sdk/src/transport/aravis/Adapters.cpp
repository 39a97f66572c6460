#include "transport/aravis/Adapters.h"

#include <algorithm>
#include <arpa/inet.h>
#include <fstream>
#include <ifaddrs.h>
#include <limits>
#include <map>
#include <memory>
#include <net/if.h>
#include <net/if_arp.h>
#include <netpacket/packet.h>
#include <sstream>

namespace Norvane::Transport {
namespace {

std::int64_t ReadNumber(const std::string& path) {
    std::ifstream file(path);
    std::int64_t value = 0;
    return file >> value ? value : 0; // an adapter without link answers a read of its speed with an error
}

std::uint32_t Ipv4(const sockaddr* address) {
    return address ? ntohl(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr) : 0;
}

/// Default gateways by adapter name, from the kernel's routing table.
std::map<std::string, std::uint32_t> ReadGateways() {
    std::map<std::string, std::uint32_t> gateways;
    std::ifstream table("/proc/self/net/route");
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string name;
        std::uint32_t destination = 0;
        std::uint32_t gateway = 0;
        if (fields >> name >> std::hex >> destination >> gateway && destination == 0 && gateway != 0) {
            gateways.emplace(name, ntohl(gateway));
        }
    }
    return gateways;
}

} // namespace

std::vector<Adapter> ListAdapters() {
    std::vector<Adapter> adapters;
    ifaddrs* raw = nullptr;
    if (getifaddrs(&raw) != 0) {
        return adapters;
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(raw, &freeifaddrs);

    std::map<std::string, std::uint64_t> macs;
    for (const ifaddrs* entry = list.get(); entry; entry = entry->ifa_next) {
        if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_PACKET) {
            const auto* link = reinterpret_cast<const sockaddr_ll*>(entry->ifa_addr);
            std::uint64_t mac = 0;
            for (int i = 0; link->sll_halen == 6 && i < 6; ++i) {
                mac = (mac << 8) | link->sll_addr[i];
            }
            macs[entry->ifa_name] = mac;
        }
    }
    const auto gateways = ReadGateways();

    for (const ifaddrs* entry = list.get(); entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        // An address can carry a label such as "eth0:1"; the adapter is what stands before the colon.
        const std::string label = entry->ifa_name;
        Adapter adapter;
        adapter.name = label.substr(0, label.find(':'));
        adapter.index = static_cast<int>(if_nametoindex(adapter.name.c_str()));
        adapter.loopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
        const std::string sysfs = "/sys/class/net/" + adapter.name;
        adapter.mtu = static_cast<std::uint32_t>(std::max<std::int64_t>(0, ReadNumber(sysfs + "/mtu")));

        InterfaceRecord& record = adapter.record;
        record.technology = Technology::GigEVision;
        record.ipAddress = Ipv4(entry->ifa_addr);
        record.subnetMask = Ipv4(entry->ifa_netmask);
        const bool known = std::any_of(adapters.begin(), adapters.end(),
                                       [&](const Adapter& other) { return other.name == adapter.name; });
        record.id = known ? adapter.name + "/" + FormatIpAddress(record.ipAddress) : adapter.name;
        record.displayName =
            adapter.loopback ? "Loopback (" + record.id + ")" : "Network Adapter (" + record.id + ")";
        // A tunnel has no broadcast; without carrier nothing is heard.
        record.usable = (entry->ifa_flags & IFF_UP) != 0 && (entry->ifa_flags & IFF_RUNNING) != 0 &&
                        (entry->ifa_flags & (IFF_BROADCAST | IFF_LOOPBACK)) != 0;
        if (const auto mac = macs.find(adapter.name); mac != macs.end()) {
            record.macAddress = mac->second;
        }
        if (const auto gateway = gateways.find(adapter.name); gateway != gateways.end()) {
            record.gateway = gateway->second;
        }
        // sysfs gives -1 where the driver does not know.
        record.linkSpeedMbps =
            static_cast<std::uint64_t>(std::max<std::int64_t>(0, ReadNumber(sysfs + "/speed")));
        if (record.linkSpeedMbps == std::numeric_limits<std::uint32_t>::max()) {
            record.linkSpeedMbps = 0;
        }
        adapters.push_back(std::move(adapter));
    }
    return adapters;
}

std::string FormatIpAddress(std::uint32_t address) {
    std::ostringstream text;
    text << (address >> 24) << '.' << ((address >> 16) & 0xFF) << '.' << ((address >> 8) & 0xFF) << '.'
         << (address & 0xFF);
    return text.str();
}

} // namespace Norvane::Transport
