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
    void CollectEdges(EdgeSink& edges) override;

protected:
    EAccessMode KindPresence() override;
    std::string ToText(bool, bool) override { return Name(); }
    void FromText(const std::string&, bool) override;

private:
    ArenaList<Node*> m_features;
};

} // namespace Norvane::GenApi
