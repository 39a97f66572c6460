#include "transport/emulator/FeatureBuilder.h"

#include <cctype>

namespace Norvane::Transport::Emulator {
namespace {

RegisterBank::Type TypeOf(std::string_view nodeType) {
    if (nodeType == "Float" || nodeType == "FloatReg") {
        return RegisterBank::Type::Real;
    }
    return nodeType == "StringReg" || nodeType == "Register" ? RegisterBank::Type::Bytes
                                                             : RegisterBank::Type::Unsigned;
}

bool IsRegisterType(std::string_view nodeType) {
    return nodeType == "IntReg" || nodeType == "FloatReg" || nodeType == "StringReg" ||
           nodeType == "Register";
}

} // namespace

std::string SpacedName(std::string_view name) {
    std::string result;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto is = [&](std::size_t at, int (*test)(int)) {
            return at < name.size() && test(static_cast<unsigned char>(name[at]));
        };
        const bool startsWord =
            i > 0 && is(i, std::isupper) && (is(i - 1, std::islower) || is(i + 1, std::islower));
        const bool startsNumber = i > 0 && is(i, std::isdigit) && is(i - 1, std::islower);
        if (startsWord || startsNumber) {
            result += ' ';
        }
        result += name[i];
    }
    return result;
}

Feature::Feature(FeatureBuilder& builder, const char* nodeType, std::string name, const char* toolTip)
    : m_builder(builder), m_node(builder.m_xml.Node(nodeType, std::move(name))), m_type(TypeOf(nodeType)) {
    m_node.Add("ToolTip", toolTip).Add("Description", toolTip);
    if (m_type == Type::Real) {
        m_length = 8;
    }
    if (m_node.Type() == "Command") {
        m_flags = RegisterBank::Writable;
    }
}

Feature& Feature::DisplayName(const char* text) {
    m_node.Add("DisplayName", text);
    return *this;
}

Feature& Feature::Visibility(const char* name) {
    m_node.Add("Visibility", name);
    return *this;
}

Feature& Feature::Access(unsigned access) {
    m_flags = (m_flags & ~(RegisterBank::Readable | RegisterBank::Writable)) | access;
    return *this;
}

Feature& Feature::Locked() {
    m_node.Add("pIsLocked", "ParamsLocked");
    return Flag(RegisterBank::Fixed);
}

Feature& Feature::Stored() {
    InvalidatedBy({"UserSetLoad"});
    return Flag(RegisterBank::Stored);
}

Feature& Feature::Limit(const char* element, double value) {
    // A whole number must not be written as 1e+06: integer nodes read digits only.
    const bool whole = value == static_cast<double>(static_cast<std::int64_t>(value));
    m_node.Add(element, whole ? std::to_string(static_cast<std::int64_t>(value)) : RealText(value));
    return *this;
}

Feature& Feature::Element(const char* element, std::string_view text) {
    m_node.Add(element, text);
    return *this;
}

Feature& Feature::Entry(const char* symbolic, std::int64_t value, const char* implemented,
                        const char* available, const char* toolTip) {
    XmlNode entry("EnumEntry", symbolic);
    if (toolTip) {
        entry.Add("ToolTip", toolTip);
    }
    if (implemented) {
        entry.Add("pIsImplemented", implemented);
    }
    if (available) {
        entry.Add("pIsAvailable", available);
    }
    entry.Add("Value", value);
    m_node.Nest(entry);
    return *this;
}

Feature& Feature::Selects(std::initializer_list<const char*> features) {
    for (const char* feature : features) {
        m_node.Add("pSelected", feature);
    }
    return *this;
}

Feature& Feature::By(const char* selector, std::uint32_t count) {
    m_selectors.emplace_back(selector, count);
    return *this;
}

Feature& Feature::By(const char* selector, std::uint32_t count, const char* secondSelector,
                     std::uint32_t secondCount) {
    m_selectors.emplace_back(selector, count);
    m_selectors.emplace_back(secondSelector, secondCount);
    return *this;
}

Feature& Feature::Polled(int milliseconds) {
    m_registerElements.emplace_back("PollingTime", std::to_string(milliseconds));
    return *this;
}

Feature& Feature::Volatile() {
    m_registerElements.emplace_back("Cachable", "NoCache");
    return *this;
}

Feature& Feature::InvalidatedBy(std::initializer_list<const char*> nodes) {
    for (const char* node : nodes) {
        m_registerElements.emplace_back("pInvalidator", node);
    }
    return *this;
}

Feature& Feature::Length(std::uint32_t bytes) {
    m_length = bytes;
    return *this;
}

Feature& Feature::Initial(std::int64_t value) {
    m_type == Type::Real ? void(m_real = static_cast<double>(value)) : void(m_int = value);
    return *this;
}

Feature& Feature::Initial(double value) {
    m_real = value;
    return *this;
}

Feature& Feature::Initial(std::string value) {
    m_text = std::move(value);
    return *this;
}

Feature& Feature::OnRead(std::function<void()> refresh) {
    m_onRead.push_back(std::move(refresh));
    return *this;
}

Feature& Feature::OnWrite(std::function<void(std::size_t)> react) {
    m_onWrite.push_back(std::move(react));
    return *this;
}

Feature& Feature::OnWrite(std::function<void()> react) {
    return OnWrite([react = std::move(react)](std::size_t) { react(); });
}

Feature::~Feature() {
    const std::string& name = m_node.Name();
    if (!m_node.Has("DisplayName")) {
        m_node.Add("DisplayName", SpacedName(name));
    }
    if (IsRegisterType(m_node.Type())) {
        AddRegister(name, &m_node);
    } else if (!m_node.Has("pValue") && !m_node.Has("Value")) {
        m_node.Add("pValue", name + "Reg");
        AddRegister(name + "Reg", nullptr);
    }
    if (m_node.Type() == "Command" && !m_node.Has("CommandValue")) {
        m_node.Add("CommandValue", 1);
    }
    m_builder.List(name);
}

void Feature::AddRegister(const std::string& nodeName, XmlNode* node) {
    RegisterBank& bank = m_builder.m_bank;
    const std::string& name = m_node.Name();
    std::uint32_t count = 1;
    for (const auto& [selector, elements] : m_selectors) {
        count *= elements;
    }
    bank.Add(name, m_type, m_length, m_flags, count);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (m_int) {
            bank.SetInt(name, *m_int, i);
        }
        if (m_real) {
            bank.SetReal(name, *m_real, i);
        }
    }
    if (m_text) {
        bank.SetText(name, *m_text);
    }
    for (auto& refresh : m_onRead) {
        bank.OnRead(name, std::move(refresh));
    }
    for (auto& react : m_onWrite) {
        bank.OnWrite(name, std::move(react));
    }
    if (!node) {
        const char* type = m_type == Type::Real ? "FloatReg" : m_type == Type::Bytes ? "StringReg" : "IntReg";
        node = &m_builder.m_xml.Node(type, nodeName);
        node->Add("Visibility", "Invisible");
    }
    const bool readable = m_flags & RegisterBank::Readable, writable = m_flags & RegisterBank::Writable;
    m_builder.Locate(*node, name.c_str(), m_length, readable ? writable ? "RW" : "RO" : "WO");
    std::uint32_t stride = m_length;
    for (const auto& [selector, elements] : m_selectors) {
        node->Add("pIndex", selector + "Reg", "Offset=\"" + std::to_string(stride) + "\"");
        stride *= elements;
    }
    for (const auto& [element, text] : m_registerElements) {
        node->Add(element, text);
    }
    if (m_type == Type::Signed) {
        node->Add("Sign", "Signed");
    }
}

FeatureBuilder::FeatureBuilder(RegisterBank& bank, DescriptionWriter& xml)
    : m_bank(bank), m_xml(xml), m_root(xml.Node("Category", "Root")) {
    m_root.Add("ToolTip", "The features of the camera.");
    m_categories["Root"] = &m_root;
}

void FeatureBuilder::Category(const char* name, const char* toolTip, const char* parent,
                              const char* visibility) {
    m_categories[parent]->Add("pFeature", name);
    m_category = m_categories[name] = &m_xml.Node("Category", name);
    m_category->Add("ToolTip", toolTip).Add("DisplayName", SpacedName(name));
    if (visibility) {
        m_category->Add("Visibility", visibility);
    }
}

void FeatureBuilder::List(const std::string& name) {
    if (m_category) {
        m_category->Add("pFeature", name);
    }
}

void FeatureBuilder::Locate(XmlNode& node, const char* registerName, std::uint32_t length,
                            const char* access) {
    node.Add("Address", HexText(m_bank.Address(registerName)));
    if (!node.Has("pLength")) {
        node.Add("Length", length);
    }
    node.Add("AccessMode", access).Add("pPort", "Device");
    if (node.Type() != "StringReg" && node.Type() != "Register") {
        node.Add("Endianess", m_bank.IsBigEndian() ? "BigEndian" : "LittleEndian");
    }
}

XmlNode& FeatureBuilder::Formula(const char* name, const char* formula,
                                 std::initializer_list<std::pair<const char*, const char*>> variables,
                                 const char* type) {
    XmlNode& node = m_xml.Node(type, name);
    for (const auto& [variable, source] : variables) {
        node.Add("pVariable", source, "Name=\"" + std::string(variable) + "\"");
    }
    return node.Add("Formula", formula);
}

void FeatureBuilder::HiddenRegister(const char* name, std::int64_t initial,
                                    std::initializer_list<const char*> invalidators, int pollingMs) {
    m_bank.Add(name, RegisterBank::Type::Signed, 8, RegisterBank::Readable);
    m_bank.SetInt(name, initial);
    XmlNode& node = m_xml.Node("IntReg", name);
    node.Add("Visibility", "Invisible").Add("Sign", "Signed");
    Locate(node, name, 8, "RO");
    for (const char* invalidator : invalidators) {
        node.Add("pInvalidator", invalidator);
    }
    if (pollingMs > 0) {
        node.Add("PollingTime", pollingMs);
    }
}

XmlNode& FeatureBuilder::Bits(const std::string& name, const char* registerName, unsigned lsb, unsigned msb,
                              const char* access) {
    XmlNode& node = m_xml.Node("MaskedIntReg", name);
    node.Add("Visibility", "Invisible");
    Locate(node, registerName, 4, access);
    // The schema counts the bits of a big-endian register from its highest.
    const auto bit = [&](unsigned index) { return std::int64_t{m_bank.IsBigEndian() ? 31 - index : index}; };
    if (lsb == msb) {
        return node.Add("Bit", bit(lsb));
    }
    return node.Add("LSB", bit(lsb)).Add("MSB", bit(msb));
}

} // namespace Norvane::Transport::Emulator
