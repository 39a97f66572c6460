#pragma once

#include "genapi/ArenaList.h"
#include "genapi/Node.h"

#include <cstdint>
#include <type_traits>

namespace Norvane::GenApi {

/// Where an Integer's, Float's, Boolean's, Enumeration's or Command's number comes from: a constant that is
/// kept in the node, another node (with copies that are written along), or a choice of both by an index.
template <class T>
class NumberSource {
public:
    bool LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader);
    bool Missing() const { return !m_hasConstant && !m_value && !Index(); }
    void CollectEdges(Node& owner, EdgeSink& edges) const;

    EAccessMode Presence();
    bool Locked();
    T Read(bool fresh);
    /// Writes to where Read reads from, and to the copies, each once. @return whether the number is kept
    /// here, so that the owner itself changed.
    bool Write(T value);
    /// The node behind the value now; null for a constant. @throws Exception when the index cannot be read or
    /// has neither entry nor default.
    Node* Current();
    Node* Direct() const { return m_value; }
    void SetConstant(T value) {
        m_constant = value;
        m_hasConstant = true;
    }

private:
    struct Entry {
        std::int64_t index;
        T constant;
        Node* node;
    };
    /// What few sources have.
    struct More {
        Node* index = nullptr;
        ArenaList<Entry> entries;
        Entry otherwise{};
        bool hasDefault = false;
        ArenaList<Node*> copies;
    };
    More& Extend(Loader& loader);
    Node* Index() const { return m_more ? m_more->index : nullptr; }
    Entry* Find(std::int64_t index);
    Entry* Chosen(bool fresh);
    bool WriteBehind(T value);

    T m_constant{};
    Node* m_value = nullptr;
    More* m_more = nullptr;
    bool m_hasConstant = false;
};

template <class T>
T ReadNumber(Node& node, bool fresh) {
    if constexpr (std::is_same_v<T, double>) {
        return node.ReadFloat(fresh);
    } else {
        return node.ReadInteger(fresh);
    }
}

template <class T>
void WriteNumber(Node& node, T value) {
    if constexpr (std::is_same_v<T, double>) {
        node.WriteFloat(value);
    } else {
        node.WriteInteger(value);
    }
}

extern template class NumberSource<std::int64_t>;
extern template class NumberSource<double>;

} // namespace Norvane::GenApi
