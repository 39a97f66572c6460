#pragma once

#include "genapi/Node.h"

#include <string>

namespace Norvane::GenApi {

/// Base of the kinds with a string interface. Texts are not cached here: registers keep their bytes.
class StringBase : public ValueNode<IString> {
public:
    StringBase(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIString) {}

    void SetValue(const gcstring& value, bool verify) override;
    gcstring GetValue(bool verify, bool ignoreCache) override;
    std::int64_t GetMaxLength() override;

    std::string ReadText(bool fresh) override {
        RequireSound();
        return ComputeText(fresh);
    }
    virtual std::int64_t MaxLength() = 0;

protected:
    virtual std::string ComputeText(bool fresh) = 0;
    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;
};

/// String: a constant kept in the node, or another string node.
class StringNode final : public StringBase {
public:
    using StringBase::StringBase;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    void WriteText(const std::string& value) override;
    std::int64_t MaxLength() override;

protected:
    EAccessMode KindPresence() override { return m_value ? m_value->Presence() : RW; }
    bool KindLocked() override { return m_value && m_value->Locked(); }
    std::string ComputeText(bool fresh) override;

private:
    std::pmr::string m_constant{&Buffers()};
    Node* m_value = nullptr;
    bool m_hasConstant = false;
};

} // namespace Norvane::GenApi
