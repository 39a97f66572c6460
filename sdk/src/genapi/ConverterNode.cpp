#include "genapi/ConverterNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "norvane/Exception.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace Norvane::GenApi {

namespace {

template <class Convert>
auto ValueAt(Convert&& convert) -> std::optional<decltype(convert())> {
    try {
        return convert();
    } catch (const Exception& error) {
        if (error.GetError() != Error::GenApiLogical) {
            throw;
        }
        return std::nullopt;
    }
}

/// A limit of what the formula makes of the range behind it. An end without a value, for example 1/TO at 0,
/// costs this limit and not the other one where the slope tells which is which.
/// @param end  the formula's value at an end of the range: lower (true) or upper
/// @param middle  its value between them
template <class T, class End, class Middle>
std::optional<T> LimitOver(Slope slope, bool lower, End&& end, Middle&& middle) {
    const std::optional<T> first = end(true);
    const std::optional<T> last = end(false);
    if (!first || !last) {
        return slope == Slope::Automatic               ? std::nullopt
               : lower == (slope == Slope::Increasing) ? first
                                                       : last;
    }
    const auto [least, most] = std::minmax(*first, *last);
    // 1/TO over a range on both sides of 0 leaves its ends far behind: they limit nothing.
    const std::optional<T> between = middle();
    if (!between || !(*between >= least && *between <= most)) {
        return std::nullopt;
    }
    return lower ? least : most;
}

} // namespace

bool ConverterCore::LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::pValue:
        m_value = loader.Find(owner, element);
        return true;
    case Tag::FormulaTo:
        m_toText = element.child_value();
        return true;
    case Tag::FormulaFrom:
        m_fromText = element.child_value();
        return true;
    case Tag::Slope:
        m_slope = static_cast<Slope>(
            loader.Word(owner, element, {"Increasing", "Decreasing", "Varying", "Automatic"}, 3));
        return true;
    case Tag::IsLinear:
        m_linear = loader.YesNo(owner, element);
        return true;
    default:
        return m_binding.LoadElement(owner, tag, element, loader);
    }
}

void ConverterCore::FinishLoading(Node& owner, Loader& loader, Formula::Kind kind) {
    if (owner.Broken()) {
        return;
    }
    if (!m_value) {
        loader.Fault(owner, "it has no pValue");
        return;
    }
    m_from = m_binding.Compile(owner, loader, m_fromText, kind, "TO");
    const auto variables = m_binding.Count();
    if (!owner.Broken()) {
        m_to = m_binding.Compile(owner, loader, m_toText, kind, "FROM");
    }
    if (!owner.Broken() && m_binding.Count() != variables) {
        // Variables that the second formula brought in change the index of the first one's TO.
        m_from = m_binding.Compile(owner, loader, m_fromText, kind, "TO");
    }
}

void ConverterCore::CollectEdges(Node& owner, EdgeSink& edges) const {
    m_binding.CollectEdges(owner, Facet::Value, edges, true);
    m_binding.CollectEdges(owner, Facet::Range, edges, true);
    edges.AddRead(owner, Facet::Value, m_value, true);
    edges.Add(owner, Facet::Range, m_value, Facet::Range, true);
    edges.Add(owner, Facet::Presence, m_value, Facet::Presence);
    edges.Add(owner, Facet::Lock, m_value, Facet::Lock);
}

EAccessMode ConverterCore::Presence() const {
    return m_binding.Readable() ? m_value->Presence() : NA;
}

double ConverterCore::FromFloat(double behind, bool fresh) const {
    return m_from.EvaluateFloat([&](std::size_t index) {
        return index == m_binding.Count() ? behind : m_binding.ReadFloat(index, fresh);
    });
}

double ConverterCore::ToFloat(double own) const {
    return m_to.EvaluateFloat([&](std::size_t index) {
        return index == m_binding.Count() ? own : m_binding.ReadFloat(index, false);
    });
}

std::int64_t ConverterCore::FromInteger(std::int64_t behind, bool fresh) const {
    if (m_from.CalculatesInDouble()) {
        return TruncateToInteger(FromFloat(static_cast<double>(behind), fresh));
    }
    return m_from.EvaluateInteger([&](std::size_t index) {
        return index == m_binding.Count() ? behind : m_binding.ReadInteger(index, fresh);
    });
}

std::int64_t ConverterCore::ToInteger(std::int64_t own) const {
    if (m_to.CalculatesInDouble()) {
        return TruncateToInteger(ToFloat(static_cast<double>(own)));
    }
    return m_to.EvaluateInteger([&](std::size_t index) {
        return index == m_binding.Count() ? own : m_binding.ReadInteger(index, false);
    });
}

bool IntConverterNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    return m_core.LoadElement(*this, tag, element, loader) || IntegerBase::LoadElement(tag, element, loader);
}

void IntConverterNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_core.CollectEdges(*this, edges);
}

std::int64_t IntConverterNode::ComputeInteger(bool fresh) {
    return Named(*this, [&] { return m_core.FromInteger(m_core.Behind().ReadInteger(fresh), fresh); });
}

void IntConverterNode::WriteInteger(std::int64_t value) {
    m_core.Behind().WriteInteger(Named(*this, [&] { return m_core.ToInteger(value); }));
}

std::int64_t IntConverterNode::Limit(bool lower) {
    const auto otherwise = lower ? kLowest : kHighest;
    if (m_core.GetSlope() == Slope::Varying) {
        return otherwise;
    }
    const auto min = m_core.Behind().MinInteger();
    const auto max = m_core.Behind().MaxInteger();
    const auto at = [&](std::int64_t behind) {
        return ValueAt([&] { return m_core.FromInteger(behind, false); });
    };
    const auto end = [&](bool atMin) -> std::optional<std::int64_t> {
        // A range without a limit has none after conversion either; the formula would only overflow.
        const bool unlimited = atMin ? min == kLowest : max == kHighest;
        return unlimited ? std::nullopt : at(atMin ? min : max);
    };
    return LimitOver<std::int64_t>(m_core.GetSlope(), lower, end, [&] { return at(std::midpoint(min, max)); })
        .value_or(otherwise);
}

bool ConverterNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    return m_core.LoadElement(*this, tag, element, loader) || FloatBase::LoadElement(tag, element, loader);
}

void ConverterNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_core.CollectEdges(*this, edges);
}

double ConverterNode::ComputeFloat(bool fresh) {
    return Named(*this, [&] { return m_core.FromFloat(m_core.Behind().ReadFloat(fresh), fresh); });
}

void ConverterNode::WriteFloat(double value) {
    const auto behind = Named(*this, [&] { return m_core.ToFloat(value); });
    if (std::isnan(behind)) {
        Fail(Error::GenApiOutOfRange, "the value cannot be converted");
    }
    m_core.Behind().WriteFloat(behind);
}

double ConverterNode::Limit(bool lower) {
    const auto otherwise = lower ? kLowest : kHighest;
    if (m_core.GetSlope() == Slope::Varying) {
        return otherwise;
    }
    const auto min = m_core.Behind().MinFloat();
    const auto max = m_core.Behind().MaxFloat();
    const auto at = [&](double behind) -> std::optional<double> {
        const auto value = ValueAt([&] { return m_core.FromFloat(behind, false); });
        return value && !std::isnan(*value) ? value : std::nullopt;
    };
    const auto limit = LimitOver<double>(
        m_core.GetSlope(), lower, [&](bool atMin) { return at(atMin ? min : max); },
        [&] { return at(std::midpoint(min, max)); });
    return std::clamp(limit.value_or(otherwise), kLowest, kHighest);
}

double ConverterNode::ComputeInc() {
    if (!m_core.IsLinear()) {
        return FloatBase::ComputeInc();
    }
    const auto behind = m_core.Behind().IncFloat();
    return behind ? std::abs(m_core.FromFloat(*behind, false) - m_core.FromFloat(0, false))
                  : FloatBase::ComputeInc();
}

} // namespace Norvane::GenApi
