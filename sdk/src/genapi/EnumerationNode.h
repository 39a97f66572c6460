#pragma once

#include "genapi/NumberSource.h"

#include <optional>
#include <string>
#include <vector>

namespace Norvane::GenApi {

class EnumerationNode;

/// EnumEntry: one value of an enumeration and its name. The node's name is "EnumEntry_<Enumeration>_<Entry>",
/// its symbolic name the plain one. Descriptions give either of them as the element's Name (GenApi 1.1,
/// EnumEntry and Symbolic).
class EnumEntryNode final : public ValueNode<IEnumEntry> {
public:
    EnumEntryNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index);

    /// What stands before the plain name in the nodes of an enumeration's entries.
    static std::string Prefix(std::string_view enumeration);
    /// The plain name of an entry element: its Symbolic, else its Name without the prefix.
    static std::string_view SymbolicOf(pugi::xml_node entry);

    std::int64_t GetValue() override { return m_value; }
    gcstring GetSymbolic() const override { return m_symbolic; }
    double GetNumericValue() override { return m_numeric; }
    bool IsSelfClearing() override { return m_selfClearing; }

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    std::int64_t ReadInteger(bool) override { return m_value; }

    void BelongTo(Node& enumeration) { m_enumeration = &enumeration; }
    std::string_view Symbolic() const { return m_symbolic; }
    std::int64_t Value() const { return m_value; }
    bool SelfClearing() const { return m_selfClearing; }

protected:
    std::string ToText(bool, bool) override { return std::string(m_symbolic); }
    void FromText(const std::string&, bool) override;

private:
    static std::string_view PlainNameOf(pugi::xml_node entry);

    Node* m_enumeration = nullptr;
    std::string_view m_symbolic;
    std::int64_t m_value = 0;
    double m_numeric = 0;
    bool m_hasValue = false;
    bool m_hasNumeric = false;
    bool m_selfClearing = false;
};

/// Enumeration: a number that has names.
class EnumerationNode final : public ValueNode<IEnumeration> {
public:
    EnumerationNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIEnumeration) {}

    void GetSymbolics(std::vector<gcstring>& symbolics) override;
    void GetEntries(node_vector& entries) override;
    void SetIntValue(std::int64_t value, bool verify) override;
    std::int64_t GetIntValue(bool verify, bool ignoreCache) override;
    IEnumEntry* GetEntryByName(const gcstring& symbolic) override;
    IEnumEntry* GetEntry(std::int64_t value) override;
    IEnumEntry* GetCurrentEntry(bool verify, bool ignoreCache) override;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    std::int64_t ReadInteger(bool fresh) override;
    std::string ReadText(bool fresh) override;
    void WriteInteger(std::int64_t value) override;
    std::int64_t MinInteger() override;
    std::int64_t MaxInteger() override;

    void AddEntry(std::pmr::memory_resource& arena, EnumEntryNode& entry) {
        m_entries.Add(arena, &entry);
        entry.BelongTo(*this);
    }
    /// An entry's value by its symbolic name, also while the map is still loading.
    std::optional<std::int64_t> EntryValue(std::string_view symbolic) const;

protected:
    EAccessMode KindPresence() override { return m_source.Presence(); }
    bool KindLocked() override { return m_source.Locked(); }
    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;

private:
    EnumEntryNode* Find(std::int64_t value) const;
    EnumEntryNode* Find(std::string_view symbolic) const;
    void Verify(std::int64_t value);

    NumberSource<std::int64_t> m_source;
    ArenaList<EnumEntryNode*> m_entries;
    Published<std::int64_t> m_value;
};

} // namespace Norvane::GenApi
