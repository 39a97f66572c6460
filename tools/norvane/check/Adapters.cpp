#include "check/Adapters.h"

#include <algorithm>
#include <sstream>
#include <string_view>

#include <arpa/inet.h>

namespace {

/// The routes without a router, by adapter. The columns are those of the kernel's fib_trie.c: addresses stand
/// as hexadecimal numbers in network byte order read as the processor's own.
std::vector<Subnet> directSubnets(const Machine& machine, const std::string& adapter) {
    std::vector<Subnet> subnets;
    for (const std::string& line : machine.lines("proc/net/route")) {
        std::istringstream columns(line);
        std::string name, ignored;
        std::uint32_t destination = 0, gateway = 0, mask = 0;
        columns >> name >> std::hex >> destination >> gateway;
        for (int i = 0; i < 4; ++i) {
            columns >> ignored; // flags, users, uses, metric
        }
        columns >> mask;
        if (columns && name == adapter && gateway == 0 && mask != 0) {
            subnets.push_back({ntohl(destination), ntohl(mask)});
        }
    }
    return subnets;
}

/// Whether adapters with a device behind them stand below a virtual one.
bool hasDeviceBelow(const Machine& machine, const std::string& adapter) {
    const auto entries = machine.entries("sys/class/net/" + adapter);
    return std::any_of(entries.begin(), entries.end(), [&](const std::string& entry) {
        constexpr std::string_view kLower = "lower_";
        return entry.starts_with(kLower) &&
               machine.exists("sys/class/net/" + entry.substr(kLower.size()) + "/device");
    });
}

} // namespace

std::vector<Adapter> readAdapters(const Machine& machine) {
    std::vector<Adapter> adapters;
    for (const std::string& name : machine.entries("sys/class/net")) {
        const std::string folder = "sys/class/net/" + name + "/";
        constexpr std::int64_t kEthernet = 1; // ARPHRD_ETHER
        if (machine.number(folder + "type") != kEthernet) {
            continue;
        }
        Adapter adapter;
        adapter.name = name;
        adapter.master = machine.linkedName(folder + "master");
        adapter.linked = machine.number(folder + "carrier") == 1;
        adapter.wireless = machine.exists(folder + "wireless") || machine.exists(folder + "phy80211");
        adapter.mtu = machine.number(folder + "mtu").value_or(0);
        adapter.speed = machine.number(folder + "speed");
        if (adapter.speed && *adapter.speed <= 0) {
            adapter.speed.reset();
        }
        adapter.subnets = directSubnets(machine, name);
        const bool virtualInUse = adapter.linked && !adapter.subnets.empty() &&
                                  (!machine.exists(folder + "bridge") || hasDeviceBelow(machine, name));
        if (!machine.exists(folder + "device") && !virtualInUse) {
            continue;
        }
        adapters.push_back(std::move(adapter));
    }
    return adapters;
}
