#include "transport/emulator/DescriptionWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace Norvane::Transport::Emulator {
namespace {

/// The order of elements, over all kinds of nodes.
constexpr std::string_view kOrder[] = {
    "ToolTip",
    "Description",
    "DisplayName",
    "Visibility",
    "EventID",
    "pIsImplemented",
    "pIsAvailable",
    "pIsLocked",
    "pAlias",
    "pInvalidator0",
    "Streamable",
    "pFeature",
    "EnumEntry",
    "pVariable",
    "Constant",
    "Expression",
    "Formula",
    "FormulaTo",
    "FormulaFrom",
    "Value",
    "pValueCopy",
    "pValue",
    "pIndexValue",
    "ValueIndexed",
    "pValueIndexed",
    "ValueDefault",
    "CommandValue",
    "OnValue",
    "OffValue",
    "Address",
    "IntSwissKnife",
    "pAddress",
    "pIndex",
    "Length",
    "pLength",
    "AccessMode",
    "pPort",
    "Cachable",
    "PollingTime",
    "pInvalidator",
    "Bit",
    "LSB",
    "MSB",
    "Min",
    "pMin",
    "Max",
    "pMax",
    "Inc",
    "pInc",
    "Sign",
    "Endianess",
    "Unit",
    "Representation",
    "DisplayNotation",
    "DisplayPrecision",
    "Slope",
    "IsLinear",
    "ValidValueSet",
    "StructEntry",
    "pSelected",
    "ChunkID",
    "SwapEndianess",
    "CacheChunkData",
};

int Rank(std::string_view type, std::string_view element) {
    // Registers have their invalidators and their polling time behind the port; other kinds have the
    // invalidators in front.
    const bool isRegister = type.size() > 3 && (type.substr(type.size() - 3) == "Reg" || type == "Register");
    if (element == "pInvalidator" && !isRegister) {
        element = "pInvalidator0";
    }
    if (element == "PollingTime" && !isRegister) {
        return 1000;
    }
    if (element == "pIndex" && !isRegister) {
        element = "pIndexValue";
    }
    return static_cast<int>(std::find(std::begin(kOrder), std::end(kOrder), element) - std::begin(kOrder));
}

} // namespace

std::string XmlEscaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            // The rest of the control characters cannot stand in XML at all.
            result += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return result;
}

std::string HexText(std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
    return text;
}

std::string RealText(double value) {
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

XmlNode& XmlNode::Add(std::string_view element, std::string_view text, std::string_view attributes) {
    std::string line = "<" + std::string(element);
    if (!attributes.empty()) {
        line += " " + std::string(attributes);
    }
    line += ">" + XmlEscaped(text) + "</" + std::string(element) + ">";
    m_elements.push_back({Rank(m_type, element), std::move(line), std::string(element)});
    return *this;
}

XmlNode& XmlNode::Nest(const XmlNode& child) {
    m_elements.push_back({Rank(m_type, child.m_type), child.Text("    "), child.m_type});
    return *this;
}

bool XmlNode::Has(std::string_view element) const {
    return std::any_of(m_elements.begin(), m_elements.end(),
                       [&](const Element& e) { return e.name == element; });
}

std::string XmlNode::Text(const std::string& indent) const {
    std::vector<const Element*> sorted;
    for (const Element& element : m_elements) {
        sorted.push_back(&element);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) { return a->rank < b->rank; });
    std::string text = "<" + m_type;
    if (m_type == "StructReg") {
        text += " Comment=\"" + XmlEscaped(m_name) + "\">\n";
    } else {
        // Everything is the emulator's own except the features of the standard's naming convention.
        text += " Name=\"" + XmlEscaped(m_name) + "\" NameSpace=\"" +
                (Has("DisplayName") || m_type == "EnumEntry" ? "Standard" : "Custom") + "\">\n";
    }
    for (const Element* element : sorted) {
        text += indent + "  " + element->text + "\n";
    }
    return text + indent + "</" + m_type + ">";
}

XmlNode& DescriptionWriter::Node(std::string type, std::string name) {
    return m_nodes.emplace_back(std::move(type), std::move(name));
}

std::string DescriptionWriter::Text(std::string_view vendor, std::string_view model,
                                    std::string_view version) const {
    // Attribute names of models are identifiers for some readers, so what is no letter or digit becomes an
    // underscore.
    const auto identifier = [](std::string_view text) {
        std::string result;
        for (const char c : text) {
            result += (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ? c : '_';
        }
        return result.empty() ? std::string("_") : result;
    };
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RegisterDescription\n  ModelName=\"" +
                       identifier(model) + "\"\n  VendorName=\"" + identifier(vendor) +
                       "\"\n  ToolTip=\"Emulated camera, version " + XmlEscaped(version) +
                       "\"\n  StandardNameSpace=\"None\"\n"
                       "  SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\"\n"
                       "  MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\"\n"
                       "  ProductGuid=\"5C8E2B9A-3D61-4F0B-9E57-0B6B3A2C71D4\"\n"
                       "  VersionGuid=\"E1A4C6F2-8B37-4D95-A0C3-7F5D9E2B6184\"\n"
                       "  xmlns=\"http://www.genicam.org/GenApi/Version_1_1\"\n"
                       "  xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
                       "  xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1 "
                       "http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd\">\n";
    for (const XmlNode& node : m_nodes) {
        text += "  " + node.Text("  ") + "\n";
    }
    return text + "</RegisterDescription>\n";
}

} // namespace Norvane::Transport::Emulator
