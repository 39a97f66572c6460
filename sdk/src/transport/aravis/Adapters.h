#pragma once

#include "transport/Transport.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Norvane::Transport {

/// One IPv4 address of a network adapter, with what cameras and people need to know of the adapter.
struct Adapter {
    InterfaceRecord record;
    std::string name;      ///< the kernel's name, for example "eth0"
    int index = 0;         ///< the kernel's interface index
    std::uint32_t mtu = 0; ///< bytes
    bool loopback = false;

    bool Holds(std::uint32_t address) const { // whether an address lies in this adapter's network
        return record.subnetMask != 0 &&
               (address & record.subnetMask) == (record.ipAddress & record.subnetMask);
    }
};

/// Every adapter that has an IPv4 address, in the kernel's order; an adapter's second and later addresses
/// stand for themselves under "name/address". Reads the kernel's tables afresh; any thread.
std::vector<Adapter> ListAdapters();

/// Dotted decimal text of a host-order address.
std::string FormatIpAddress(std::uint32_t address);

} // namespace Norvane::Transport
