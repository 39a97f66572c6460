#include "genapi/ConverterNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "norvane/Exception.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Norvane::GenApi {

namespace {

/// What the formula makes of one end of the range behind it; nothing where it has no value there, for example
/// 1/TO at 0: that costs this limit and not the other one.
template <class Convert>
auto ValueAtEnd(Convert&& convert) -> std::optional<decltype(convert())> {
    try {
        return convert();
    } catch (const Exception& error) {
        if (error.GetError() != Error::GenApiLogical) {
            throw;
        }
        return std::nullopt;
    }
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
    const auto slope = m_core.GetSlope();
    if (slope == Slope::Varying) {
        return otherwise;
    }
    const auto at = [&](bool lowerBehind) -> std::optional<std::int64_t> {
        const auto end = lowerBehind ? m_core.Behind().MinInteger() : m_core.Behind().MaxInteger();
        // A range without a limit has none after conversion either; the formula would only overflow.
        if (end == (lowerBehind ? kLowest : kHighest)) {
            return std::nullopt;
        }
        return ValueAtEnd([&] { return m_core.FromInteger(end, false); });
    };
    if (slope != Slope::Automatic) {
        return at(lower == (slope == Slope::Increasing)).value_or(otherwise);
    }
    const auto first = at(true);
    const auto last = at(false);
    return !first || !last ? otherwise : lower ? std::min(*first, *last) : std::max(*first, *last);
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
    const auto slope = m_core.GetSlope();
    if (slope == Slope::Varying) {
        return otherwise;
    }
    const auto at = [&](bool lowerBehind) -> std::optional<double> {
        const auto value = ValueAtEnd([&] {
            return m_core.FromFloat(lowerBehind ? m_core.Behind().MinFloat() : m_core.Behind().MaxFloat(),
                                    false);
        });
        return value && !std::isnan(*value) ? std::optional(std::clamp(*value, kLowest, kHighest))
                                            : std::nullopt;
    };
    if (slope != Slope::Automatic) {
        return at(lower == (slope == Slope::Increasing)).value_or(otherwise);
    }
    const auto first = at(true);
    const auto last = at(false);
    return !first || !last ? otherwise : lower ? std::min(*first, *last) : std::max(*first, *last);
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
