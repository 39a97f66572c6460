#pragma once

#include <cstdint>
#include <string>

/// An IPv4 network in host byte order.
struct Subnet {
    std::uint32_t network = 0;
    std::uint32_t mask = 0;

    bool operator==(const Subnet&) const = default;
    std::string text() const; ///< 192.168.1.0/24
};
