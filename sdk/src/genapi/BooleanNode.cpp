#include "genapi/BooleanNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

namespace Norvane::GenApi {

namespace {

std::optional<bool> ParseBoolean(std::string_view text) {
    text = Trim(text);
    if (text == "true" || text == "True" || text == "1" || text == "Yes") {
        return true;
    }
    if (text == "false" || text == "False" || text == "0" || text == "No") {
        return false;
    }
    return std::nullopt;
}

} // namespace

bool BooleanNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Value:
        m_hasConstant = true;
        if (const auto value = ParseBoolean(element.child_value())) {
            m_constantOn = *value;
            return true;
        }
        loader.Fault(*this,
                     std::string("its Value '") + element.child_value() + "' is neither true nor false");
        return true;
    case Tag::OnValue:
        m_onValue = loader.Integer(*this, element);
        return true;
    case Tag::OffValue:
        m_offValue = loader.Integer(*this, element);
        return true;
    case Tag::Representation:
        return true;
    default:
        return m_source.LoadElement(*this, tag, element, loader) || Node::LoadElement(tag, element, loader);
    }
}

void BooleanNode::FinishLoading(Loader& loader) {
    if (m_hasConstant) {
        m_source.SetConstant(m_constantOn ? m_onValue : m_offValue);
    }
    if (!Broken() && m_source.Missing()) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void BooleanNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_source.CollectEdges(*this, edges);
}

void BooleanNode::SetValue(bool value, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    WriteInteger(value);
    if (verify) {
        CheckErrors();
    }
}

bool BooleanNode::GetValue(bool, bool ignoreCache) {
    if (!ignoreCache && ValueAtHand()) {
        return m_value;
    }
    const Operation operation(m_map);
    RequireReadable();
    return ReadInteger(ignoreCache) != 0;
}

bool BooleanNode::Compute(bool fresh) {
    return m_source.Read(fresh) == m_onValue;
}

std::int64_t BooleanNode::ReadInteger(bool fresh) {
    if (!fresh && Has(kValue)) {
        AuditCache(Facet::Value, [&] { return Compute(true) == m_value; });
        return m_value;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const bool value = Compute(fresh);
    m_value = value;
    Keep(kValue, Facet::Value, epoch);
    return value;
}

void BooleanNode::WriteInteger(std::int64_t value) {
    if (m_source.Write(value ? m_onValue : m_offValue)) {
        m_map.ValueChanged(*this);
    }
}

std::string BooleanNode::ToText(bool, bool ignoreCache) {
    return ReadInteger(ignoreCache) ? "1" : "0";
}

void BooleanNode::FromText(const std::string& text, bool) {
    const auto value = ParseBoolean(text);
    if (!value) {
        Fail(Error::GenApiOutOfRange, "'" + text + "' is neither true nor false");
    }
    WriteInteger(*value);
}

} // namespace Norvane::GenApi
