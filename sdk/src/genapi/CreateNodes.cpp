// The first pass over a description: its nodes and their names.
#include "genapi/BooleanNode.h"
#include "genapi/CategoryNode.h"
#include "genapi/CommandNode.h"
#include "genapi/ConverterNode.h"
#include "genapi/EnumerationNode.h"
#include "genapi/Loader.h"
#include "genapi/LookAhead.h"
#include "genapi/PortNode.h"
#include "genapi/RegisterNodes.h"
#include "genapi/SwissKnifeNode.h"
#include "genapi/Text.h"

#include <algorithm>
#include <cstring>

namespace Norvane::GenApi {

namespace {

/// ConfRom and its like come from IEEE 1394 cameras, whose registers no transport of today offers.
class UnsupportedNode final : public Node {
public:
    using Node::Node;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override {
        return tag != Tag::DisplayName || Node::LoadElement(tag, element, loader);
    }
    void CollectEdges(EdgeSink&) override {}
};

/// Kinds whose address may be calculated by a formula inside them.
bool IsRegister(Tag tag) {
    return tag == Tag::IntReg || tag == Tag::MaskedIntReg || tag == Tag::FloatReg || tag == Tag::StringReg ||
           tag == Tag::Register;
}

/// A Node without any function.
class PlainNode final : public Node {
public:
    using Node::Node;
};

} // namespace

template <class Kind, class... Arguments>
Node* Loader::Make(pugi::xml_node xml, std::string_view name, Arguments&&... arguments) {
    void* const memory = Arena().allocate(sizeof(Kind), alignof(Kind));
    AskFor<sizeof(Kind)>(memory, 4 * kNodeBytes); // where the next nodes will stand
    Node* const node = new (memory) Kind(m_map, xml, name, static_cast<std::uint32_t>(m_map.m_nodes.size()),
                                         std::forward<Arguments>(arguments)...);
    m_map.m_nodes.push_back(node);
    return node;
}

Node* Loader::Create(const XmlElement& element, bool hidden) {
    const auto& [xml, tag, name, hash, likely] = element;
    if (!hidden) {
        if (name.empty()) {
            Complain(std::string("a ") + xml.name() + " without a Name is left out");
            return nullptr;
        }
        if (m_map.Named(name, hash)) {
            Complain("there are several nodes named " + std::string(name) + "; the first one is used");
            return nullptr;
        }
    }
    Node* node = nullptr;
    switch (tag) {
    case Tag::Node:
        node = Make<PlainNode>(xml, name, intfIBase);
        break;
    case Tag::Category:
        node = Make<CategoryNode>(xml, name);
        m_categories.push_back(static_cast<CategoryNode*>(node));
        break;
    case Tag::Integer:
        node = Make<IntegerNode>(xml, name);
        break;
    case Tag::IntReg:
        node = Make<IntRegNode>(xml, name, false);
        break;
    case Tag::MaskedIntReg:
    case Tag::StructEntry:
        node = Make<IntRegNode>(xml, name, true);
        break;
    case Tag::Boolean:
        node = Make<BooleanNode>(xml, name);
        break;
    case Tag::Command:
        node = Make<CommandNode>(xml, name);
        break;
    case Tag::Enumeration:
        node = Make<EnumerationNode>(xml, name);
        break;
    case Tag::EnumEntry:
        node = Make<EnumEntryNode>(xml, name);
        break;
    case Tag::Float:
        node = Make<FloatNode>(xml, name);
        break;
    case Tag::FloatReg:
        node = Make<FloatRegNode>(xml, name);
        break;
    case Tag::String:
        node = Make<StringNode>(xml, name);
        break;
    case Tag::StringReg:
        node = Make<StringRegNode>(xml, name);
        break;
    case Tag::Register:
        node = Make<RawRegisterNode>(xml, name);
        break;
    case Tag::Converter:
        node = Make<ConverterNode>(xml, name);
        break;
    case Tag::IntConverter:
        node = Make<IntConverterNode>(xml, name);
        break;
    case Tag::SwissKnife:
        node = Make<SwissKnifeNode>(xml, name);
        break;
    case Tag::IntSwissKnife:
        node = Make<IntSwissKnifeNode>(xml, name);
        break;
    case Tag::Port:
        node = Make<PortNode>(xml, name);
        m_portNodes.push_back(static_cast<PortNode*>(node));
        break;
    case Tag::ConfRom:
    case Tag::TextDesc:
    case Tag::IntKey:
    case Tag::AdvFeatureLock:
    case Tag::SmartFeature:
        node = Make<UnsupportedNode>(xml, name, intfIBase);
        Fault(*node, std::string("nodes of the kind ") + xml.name() + " belong to IEEE 1394 cameras");
        break;
    default:
        if (m_unknown.insert(xml.name()).second) {
            Complain(std::string(name) + ": nodes of the kind '" + xml.name() +
                     "' are not known and left out");
        }
        return nullptr;
    }
    if (!hidden) {
        m_map.m_byName.Insert(hash, node->Index());
    }
    return node;
}

void Loader::CreateNodes() {
    // Groups only structure the file, to any depth; they are walked without recursion.
    const auto root = m_map.m_document.document_element();
    constexpr std::size_t kBytesPerNode = 200; // what makers write on the average, rather less than more
    const auto expected = m_map.m_text.size() / kBytesPerNode;
    m_map.m_byName.Reserve(expected);
    m_map.m_nodes.reserve(expected);
    auto xml = root.first_child();
    while (xml) {
        AskForMore<7, 4>(xml); // what lies between two nodes' elements on the average
        const Tag tag = TagOf(xml.name());
        if (tag == Tag::Group && xml.first_child()) {
            xml = xml.first_child();
            continue;
        }
        if (xml.type() == pugi::node_element && tag != Tag::Group && tag != Tag::Extension) {
            m_elements.push_back(Ahead(xml, tag, Trim(xml.attribute("Name").value())));
            if (m_elements.size() == kAhead) {
                CreateAhead();
            }
        }
        while (!xml.next_sibling() && xml.parent() != root) {
            xml = xml.parent();
        }
        xml = xml.next_sibling();
    }
    CreateAhead();
    if (!m_map.Named("Root")) {
        Complain("the description has no category 'Root'; its nodes can only be reached by name");
    }
}

void Loader::CreateAhead() {
    for (const auto& element : m_elements) {
        if (element.tag == Tag::StructReg) {
            CreateStruct(element.xml);
        } else if (Node* const node = Create(element)) {
            if (element.tag == Tag::Enumeration) {
                CreateEntries(static_cast<EnumerationNode&>(*node));
            }
            if (IsRegister(element.tag)) {
                CreateNested(element.xml);
            }
        }
    }
    m_elements.clear();
}

void Loader::CreateStruct(pugi::xml_node xml) {
    for (const auto entry : xml.children("StructEntry")) {
        Create(Ahead(entry, Tag::StructEntry, Trim(entry.attribute("Name").value())));
    }
    CreateNested(xml);
}

void Loader::CreateEntries(EnumerationNode& enumeration) {
    const auto prefix = EnumEntryNode::Prefix(enumeration.NameView());
    m_entries.clear();
    for (auto entry = static_cast<const Node&>(enumeration).Xml().first_child(); entry;
         entry = entry.next_sibling()) {
        AskForMore(entry);
        if (std::strcmp(entry.name(), "EnumEntry") != 0) {
            continue;
        }
        const auto given = Trim(entry.attribute("Name").value());
        if (given.empty()) {
            Complain(enumeration.Name() + ": an EnumEntry without a Name is left out");
        } else {
            const auto name = given.substr(0, prefix.size()) == prefix ? given : Store(prefix, given);
            m_entries.push_back(Ahead(entry, Tag::EnumEntry, name));
        }
    }
    for (const auto& entry : m_entries) {
        if (Node* const node = Create(entry)) {
            enumeration.AddEntry(Arena(), static_cast<EnumEntryNode&>(*node));
        }
    }
}

void Loader::CreateNested(pugi::xml_node xml) {
    for (auto knife = xml.first_child(); knife; knife = knife.next_sibling()) {
        AskForMore(knife);
        if (std::strcmp(knife.name(), "IntSwissKnife") != 0) {
            continue;
        }
        const auto own = Trim(knife.attribute("Name").value());
        const bool hidden = own.empty() || m_map.Named(own);
        const auto name = own.empty() ? std::string_view("(address formula)") : own;
        if (Node* const node = Create(Ahead(knife, Tag::IntSwissKnife, name), hidden)) {
            m_nested.Insert(knife.hash_value(), node->Index());
        }
    }
}

std::string_view Loader::Store(std::string_view first, std::string_view second) {
    auto* const memory = static_cast<char*>(Arena().allocate(first.size() + second.size(), 1));
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), memory));
    return {memory, first.size() + second.size()};
}

PortNode* Loader::MainPort() {
    if (!m_mainPort) {
        m_mainPort = static_cast<PortNode*>(Make<PortNode>(pugi::xml_node(), "Device"));
        m_mainPort->SetPort(m_map.m_port);
        m_map.m_ports.push_back(m_mainPort);
    }
    return m_mainPort;
}

} // namespace Norvane::GenApi
