// INode's own functions: what the description says of a node, and how it is joined to others.
#include "genapi/Node.h"

#include "genapi/EnumerationNode.h"
#include "genapi/NodeMap.h"
#include "genapi/Text.h"

#include <algorithm>

namespace Norvane::GenApi {

pugi::xml_node Node::Element(const char* name) const {
    if (const auto own = m_xml.child(name)) {
        return own;
    }
    if (TagOf(m_xml.name()) == Tag::StructEntry) {
        return m_xml.parent().child(name);
    }
    return {};
}

std::string_view Node::Child(const char* element) const {
    return Trim(Element(element).child_value());
}

EAccessMode Node::GetAccessMode() const {
    if (m_map.Undisturbed()) {
        const std::uint32_t cached = m_cached;
        const auto mode = PresenceIn(cached);
        if ((cached & kPresence) && (!IsWritable(mode) || (cached & kLock))) {
            return cached & kLockedBit ? WithoutWriting(mode) : mode;
        }
    }
    const Operation operation(m_map);
    m_map.CheckPorts();
    return const_cast<Node*>(this)->Access();
}

gcstring Node::GetName(bool fullQualified) const {
    return fullQualified ? (m_standard ? "Std::" : "Cust::") + Name() : Name();
}

ENameSpace Node::GetNameSpace() const {
    return m_standard ? Standard : Custom;
}

EVisibility Node::GetVisibility() const {
    const Operation operation(m_map);
    return static_cast<EVisibility>(std::max(m_visibility, m_imposedVisibility));
}

void Node::InvalidateNode() {
    const Operation operation(m_map);
    m_map.Refresh(*this);
}

bool Node::IsCachable() const {
    return m_cachable & (1u << static_cast<unsigned>(Facet::Value));
}

ECachingMode Node::GetCachingMode() const {
    return IsCachable() ? OwnCachingMode() : NoCache;
}

std::int64_t Node::GetPollingTime() const {
    return m_pollingTime;
}

gcstring Node::GetToolTip() const {
    return Child("ToolTip");
}

gcstring Node::GetDescription() const {
    const auto text = Child("Description");
    return text.empty() ? Child("ToolTip") : text;
}

gcstring Node::GetDisplayName() const {
    const auto text = Trim(m_displayName);
    if (!text.empty()) {
        return text;
    }
    return m_type == intfIEnumEntry ? EnumEntryNode::SymbolicOf(m_xml) : m_name;
}

gcstring Node::GetDeviceName() const {
    return m_map.GetDeviceName();
}

gcstring Node::GetEventID() const {
    return Child("EventID");
}

bool Node::IsStreamable() const {
    return Child("Streamable") == "Yes";
}

bool Node::IsDeprecated() const {
    return Child("IsDeprecated") == "Yes";
}

gcstring Node::GetDocuURL() const {
    return Child("DocuURL");
}

Node* Node::FindLink(LinkKind kind) const {
    for (std::uint32_t i = m_firstLink; i < m_firstLink + m_links; ++i) {
        if (m_map.Links()[i].kind == kind) {
            return m_map.Links()[i].target;
        }
    }
    return nullptr;
}

INode* Node::GetAlias() const {
    return FindLink(LinkKind::Alias);
}

INode* Node::GetCastAlias() const {
    return FindLink(LinkKind::CastAlias);
}

INodeMap* Node::GetNodeMap() const {
    return &m_map;
}

bool Node::GetProperty(const gcstring& name, gcstring& value, gcstring& attribute) const {
    if (name == "Name") {
        value = Name();
        attribute = gcstring();
        return true;
    }
    std::string values;
    std::string attributes;
    bool found = false;
    const auto collect = [&](pugi::xml_node from) {
        for (const auto element : from.children(name.c_str())) {
            values += (found ? "\t" : "") + std::string(Trim(element.child_value()));
            attributes += (found ? "\t" : "") + std::string(Trim(element.first_attribute().value()));
            found = true;
        }
    };
    collect(m_xml);
    if (!found && TagOf(m_xml.name()) == Tag::StructEntry) {
        collect(m_xml.parent());
    }
    if (!found) {
        const auto own = m_xml.attribute(name.c_str());
        found = own;
        values = Trim(own.value());
    }
    if (found) {
        value = values;
        attribute = attributes;
    }
    return found;
}

void Node::ImposeAccessMode(EAccessMode mode) {
    const Operation operation(m_map);
    m_imposed = static_cast<std::uint8_t>(Combine(static_cast<EAccessMode>(m_imposed), mode));
    m_map.Refresh(*this);
}

void Node::ImposeVisibility(EVisibility visibility) {
    const Operation operation(m_map);
    m_imposedVisibility = std::max(m_imposedVisibility, static_cast<std::uint8_t>(visibility));
    m_map.AddChanged(*this);
}

bool Node::IsSelector() const {
    return FindLink(LinkKind::Selected) != nullptr;
}

void Node::GetSelectedFeatures(node_vector& features) const {
    features.clear();
    for (std::uint32_t i = m_firstLink; i < m_firstLink + m_links; ++i) {
        if (m_map.Links()[i].kind == LinkKind::Selected) {
            features.push_back(m_map.Links()[i].target);
        }
    }
}

void Node::GetSelectingFeatures(node_vector& features) const {
    features.clear();
    for (Node* node : m_map.Nodes()) {
        for (std::uint32_t i = node->m_firstLink; i < node->m_firstLink + node->m_links; ++i) {
            if (m_map.Links()[i].kind == LinkKind::Selected && m_map.Links()[i].target == this) {
                features.push_back(node);
                break;
            }
        }
    }
}

void Node::GetChildren(node_vector& children, ELinkType linkType) const {
    const Operation operation(m_map);
    const auto& graph = m_map.Dependencies();
    const auto& nodes = m_map.Nodes();
    children.clear();
    const auto add = [&](std::uint32_t vertex) {
        Node* node = nodes[vertex / kFacets];
        if (node != this && std::find(children.begin(), children.end(), node) == children.end()) {
            children.push_back(node);
        }
    };
    constexpr Facet kAll[] = {Facet::Presence, Facet::Lock, Facet::Value, Facet::Range};
    switch (linkType) {
    case ctParentNodes:
        for (const auto facet : kAll) {
            for (const auto vertex : graph.DependentsOf(Vertex(facet))) {
                add(vertex);
            }
        }
        break;
    case ctReadingChildren:
        for (const auto facet : kAll) {
            for (const auto vertex : graph.DependenciesOf(Vertex(facet))) {
                add(vertex);
            }
        }
        break;
    case ctWritingChildren:
        for (const char* element : {"pValue", "pValueCopy", "pValueIndexed", "pValueDefault"}) {
            for (const auto child : m_xml.children(element)) {
                if (Node* const found = m_map.Named(Trim(child.child_value()))) {
                    add(found->Vertex(Facet::Value));
                }
            }
        }
        break;
    case ctInvalidatingChildren:
        for (std::uint32_t i = m_firstLink; i < m_firstLink + m_links; ++i) {
            if (m_map.Links()[i].kind == LinkKind::Invalidator) {
                add(m_map.Links()[i].target->Vertex(Facet::Value));
            }
        }
        break;
    case ctDependingNodes:
        m_map.m_graph.Dependents(
            {Vertex(Facet::Presence), Vertex(Facet::Lock), Vertex(Facet::Value), Vertex(Facet::Range)}, add);
        break;
    case ctTerminalNodes:
        for (const auto vertex : graph.ContentOf(Vertex(Facet::Value), nodes)) {
            if (nodes[vertex / kFacets]->Registers()) {
                add(vertex);
            }
        }
        break;
    }
}

} // namespace Norvane::GenApi
