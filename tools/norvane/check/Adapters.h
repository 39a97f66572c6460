#pragma once

#include "check/Machine.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// An IPv4 network in host byte order.
struct Subnet {
    std::uint32_t network = 0;
    std::uint32_t mask = 0;

    bool contains(std::uint32_t address) const { return (address & mask) == network; }
    bool operator==(const Subnet&) const = default;
    std::string text() const; ///< 192.168.1.0/24
};

/// A wired or wireless network adapter, as /sys/class/net and /proc/net/route show it.
struct Adapter {
    std::string name;
    bool linked = false; ///< cable in, adapter up
    bool wireless = false;
    std::int64_t mtu = 0;              ///< bytes
    std::optional<std::int64_t> speed; ///< Mbit/s; unknown for adapters that are down or virtual
    std::vector<Subnet> subnets;       ///< those reached without a router
};

/// The Ethernet adapters with a device behind them; bridges, tunnels and loopback are left out.
std::vector<Adapter> readAdapters(const Machine& machine);

/// @return nullopt for text that is no dotted address.
std::optional<std::uint32_t> parseAddress(const std::string& text);
