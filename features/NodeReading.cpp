#include "NodeReading.h"

#include "Guarded.h"

using namespace Norvane::GenApi;

namespace {

/// A node of the wanted kind that can be read now, else null.
template <class Pointer>
Pointer ReadableNode(INodeMap& map, const char* name) {
    Pointer node(map.GetNode(name));
    return IsReadable(node.Get()) ? node : Pointer();
}

} // namespace

namespace NodeReading {

QString Text(INodeMap& map, const char* name) {
    QString text;
    guarded(name, [&] {
        if (const auto node = ReadableNode<CValuePtr>(map, name)) {
            text = QString::fromUtf8(node->ToString().c_str());
        }
    });
    return text;
}

std::optional<std::int64_t> Integer(INodeMap& map, const char* name) {
    std::optional<std::int64_t> value;
    guarded(name, [&] {
        if (const auto node = ReadableNode<CIntegerPtr>(map, name)) {
            value = node->GetValue();
        }
    });
    return value;
}

bool IsTrue(INodeMap& map, const char* name) {
    bool value = false;
    guarded(name, [&] {
        if (const auto node = ReadableNode<CBooleanPtr>(map, name)) {
            value = node->GetValue();
        }
    });
    return value;
}

QString Ipv4Text(std::uint32_t address) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg(address >> 24U)
        .arg(address >> 16U & 0xFFU)
        .arg(address >> 8U & 0xFFU)
        .arg(address & 0xFFU);
}

QString Ipv4Text(INodeMap& map, const char* name) {
    const auto address = static_cast<std::uint32_t>(Integer(map, name).value_or(0));
    return address == 0 ? QString() : Ipv4Text(address);
}

} // namespace NodeReading
