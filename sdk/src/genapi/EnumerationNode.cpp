#include "genapi/EnumerationNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::GenApi {

EnumEntryNode::EnumEntryNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
    : ValueNode(map, xml, name, index, intfIEnumEntry), m_symbolic(PlainNameOf(xml)) {}

std::string EnumEntryNode::Prefix(std::string_view enumeration) {
    return "EnumEntry_" + std::string(enumeration) + "_";
}

std::string_view EnumEntryNode::SymbolicOf(pugi::xml_node entry) {
    const auto given = Trim(entry.child_value("Symbolic"));
    return given.empty() ? PlainNameOf(entry) : given;
}

std::string_view EnumEntryNode::PlainNameOf(pugi::xml_node entry) {
    auto name = Trim(entry.attribute("Name").value());
    const auto prefix = Prefix(Trim(entry.parent().attribute("Name").value()));
    if (name.size() > prefix.size() && name.substr(0, prefix.size()) == prefix) {
        name.remove_prefix(prefix.size());
    }
    return name;
}

bool EnumEntryNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Value:
        m_value = loader.Integer(*this, element);
        m_hasValue = true;
        return true;
    case Tag::NumericValue:
        m_numeric = loader.Float(*this, element);
        m_hasNumeric = true;
        return true;
    case Tag::Symbolic:
        if (const auto given = Trim(element.child_value()); !given.empty()) {
            m_symbolic = given;
        }
        return true;
    case Tag::IsSelfClearing:
        m_selfClearing = loader.YesNo(*this, element);
        return true;
    default:
        return Node::LoadElement(tag, element, loader);
    }
}

void EnumEntryNode::FinishLoading(Loader& loader) {
    if (!m_hasNumeric) {
        m_numeric = static_cast<double>(m_value);
    }
    if (!Broken() && !m_hasValue) {
        loader.Fault(*this, "it has no Value");
    }
}

void EnumEntryNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    // What can be chosen is the enumeration's range; whoever shows the choices hears of it by the
    // enumeration.
    if (m_enumeration && HasConditions()) {
        edges.Add(*m_enumeration, Facet::Range, this, Facet::Presence);
        edges.Add(*m_enumeration, Facet::Range, this, Facet::Lock);
    }
}

void EnumEntryNode::FromText(const std::string&, bool) {
    Fail(Error::GenApiAccess, "an entry cannot be written; write its enumeration");
}

bool EnumerationNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    if (tag == Tag::EnumEntry || tag == Tag::Representation) {
        return true;
    }
    return m_source.LoadElement(*this, tag, element, loader) || Node::LoadElement(tag, element, loader);
}

void EnumerationNode::FinishLoading(Loader& loader) {
    if (!Broken() && m_source.Missing()) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void EnumerationNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_source.CollectEdges(*this, edges);
}

EnumEntryNode* EnumerationNode::Find(std::int64_t value) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [value](const EnumEntryNode* entry) {
        return entry->Value() == value && !entry->Broken();
    });
    return found == m_entries.end() ? nullptr : *found;
}

EnumEntryNode* EnumerationNode::Find(std::string_view symbolic) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [symbolic](const EnumEntryNode* entry) { return entry->Symbolic() == symbolic; });
    return found == m_entries.end() ? nullptr : *found;
}

std::optional<std::int64_t> EnumerationNode::EntryValue(std::string_view symbolic) const {
    for (const auto entry : Xml().children("EnumEntry")) {
        if (Trim(entry.attribute("Name").value()) == symbolic ||
            EnumEntryNode::SymbolicOf(entry) == symbolic) {
            return ParseInteger(entry.child_value("Value"));
        }
    }
    return std::nullopt;
}

void EnumerationNode::GetSymbolics(std::vector<gcstring>& symbolics) {
    symbolics.clear();
    for (const auto* entry : m_entries) {
        symbolics.emplace_back(entry->Symbolic());
    }
}

void EnumerationNode::GetEntries(node_vector& entries) {
    entries.assign(m_entries.begin(), m_entries.end());
}

void EnumerationNode::Verify(std::int64_t value) {
    auto* const entry = Find(value);
    if (!entry) {
        Fail(Error::GenApiOutOfRange, std::to_string(value) + " is the value of none of its entries");
    }
    const auto mode = entry->Presence();
    if (!IsAvailable(mode) || entry->Locked()) {
        Fail(Error::GenApiOutOfRange, std::string(entry->Symbolic()) + (mode == NI   ? " is not implemented"
                                                                        : mode == NA ? " is not available now"
                                                                                     : " is locked"));
    }
}

void EnumerationNode::SetIntValue(std::int64_t value, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    if (verify) {
        Verify(value);
    }
    WriteInteger(value);
    if (verify) {
        CheckErrors();
    }
}

std::int64_t EnumerationNode::GetIntValue(bool verify, bool ignoreCache) {
    if (!verify && !ignoreCache && ValueAtHand()) {
        return m_value;
    }
    const Operation operation(m_map);
    RequireReadable();
    const auto value = ReadInteger(ignoreCache);
    if (verify) {
        Verify(value);
    }
    return value;
}

IEnumEntry* EnumerationNode::GetEntryByName(const gcstring& symbolic) {
    return Find(std::string_view(symbolic));
}

IEnumEntry* EnumerationNode::GetEntry(std::int64_t value) {
    return Find(value);
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool verify, bool ignoreCache) {
    return Find(GetIntValue(verify, ignoreCache));
}

std::int64_t EnumerationNode::ReadInteger(bool fresh) {
    if (!fresh && Has(kValue)) {
        AuditCache(Facet::Value, [&] { return m_source.Read(true) == m_value; });
        return m_value;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const auto value = m_source.Read(fresh);
    m_value = value;
    Keep(kValue, Facet::Value, epoch);
    return value;
}

std::string EnumerationNode::ReadText(bool fresh) {
    const auto value = ReadInteger(fresh);
    const auto* const entry = Find(value);
    return entry ? std::string(entry->Symbolic()) : std::to_string(value);
}

void EnumerationNode::WriteInteger(std::int64_t value) {
    if (m_source.Write(value)) {
        m_map.ValueChanged(*this);
    }
    if (const auto* const entry = Find(value); entry && entry->SelfClearing()) {
        m_map.Refresh(*this); // the device goes on to another entry by itself
    }
}

std::int64_t EnumerationNode::MinInteger() {
    const auto least = std::min_element(m_entries.begin(), m_entries.end(), [](auto* left, auto* right) {
        return left->Value() < right->Value();
    });
    return least == m_entries.end() ? 0 : (*least)->Value();
}

std::int64_t EnumerationNode::MaxInteger() {
    const auto most = std::max_element(m_entries.begin(), m_entries.end(), [](auto* left, auto* right) {
        return left->Value() < right->Value();
    });
    return most == m_entries.end() ? 0 : (*most)->Value();
}

std::string EnumerationNode::ToText(bool verify, bool ignoreCache) {
    const auto value = ReadInteger(ignoreCache);
    if (verify) {
        Verify(value);
    }
    const auto* const entry = Find(value);
    if (!entry) {
        Fail(Error::GenApiOutOfRange,
             "its value " + std::to_string(value) + " is that of none of its entries");
    }
    return std::string(entry->Symbolic());
}

void EnumerationNode::FromText(const std::string& text, bool verify) {
    const auto* const entry = Find(std::string_view(text));
    if (!entry) {
        Fail(Error::GenApiOutOfRange, "'" + text + "' is none of its entries");
    }
    if (verify) {
        Verify(entry->Value());
    }
    WriteInteger(entry->Value());
}

} // namespace Norvane::GenApi
