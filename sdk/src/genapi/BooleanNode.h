#pragma once

#include "genapi/NumberSource.h"

namespace Norvane::GenApi {

/// Boolean: an integer that is compared with OnValue.
class BooleanNode final : public ValueNode<IBoolean> {
public:
    BooleanNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIBoolean) {}

    void SetValue(bool value, bool verify) override;
    bool GetValue(bool verify, bool ignoreCache) override;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    std::int64_t ReadInteger(bool fresh) override;
    void WriteInteger(std::int64_t value) override;
    std::int64_t MinInteger() override { return 0; }
    std::int64_t MaxInteger() override { return 1; }

protected:
    EAccessMode KindPresence() override { return m_source.Presence(); }
    bool KindLocked() override { return m_source.Locked(); }
    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;

private:
    bool Compute(bool fresh);

    NumberSource<std::int64_t> m_source;
    std::int64_t m_onValue = 1;
    std::int64_t m_offValue = 0;
    bool m_constantOn = false;
    bool m_hasConstant = false;
    Published<bool> m_value;
};

} // namespace Norvane::GenApi
