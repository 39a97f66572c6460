#include "genapi/StringNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

namespace Norvane::GenApi {

void StringBase::SetValue(const gcstring& value, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    FromText(value.str(), verify);
    if (verify) {
        CheckErrors();
    }
}

gcstring StringBase::GetValue(bool, bool ignoreCache) {
    const Operation operation(m_map);
    RequireReadable();
    return ComputeText(ignoreCache);
}

std::int64_t StringBase::GetMaxLength() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    RequireSound();
    return MaxLength();
}

std::string StringBase::ToText(bool, bool ignoreCache) {
    return ComputeText(ignoreCache);
}

void StringBase::FromText(const std::string& text, bool verify) {
    if (verify && static_cast<std::int64_t>(text.size()) > MaxLength()) {
        Fail(Error::GenApiOutOfRange,
             "'" + text + "' is longer than " + std::to_string(MaxLength()) + " bytes");
    }
    WriteText(text);
}

bool StringNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Value:
        m_constant = Trim(element.child_value());
        m_hasConstant = true;
        return true;
    case Tag::pValue:
        m_value = loader.Find(*this, element);
        return true;
    default:
        return Node::LoadElement(tag, element, loader);
    }
}

void StringNode::FinishLoading(Loader& loader) {
    if (!Broken() && !m_hasConstant && !m_value) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void StringNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    edges.AddRead(*this, Facet::Value, m_value, true);
    edges.Add(*this, Facet::Presence, m_value, Facet::Presence);
    edges.Add(*this, Facet::Lock, m_value, Facet::Lock);
}

std::string StringNode::ComputeText(bool fresh) {
    return m_value ? m_value->ReadText(fresh) : std::string(m_constant);
}

void StringNode::WriteText(const std::string& value) {
    if (m_value) {
        m_value->WriteText(value);
    } else {
        m_constant = value;
        m_map.ValueChanged(*this);
    }
}

std::int64_t StringNode::MaxLength() {
    auto* const behind = dynamic_cast<StringBase*>(m_value);
    return behind ? behind->MaxLength() : 0x7FFFFFFF;
}

} // namespace Norvane::GenApi
