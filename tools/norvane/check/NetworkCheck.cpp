#include "check/Adapters.h"
#include "check/MachineChecks.h"

#include <algorithm>

namespace {

constexpr const char* kTopic = "network";

void checkAdapter(const Adapter& adapter, Findings& findings) {
    const auto add = [&](Weight weight, const std::string& text, const std::string& remedy = {}) {
        findings.push_back({weight, kTopic, adapter.name + " " + text, remedy});
    };
    if (!adapter.linked) {
        add(Weight::Advice, "has no link: no camera on it can be found.",
            "If a camera hangs on it: check cable and power, then sudo ip link set " + adapter.name + " up");
        return;
    }
    if (!adapter.master.empty()) {
        add(Weight::Good, "serves " + adapter.master + ".");
    } else if (adapter.subnets.empty()) {
        add(Weight::Limiting, "has no IPv4 address: cameras on it are not searched for.",
            "sudo ip address add 169.254.10.1/16 dev " + adapter.name +
                " (link-local, as cameras have without a DHCP server), or set it up in the network manager");
    } else {
        std::string subnets;
        for (const Subnet& subnet : adapter.subnets) {
            subnets += (subnets.empty() ? "" : ", ") + subnet.text();
        }
        add(Weight::Good, "reaches " + subnets + ".");
    }
    if (adapter.wireless) {
        add(Weight::Advice, "is wireless: image streams lose packets on it.", "Use a cable for cameras");
        return;
    }
    constexpr std::int64_t kGigabit = 1000;
    if (adapter.speed && *adapter.speed < kGigabit) {
        add(Weight::Limiting,
            "runs at " + std::to_string(*adapter.speed) +
                " Mbit/s, a tenth or less of what GigE Vision cameras send.",
            "Use a cable of category 5e or better, and a switch and a port of 1 Gbit/s or more");
    }
    // Cameras and switches agree on 9000 at most, and some adapters stop short of that.
    constexpr std::int64_t kJumbo = 8000;
    if (adapter.mtu < kJumbo) {
        add(Weight::Advice,
            "sends and takes packets of " + std::to_string(adapter.mtu) +
                " bytes: with 9000 a stream costs fewer packets, and less processor time.",
            "If the switch takes them: sudo ip link set " + adapter.name +
                " mtu 9000 (the network manager keeps it over a restart)");
    }
}

void checkSharedSubnets(const std::vector<Adapter>& adapters, Findings& findings) {
    for (auto one = adapters.begin(); one != adapters.end(); ++one) {
        for (auto other = one + 1; other != adapters.end(); ++other) {
            const auto shared = std::find_first_of(one->subnets.begin(), one->subnets.end(),
                                                   other->subnets.begin(), other->subnets.end());
            if (shared != one->subnets.end()) {
                findings.push_back({Weight::Limiting, kTopic,
                                    one->name + " and " + other->name + " are both on " + shared->text() +
                                        ": the kernel answers cameras of one through the other.",
                                    "Give each adapter a subnet of its own"});
            }
        }
    }
}

void checkReversePath(const Machine& machine, const Adapter& adapter, Findings& findings) {
    const std::string folder = "proc/sys/net/ipv4/conf/";
    // The kernel takes the larger of the two (Documentation/networking/ip-sysctl.rst).
    const auto filter = std::max(machine.number(folder + "all/rp_filter").value_or(0),
                                 machine.number(folder + adapter.name + "/rp_filter").value_or(0));
    if (adapter.linked && filter != 0) {
        findings.push_back(
            {Weight::Advice, kTopic,
             adapter.name + " drops packets from addresses that it would not answer (rp_filter is " +
                 std::to_string(filter) + "): a camera on a wrong subnet may stay unseen.",
             "sudo sysctl -w net.ipv4.conf.all.rp_filter=0 net.ipv4.conf." + adapter.name + ".rp_filter=0"});
    }
}

} // namespace

Findings checkNetwork(const Machine& machine) {
    const std::vector<Adapter> adapters = readAdapters(machine);
    Findings findings;
    if (adapters.empty()) {
        findings.push_back({Weight::Advice, kTopic,
                            "There is no network adapter: GigE Vision cameras cannot be found.",
                            "Plug one in, or give the virtual machine or container one"});
    }
    for (const Adapter& adapter : adapters) {
        checkAdapter(adapter, findings);
        checkReversePath(machine, adapter, findings);
    }
    checkSharedSubnets(adapters, findings);
    return findings;
}
