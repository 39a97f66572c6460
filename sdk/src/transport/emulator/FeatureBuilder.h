#pragma once

#include "transport/emulator/DescriptionWriter.h"
#include "transport/emulator/RegisterBank.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Norvane::Transport::Emulator {

class FeatureBuilder;

/// One feature being declared: a chain of calls that ends with its statement, when the feature's nodes enter
/// the description and its register enters the bank. Register "Width" is what node "WidthReg" reads and what
/// RegisterBank::Int("Width") gives.
class Feature {
public:
    using Type = RegisterBank::Type;

    Feature(FeatureBuilder& builder, const char* nodeType, std::string name, const char* toolTip);
    Feature(const Feature&) = delete;
    Feature& operator=(const Feature&) = delete;
    ~Feature();

    Feature& DisplayName(const char* text);
    Feature& Visibility(const char* name);
    Feature& Expert() { return Visibility("Expert"); }
    Feature& Guru() { return Visibility("Guru"); }
    Feature& Invisible() { return Visibility("Invisible"); }

    Feature& ReadOnly() { return Access(RegisterBank::Readable); }
    Feature& ReadWrite() { return Access(RegisterBank::Readable | RegisterBank::Writable); }
    Feature& WriteOnly() { return Access(RegisterBank::Writable); }
    /// Part of the user sets.
    Feature& Stored();
    Feature& Imaging() { return Flag(RegisterBank::Imaging); } ///< alters the images
    Feature& Locked();                                         ///< fixed while the camera acquires
    Feature& Available(const char* node) { return Element("pIsAvailable", node); }
    Feature& Implemented(const char* node) { return Element("pIsImplemented", node); }

    // A number is a constant; a name is the node that gives it.
    Feature& Min(double value) { return Limit("Min", value); }
    Feature& Min(std::string_view node) { return Element("pMin", node); }
    Feature& Max(double value) { return Limit("Max", value); }
    Feature& Max(std::string_view node) { return Element("pMax", node); }
    Feature& Inc(double value) { return Limit("Inc", value); }
    Feature& Inc(std::string_view node) { return Element("pInc", node); }
    Feature& Unit(const char* text) { return Element("Unit", text); }
    Feature& Representation(const char* text) { return Element("Representation", text); }
    Feature& Element(const char* element, std::string_view text);
    Feature& Element(const char* element, std::int64_t value) {
        return Element(element, std::to_string(value));
    }

    Feature& Entry(const char* symbolic, std::int64_t value, const char* implemented = nullptr,
                   const char* available = nullptr, const char* toolTip = nullptr);
    Feature& Selects(std::initializer_list<const char*> features);
    /// The register has `count` elements and this selector's value picks one.
    Feature& By(const char* selector, std::uint32_t count);
    Feature& By(const char* selector, std::uint32_t count, const char* secondSelector,
                std::uint32_t secondCount);

    Feature& Polled(int milliseconds);
    Feature& Volatile(); ///< never cached
    Feature& InvalidatedBy(std::initializer_list<const char*> nodes);

    Feature& Length(std::uint32_t bytes); ///< of the register, or of one of its elements
    Feature& Signed() {
        m_type = Type::Signed;
        return *this;
    }
    Feature& Initial(std::int64_t value);
    Feature& Initial(int value) { return Initial(static_cast<std::int64_t>(value)); }
    Feature& Initial(double value);
    Feature& Initial(std::string value);
    Feature& OnRead(std::function<void()> refresh);
    Feature& OnWrite(std::function<void(std::size_t index)> react);
    Feature& OnWrite(std::function<void()> react);
    /// The feature's value is another node (a converter or a swiss knife) instead of a register.
    Feature& ValueFrom(const char* node) { return Element("pValue", node); }

private:
    Feature& Access(unsigned access);
    Feature& Flag(unsigned flag) {
        m_flags |= flag;
        return *this;
    }
    Feature& Limit(const char* element, double value);
    void AddRegister(const std::string& nodeName, XmlNode* node);

    FeatureBuilder& m_builder;
    XmlNode& m_node;
    Type m_type;
    std::uint32_t m_length = 4;
    unsigned m_flags = RegisterBank::Readable | RegisterBank::Writable;
    std::vector<std::pair<std::string, std::uint32_t>> m_selectors;
    std::vector<std::pair<std::string, std::string>> m_registerElements;
    std::optional<std::int64_t> m_int;
    std::optional<double> m_real;
    std::optional<std::string> m_text;
    std::vector<std::function<void()>> m_onRead;
    std::vector<std::function<void(std::size_t)>> m_onWrite;
};

/// Declares a camera's features: description and registers in one place.
class FeatureBuilder {
public:
    FeatureBuilder(RegisterBank& bank, DescriptionWriter& xml);

    /// Starts a category below `parent`; the features that follow belong to it.
    void Category(const char* name, const char* toolTip, const char* parent = "Root",
                  const char* visibility = nullptr);

    Feature Integer(const char* name, const char* toolTip) { return {*this, "Integer", name, toolTip}; }
    Feature Float(const char* name, const char* toolTip) { return {*this, "Float", name, toolTip}; }
    Feature Boolean(const char* name, const char* toolTip) { return {*this, "Boolean", name, toolTip}; }
    Feature Enumeration(const char* name, const char* toolTip) {
        return {*this, "Enumeration", name, toolTip};
    }
    Feature Command(const char* name, const char* toolTip) { return {*this, "Command", name, toolTip}; }
    // The register node is the feature itself.
    Feature IntReg(const char* name, const char* toolTip) { return {*this, "IntReg", name, toolTip}; }
    Feature FloatReg(const char* name, const char* toolTip) { return {*this, "FloatReg", name, toolTip}; }
    Feature StringReg(const char* name, const char* toolTip) { return {*this, "StringReg", name, toolTip}; }
    Feature RawRegister(const char* name, const char* toolTip) { return {*this, "Register", name, toolTip}; }

    /// A node that is no feature: a converter, a swiss knife, a helper register.
    XmlNode& Helper(const char* type, const std::string& name) { return m_xml.Node(type, name); }
    /// An integer formula over nodes: ("WidthMax", "SENSOR - X", {{"SENSOR", "SensorWidth"}, ...}).
    XmlNode& Formula(const char* name, const char* formula,
                     std::initializer_list<std::pair<const char*, const char*>> variables,
                     const char* type = "IntSwissKnife");
    /// An integer register that formulas and availability use but no category lists.
    void HiddenRegister(const char* name, std::int64_t initial,
                        std::initializer_list<const char*> invalidators = {}, int pollingMs = 0);
    /// Bits of an existing register, as node `name`.
    XmlNode& Bits(const std::string& name, const char* registerName, unsigned lsb, unsigned msb,
                  const char* access = "RW");
    /// Lists a node, declared elsewhere, in the current category.
    void List(const std::string& name);

    RegisterBank& Bank() { return m_bank; }
    /// Address, length, access and port of a register as elements of a register node.
    void Locate(XmlNode& node, const char* registerName, std::uint32_t length, const char* access);

private:
    friend class Feature;
    RegisterBank& m_bank;
    DescriptionWriter& m_xml;
    XmlNode& m_root;
    XmlNode* m_category = nullptr;
    std::map<std::string, XmlNode*, std::less<>> m_categories;
};

/// "ExposureTime" becomes "Exposure Time".
std::string SpacedName(std::string_view name);

} // namespace Norvane::Transport::Emulator
