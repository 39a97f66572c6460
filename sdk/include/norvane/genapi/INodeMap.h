#pragma once

#include "norvane/genapi/INode.h"

#include <cstdint>

namespace Norvane::GenApi {

/// All nodes of one description over its port. One lock per map guards values and callbacks; calls may come
/// from any thread. Nodes live as long as the map.
class INodeMap {
public:
    virtual ~INodeMap() = default;

    /// By name, with or without "Std::" / "Cust::"; null when there is none.
    virtual INode* GetNode(const gcstring& name) const = 0;
    /// All nodes in the description's order.
    virtual void GetNodes(node_vector& nodes) const = 0;
    /// How many GetNodes gives.
    virtual std::uint64_t GetNumNodes() const = 0;
    /// How log lines and errors call the device, see NodeMapOptions::deviceName.
    virtual gcstring GetDeviceName() const = 0;
    /// Forgets every cached value, range and access mode, and fires the callbacks of what was cached.
    virtual void InvalidateNodes() const = 0;
    /// Lets `elapsedMs` of polling time pass: polled nodes whose time has come are read again.
    virtual void Poll(std::int64_t elapsedMs) = 0;
};

} // namespace Norvane::GenApi
