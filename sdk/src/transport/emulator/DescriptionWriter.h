#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace Norvane::Transport::Emulator {

/// One node of a camera description under construction. Elements may be added in any order; the text has them
/// in the schema's (GenApi schema 1.1).
class XmlNode {
public:
    XmlNode(std::string type, std::string name) : m_type(std::move(type)), m_name(std::move(name)) {}

    const std::string& Name() const { return m_name; }
    const std::string& Type() const { return m_type; }
    XmlNode& Add(std::string_view element, std::string_view text, std::string_view attributes = {});
    XmlNode& Add(std::string_view element, std::int64_t value, std::string_view attributes = {}) {
        return Add(element, std::to_string(value), attributes);
    }
    /// A nested node: an EnumEntry or a StructEntry.
    XmlNode& Nest(const XmlNode& child);
    bool Has(std::string_view element) const;
    std::string Text(const std::string& indent) const;

private:
    struct Element {
        int rank;
        std::string text;
        std::string name;
    };
    std::string m_type, m_name;
    std::vector<Element> m_elements;
};

/// Collects nodes and writes the description's text.
class DescriptionWriter {
public:
    XmlNode& Node(std::string type, std::string name);
    std::string Text(std::string_view vendor, std::string_view model, std::string_view version) const;

private:
    std::list<XmlNode> m_nodes; // a list: callers keep references while more nodes come
};

std::string XmlEscaped(std::string_view text);
std::string HexText(std::uint64_t value);
/// The shortest text that reads back as the same number.
std::string RealText(double value);

} // namespace Norvane::Transport::Emulator
