#pragma once

#include "norvane/genapi/GenApi.h"

#include <QString>

#include <cstdint>
#include <optional>

/// Reading of single nodes by name, for widgets that show a few values of a transport-layer node map. A node
/// that is missing, of another kind or not readable gives the empty answer, and so does a library error.
/// User-interface thread; transport-layer maps answer without network access.
namespace NodeReading {

/// The node's value in its own notation, whatever kind of value node it is; null when it has none.
QString Text(Norvane::GenApi::INodeMap& map, const char* name);

/// The value of an integer node.
std::optional<std::int64_t> Integer(Norvane::GenApi::INodeMap& map, const char* name);

/// True when the node is a boolean that reads true.
bool IsTrue(Norvane::GenApi::INodeMap& map, const char* name);

/// An IPv4 address in host order as dotted text.
QString Ipv4Text(std::uint32_t address);

/// The address that an integer node holds, as dotted text; empty when the node is missing or reads 0.
QString Ipv4Text(Norvane::GenApi::INodeMap& map, const char* name);

} // namespace NodeReading
