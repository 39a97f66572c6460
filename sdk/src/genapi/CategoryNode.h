#pragma once

#include "genapi/ArenaList.h"
#include "genapi/Node.h"

namespace Norvane::GenApi {

/// Category: a list of features. Not implemented when none of its features is.
class CategoryNode final : public ValueNode<ICategory> {
public:
    CategoryNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfICategory) {}

    void GetFeatures(value_vector& features) const override;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;

    const ArenaList<Node*>& Features() const { return m_features; }
    void LeaveOut(std::uint32_t feature) { m_features.Remove(feature); }
    /// Once all categories are loaded and none lists itself, directly or not.
    void CollectFeatureEdges(EdgeSink& edges);

protected:
    EAccessMode KindPresence() override;
    std::string ToText(bool, bool) override { return Name(); }
    void FromText(const std::string&, bool) override;

private:
    ArenaList<Node*> m_features;
};

} // namespace Norvane::GenApi
