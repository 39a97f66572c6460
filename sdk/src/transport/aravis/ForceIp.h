#pragma once

#include "transport/aravis/GevDiscovery.h"

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

namespace Norvane::Transport {

/// Addresses of an adapter's network that a camera could get, most suitable first: neither the network's own
/// ones nor those in `taken`. The order depends on the MAC address, so that several cameras that get theirs
/// at once do not go for the same, and a camera tends to get the same again.
std::vector<std::uint32_t> SuggestAddresses(std::uint32_t adapterAddress, std::uint32_t subnetMask,
                                            std::uint64_t macAddress, const std::set<std::uint32_t>& taken,
                                            std::size_t count);

/// Gives a camera a free address of its adapter's network, by broadcast on the adapter that saw it, and waits
/// until the camera confirms it. Takes about a third of a second, three when nobody answers. Any thread.
/// @param taken addresses that other cameras and adapters have
/// @param claim asked before a free address is given; false when another camera is getting it right now
/// @return the camera's new address, host order
/// @throws Exception (NotAvailable) without a free address, (Timeout), (Io) when the camera refuses.
std::uint32_t ForceIpAddress(const GevCamera& camera, const std::set<std::uint32_t>& taken,
                             const std::function<bool(std::uint32_t)>& claim);

} // namespace Norvane::Transport
