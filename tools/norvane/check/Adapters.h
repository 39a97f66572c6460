#pragma once

#include "Subnet.h"
#include "check/Machine.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A wired or wireless network adapter, as /sys/class/net and /proc/net/route show it.
struct Adapter {
    std::string name;
    std::string master;  ///< the bridge or bond that it serves and that has the addresses; mostly empty
    bool linked = false; ///< cable in, adapter up
    bool wireless = false;
    std::int64_t mtu = 0;              ///< bytes
    std::optional<std::int64_t> speed; ///< Mbit/s; unknown for adapters that are down or virtual
    std::vector<Subnet> subnets;       ///< those reached without a router
};

/// The Ethernet adapters through which cameras may be reached: those with a device behind them, and virtual
/// ones in use (VLANs, bonds, bridges with a device in them, a container's own). Loopback, tunnels and
/// bridges that only join virtual machines are left out.
std::vector<Adapter> readAdapters(const Machine& machine);
