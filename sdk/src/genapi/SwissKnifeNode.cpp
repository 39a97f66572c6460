#include "genapi/SwissKnifeNode.h"

#include "genapi/Loader.h"

namespace Norvane::GenApi {

bool IntSwissKnifeNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    return tag == Tag::Formula || m_binding.LoadElement(*this, tag, element, loader) ||
           IntegerBase::LoadElement(tag, element, loader);
}

void IntSwissKnifeNode::FinishLoading(Loader& loader) {
    if (!Broken()) {
        m_formula = m_binding.Compile(*this, loader, Child("Formula"), Formula::Kind::Integer);
    }
}

void IntSwissKnifeNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_binding.CollectEdges(*this, Facet::Value, edges, true);
}

std::int64_t IntSwissKnifeNode::ComputeInteger(bool fresh) {
    return Named(*this, [&] {
        if (m_formula.CalculatesInDouble()) {
            return TruncateToInteger(m_formula.EvaluateFloat(
                [&](std::size_t index) { return m_binding.ReadFloat(index, fresh); }));
        }
        return m_formula.EvaluateInteger(
            [&](std::size_t index) { return m_binding.ReadInteger(index, fresh); });
    });
}

bool SwissKnifeNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    return tag == Tag::Formula || m_binding.LoadElement(*this, tag, element, loader) ||
           FloatBase::LoadElement(tag, element, loader);
}

void SwissKnifeNode::FinishLoading(Loader& loader) {
    if (!Broken()) {
        m_formula = m_binding.Compile(*this, loader, Child("Formula"), Formula::Kind::Float);
    }
}

void SwissKnifeNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_binding.CollectEdges(*this, Facet::Value, edges, true);
}

double SwissKnifeNode::ComputeFloat(bool fresh) {
    return Named(*this, [&] {
        return m_formula.EvaluateFloat([&](std::size_t index) { return m_binding.ReadFloat(index, fresh); });
    });
}

} // namespace Norvane::GenApi
