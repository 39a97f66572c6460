#include "genapi/CategoryNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"

#include <algorithm>

namespace Norvane::GenApi {

bool CategoryNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    if (tag == Tag::pFeature) {
        if (Node* const feature = loader.FindOptional(*this, element)) {
            m_features.Add(loader.Arena(), feature);
            feature->MarkFeature();
        }
        return true;
    }
    return Node::LoadElement(tag, element, loader);
}

void CategoryNode::CollectFeatureEdges(EdgeSink& edges) {
    for (Node* feature : m_features) {
        edges.Add(*this, Facet::Presence, feature, Facet::Presence);
    }
}

void CategoryNode::GetFeatures(value_vector& features) const {
    features.clear();
    for (Node* feature : m_features) {
        if (auto* const value = dynamic_cast<IValue*>(feature)) {
            features.push_back(value);
        }
    }
}

EAccessMode CategoryNode::KindPresence() {
    const bool implemented =
        m_features.empty() || std::any_of(m_features.begin(), m_features.end(),
                                          [](Node* feature) { return feature->Presence() != NI; });
    return implemented ? RO : NI;
}

void CategoryNode::FromText(const std::string&, bool) {
    Fail(Error::GenApiAccess, "a category has no value");
}

} // namespace Norvane::GenApi
