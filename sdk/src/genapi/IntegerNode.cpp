#include "genapi/IntegerNode.h"

#include "genapi/FormulaBinding.h"
#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/NumberText.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::GenApi {

void IntegerBase::SetValue(std::int64_t value, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    if (verify) {
        Verify(value);
        RequireRoom(value);
    }
    WriteInteger(value);
    if (verify) {
        CheckErrors();
    }
}

std::int64_t IntegerBase::GetValue(bool verify, bool ignoreCache) {
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

std::int64_t IntegerBase::GetMin() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return MinInteger();
}

std::int64_t IntegerBase::GetMax() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return MaxInteger();
}

EIncMode IntegerBase::GetIncMode() {
    return Child("ValidValueSet").empty() ? fixedIncrement : listIncrement;
}

std::int64_t IntegerBase::GetInc() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return IncInteger();
}

int64_autovector_t IntegerBase::ValidValues() {
    return ParseList<std::int64_t>(Child("ValidValueSet"), ParseInteger);
}

int64_autovector_t IntegerBase::GetListOfValidValues(bool bounded) {
    const Operation operation(m_map);
    m_map.CheckPorts();
    auto values = ValidValues();
    if (bounded && !values.empty()) {
        const auto min = MinInteger();
        const auto max = MaxInteger();
        values.erase(std::remove_if(values.begin(), values.end(), [&](auto v) { return v < min || v > max; }),
                     values.end());
    }
    return values;
}

ERepresentation IntegerBase::GetRepresentation() {
    return Representation();
}

ERepresentation IntegerBase::Representation() {
    return OwnRepresentation(PureNumber);
}

gcstring IntegerBase::GetUnit() {
    const Operation operation(m_map);
    return Unit();
}

void IntegerBase::ImposeMin(std::int64_t value) {
    const Operation operation(m_map);
    m_imposedMin = value;
    m_map.Refresh(*this);
}

void IntegerBase::ImposeMax(std::int64_t value) {
    const Operation operation(m_map);
    m_imposedMax = value;
    m_map.Refresh(*this);
}

std::int64_t IntegerBase::ReadInteger(bool fresh) {
    if (!fresh && Has(kValue)) {
        AuditCache(Facet::Value, [&] { return ComputeInteger(true) == m_value; });
        return m_value;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const auto value = ComputeInteger(fresh);
    m_value = value;
    Keep(kValue, Facet::Value, epoch);
    return value;
}

void IntegerBase::WriteFloat(double value) {
    WriteInteger(Named(*this, [&] { return RoundToInteger(value); }));
}

std::int64_t IntegerBase::Cache(std::int64_t& place, Cached flag, std::int64_t (IntegerBase::*compute)()) {
    if (Has(flag)) {
        AuditCache(Facet::Range, [&] { return (this->*compute)() == place; });
        return place;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const auto value = (this->*compute)();
    place = value;
    Keep(flag, Facet::Range, epoch);
    return value;
}

std::int64_t IntegerBase::MinInteger() {
    return std::max(Cache(m_min, kMin, &IntegerBase::ComputeMin), m_imposedMin);
}

std::int64_t IntegerBase::MaxInteger() {
    return std::min(Cache(m_max, kMax, &IntegerBase::ComputeMax), m_imposedMax);
}

std::int64_t IntegerBase::IncInteger() {
    return Cache(m_inc, kInc, &IntegerBase::ComputeInc);
}

bool IntegerBase::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    if (tag == Tag::Representation) {
        SetRepresentation(ParseRepresentation(Trim(element.child_value()), _UndefinedRepresentation));
        return true;
    }
    // The valid values are read where they are asked for.
    return tag == Tag::ValidValueSet || Node::LoadElement(tag, element, loader);
}

std::string IntegerBase::WithUnit(std::int64_t value) {
    const auto unit = Unit();
    return FormatInteger(value, Representation()) + (unit.empty() ? "" : " " + unit);
}

void IntegerBase::Verify(std::int64_t value) {
    const auto text = [&] { return FormatInteger(value, Representation()); };
    const auto min = MinInteger();
    if (value < min) {
        Fail(Error::GenApiOutOfRange, text() + " is below the minimum " + WithUnit(min));
    }
    const auto max = MaxInteger();
    if (value > max) {
        Fail(Error::GenApiOutOfRange, text() + " is above the maximum " + WithUnit(max));
    }
    const auto valid = ValidValues();
    if (!valid.empty()) {
        if (std::find(valid.begin(), valid.end(), value) == valid.end()) {
            Fail(Error::GenApiOutOfRange,
                 text() + " is not among its valid values " + std::string(Child("ValidValueSet")));
        }
        return;
    }
    const auto inc = IncInteger();
    if (inc > 1 && (static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(min)) %
                           static_cast<std::uint64_t>(inc) !=
                       0) {
        Fail(Error::GenApiOutOfRange,
             text() + " does not fit its increment " + WithUnit(inc) + ", counted from " + WithUnit(min));
    }
}

std::string IntegerBase::ToText(bool verify, bool ignoreCache) {
    const auto value = ReadInteger(ignoreCache);
    if (verify) {
        Verify(value);
    }
    return FormatInteger(value, Representation());
}

void IntegerBase::FromText(const std::string& text, bool verify) {
    const auto value = ParseIntegerText(text, Representation());
    if (!value) {
        Fail(Error::GenApiOutOfRange, "'" + text + "' is no integer");
    }
    if (verify) {
        Verify(*value);
        RequireRoom(*value);
    }
    WriteInteger(*value);
}

bool IntegerNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    const auto limit = [&](Limit& place, bool reference) {
        place.given = true;
        if (reference) {
            place.node = loader.Find(*this, element);
        } else {
            place.constant = loader.Integer(*this, element);
        }
        return true;
    };
    switch (tag) {
    case Tag::Min:
    case Tag::pMin:
        return limit(m_minimum, tag == Tag::pMin);
    case Tag::Max:
    case Tag::pMax:
        return limit(m_maximum, tag == Tag::pMax);
    case Tag::Inc:
    case Tag::pInc:
        return limit(m_increment, tag == Tag::pInc);
    default:
        return m_source.LoadElement(*this, tag, element, loader) ||
               IntegerBase::LoadElement(tag, element, loader);
    }
}

void IntegerNode::FinishLoading(Loader& loader) {
    if (!Broken() && m_source.Missing()) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void IntegerNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_source.CollectEdges(*this, edges);
    for (const auto* limit : {&m_minimum, &m_maximum, &m_increment}) {
        edges.AddRead(*this, Facet::Range, limit->node, true);
    }
}

void IntegerNode::WriteInteger(std::int64_t value) {
    if (m_source.Write(value)) {
        m_map.ValueChanged(*this);
    }
}

void IntegerNode::RequireRoom(std::int64_t value) {
    if (Node* const behind = m_source.Current()) {
        behind->RequireRoom(value);
    }
}

ERepresentation IntegerNode::Representation() {
    Node* const behind = Broken() ? nullptr : m_source.Direct(); // a broken one may lie behind itself
    return OwnRepresentation(behind ? behind->Representation() : PureNumber);
}

std::string IntegerNode::Unit() {
    const auto own = Child("Unit");
    Node* const behind = Broken() ? nullptr : m_source.Direct();
    return own.empty() && behind ? behind->Unit() : std::string(own);
}

std::int64_t IntegerNode::ComputeMin() {
    if (m_minimum.given) {
        return m_minimum.node ? m_minimum.node->ReadInteger(false) : m_minimum.constant;
    }
    Node* const behind = m_source.Current();
    return behind ? behind->MinInteger() : kLowest;
}

std::int64_t IntegerNode::ComputeMax() {
    if (m_maximum.given) {
        return m_maximum.node ? m_maximum.node->ReadInteger(false) : m_maximum.constant;
    }
    Node* const behind = m_source.Current();
    return behind ? behind->MaxInteger() : kHighest;
}

std::int64_t IntegerNode::ComputeInc() {
    if (m_increment.given) {
        return m_increment.node ? m_increment.node->ReadInteger(false) : m_increment.constant;
    }
    Node* const behind = m_source.Current();
    return behind ? behind->IncInteger() : 1;
}

} // namespace Norvane::GenApi
