#include "genapi/FloatNode.h"

#include "genapi/FormulaBinding.h"
#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/NumberText.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Norvane::GenApi {

void FloatBase::SetValue(double value, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    if (verify) {
        Verify(value);
    }
    WriteFloat(value);
    if (verify) {
        CheckErrors();
    }
}

double FloatBase::GetValue(bool verify, bool ignoreCache) {
    if (!verify && !ignoreCache && ValueAtHand()) {
        return m_value;
    }
    const Operation operation(m_map);
    RequireReadable();
    const auto value = ReadFloat(ignoreCache);
    if (verify) {
        Verify(value);
    }
    return value;
}

double FloatBase::GetMin() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return MinFloat();
}

double FloatBase::GetMax() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return MaxFloat();
}

bool FloatBase::HasInc() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    return IncFloat().has_value();
}

EIncMode FloatBase::GetIncMode() {
    if (!Child("ValidValueSet").empty()) {
        return listIncrement;
    }
    return HasInc() ? fixedIncrement : noIncrement;
}

double FloatBase::GetInc() {
    const Operation operation(m_map);
    m_map.CheckPorts();
    const auto inc = IncFloat();
    if (!inc) {
        Fail(Error::GenApiLogical, "it has no increment");
    }
    return *inc;
}

double_autovector_t FloatBase::ValidValues() {
    return ParseList<double>(Child("ValidValueSet"), ParseFloat);
}

double_autovector_t FloatBase::GetListOfValidValues(bool bounded) {
    const Operation operation(m_map);
    m_map.CheckPorts();
    auto values = ValidValues();
    if (bounded && !values.empty()) {
        const auto min = MinFloat();
        const auto max = MaxFloat();
        values.erase(std::remove_if(values.begin(), values.end(), [&](auto v) { return v < min || v > max; }),
                     values.end());
    }
    return values;
}

ERepresentation FloatBase::GetRepresentation() {
    return Representation();
}

ERepresentation FloatBase::Representation() {
    return OwnRepresentation(PureNumber);
}

gcstring FloatBase::GetUnit() {
    const Operation operation(m_map);
    return Unit();
}

EDisplayNotation FloatBase::GetDisplayNotation() {
    const auto text = Child("DisplayNotation");
    return text == "Fixed" ? fnFixed : text == "Scientific" ? fnScientific : fnAutomatic;
}

std::int64_t FloatBase::GetDisplayPrecision() {
    return std::clamp<std::int64_t>(ParseInteger(Child("DisplayPrecision")).value_or(6), 0, 40);
}

void FloatBase::ImposeMin(double value) {
    const Operation operation(m_map);
    m_imposedMin = value;
    m_map.Refresh(*this);
}

void FloatBase::ImposeMax(double value) {
    const Operation operation(m_map);
    m_imposedMax = value;
    m_map.Refresh(*this);
}

namespace {

bool Same(double left, double right) {
    return left == right || (std::isnan(left) && std::isnan(right));
}

} // namespace

double FloatBase::ReadFloat(bool fresh) {
    if (!fresh && Has(kValue)) {
        AuditCache(Facet::Value, [&] { return Same(ComputeFloat(true), m_value); });
        return m_value;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const auto value = ComputeFloat(fresh);
    m_value = value;
    Keep(kValue, Facet::Value, epoch);
    return value;
}

std::int64_t FloatBase::ReadInteger(bool fresh) {
    const auto value = ReadFloat(fresh);
    return Named(*this, [&] { return RoundToInteger(value); });
}

double FloatBase::Cache(double& place, Cached flag, double (FloatBase::*compute)()) {
    if (Has(flag)) {
        AuditCache(Facet::Range, [&] { return Same((this->*compute)(), place); });
        return place;
    }
    RequireSound();
    const auto epoch = EpochNow();
    const auto value = (this->*compute)();
    place = value;
    Keep(flag, Facet::Range, epoch);
    return value;
}

double FloatBase::MinFloat() {
    return std::max(Cache(m_min, kMin, &FloatBase::ComputeMin), m_imposedMin);
}

double FloatBase::MaxFloat() {
    return std::min(Cache(m_max, kMax, &FloatBase::ComputeMax), m_imposedMax);
}

std::optional<double> FloatBase::IncFloat() {
    const auto inc = Cache(m_inc, kInc, &FloatBase::ComputeInc);
    return inc > 0 ? std::optional(inc) : std::nullopt;
}

std::int64_t FloatBase::MinInteger() {
    const auto min = std::ceil(MinFloat());
    return min <= -9223372036854775808.0 ? std::numeric_limits<std::int64_t>::min() : TruncateToInteger(min);
}

std::int64_t FloatBase::MaxInteger() {
    const auto max = std::floor(MaxFloat());
    return max >= 9223372036854775808.0 ? std::numeric_limits<std::int64_t>::max() : TruncateToInteger(max);
}

bool FloatBase::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Representation:
        SetRepresentation(ParseRepresentation(Trim(element.child_value()), _UndefinedRepresentation));
        return true;
    // Read where they are asked for.
    case Tag::ValidValueSet:
    case Tag::DisplayNotation:
    case Tag::DisplayPrecision:
        return true;
    default:
        return Node::LoadElement(tag, element, loader);
    }
}

std::string FloatBase::WithUnit(double value) {
    const auto unit = Unit();
    return FormatShortest(value) + (unit.empty() ? "" : " " + unit);
}

void FloatBase::Verify(double value) {
    if (std::isnan(value)) {
        Fail(Error::GenApiOutOfRange, "NaN is no value");
    }
    const auto min = MinFloat();
    if (value < min) {
        Fail(Error::GenApiOutOfRange, FormatShortest(value) + " is below the minimum " + WithUnit(min));
    }
    const auto max = MaxFloat();
    if (value > max) {
        Fail(Error::GenApiOutOfRange, FormatShortest(value) + " is above the maximum " + WithUnit(max));
    }
    const auto valid = ValidValues();
    if (!valid.empty()) {
        if (std::find(valid.begin(), valid.end(), value) == valid.end()) {
            Fail(Error::GenApiOutOfRange, FormatShortest(value) + " is not among its valid values " +
                                              std::string(Child("ValidValueSet")));
        }
        return;
    }
    if (const auto inc = IncFloat()) {
        // Steps such as 0.1 are no binary fractions: a value counts as on the grid when it is within the
        // rounding of the numbers involved.
        const double steps = (value - min) / *inc;
        const double slack = 1e-6 + 4 * std::numeric_limits<double>::epsilon() * std::abs(value) / *inc;
        if (std::abs(steps - std::round(steps)) > slack) {
            Fail(Error::GenApiOutOfRange, FormatShortest(value) + " does not fit its increment " +
                                              WithUnit(*inc) + ", counted from " + WithUnit(min));
        }
    }
}

std::string FloatBase::ToText(bool verify, bool ignoreCache) {
    const auto value = ReadFloat(ignoreCache);
    if (verify) {
        Verify(value);
    }
    if (Child("DisplayNotation").empty() && Child("DisplayPrecision").empty()) {
        return FormatShortest(value);
    }
    const auto notation = GetDisplayNotation();
    const auto format = notation == fnFixed        ? std::chars_format::fixed
                        : notation == fnScientific ? std::chars_format::scientific
                                                   : std::chars_format::general;
    char text[400]; // 309 digits, a point and at most 40 decimals
    const auto end =
        std::to_chars(text, text + sizeof text, value, format, static_cast<int>(GetDisplayPrecision()));
    return {text, end.ptr};
}

void FloatBase::FromText(const std::string& text, bool verify) {
    const auto value = ParseFloat(text);
    if (!value) {
        Fail(Error::GenApiOutOfRange, "'" + text + "' is no number");
    }
    if (verify) {
        Verify(*value);
    }
    WriteFloat(*value);
}

bool FloatNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    const auto limit = [&](Limit& place, bool reference) {
        place.given = true;
        if (reference) {
            place.node = loader.Find(*this, element);
        } else {
            place.constant = loader.Float(*this, element);
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
               FloatBase::LoadElement(tag, element, loader);
    }
}

void FloatNode::FinishLoading(Loader& loader) {
    if (!Broken() && m_source.Missing()) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void FloatNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_source.CollectEdges(*this, edges);
    for (const auto* limit : {&m_minimum, &m_maximum, &m_increment}) {
        edges.AddRead(*this, Facet::Range, limit->node, true);
    }
}

void FloatNode::WriteFloat(double value) {
    if (m_source.Write(value)) {
        m_map.ValueChanged(*this);
    }
}

ERepresentation FloatNode::Representation() {
    Node* const behind = Broken() ? nullptr : m_source.Direct(); // a broken one may lie behind itself
    return OwnRepresentation(behind ? behind->Representation() : PureNumber);
}

std::string FloatNode::Unit() {
    const auto own = Child("Unit");
    Node* const behind = Broken() ? nullptr : m_source.Direct();
    return own.empty() && behind ? behind->Unit() : std::string(own);
}

double FloatNode::ComputeMin() {
    if (m_minimum.given) {
        return m_minimum.node ? m_minimum.node->ReadFloat(false) : m_minimum.constant;
    }
    Node* const behind = m_source.Current();
    return behind ? behind->MinFloat() : kLowest;
}

double FloatNode::ComputeMax() {
    if (m_maximum.given) {
        return m_maximum.node ? m_maximum.node->ReadFloat(false) : m_maximum.constant;
    }
    Node* const behind = m_source.Current();
    return behind ? behind->MaxFloat() : kHighest;
}

double FloatNode::ComputeInc() {
    if (m_increment.given) {
        return m_increment.node ? m_increment.node->ReadFloat(false) : m_increment.constant;
    }
    Node* const behind = m_source.Current();
    // A float over an integer is rounded when it is written; that makes no grid of it.
    return behind && behind->IsFloat() ? behind->IncFloat().value_or(FloatBase::ComputeInc())
                                       : FloatBase::ComputeInc();
}

} // namespace Norvane::GenApi
