#include "genapi/NumberSource.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"

namespace Norvane::GenApi {

namespace {

template <class T>
T Number(Loader& loader, Node& owner, pugi::xml_node element) {
    if constexpr (std::is_same_v<T, double>) {
        return loader.Float(owner, element);
    } else {
        return loader.Integer(owner, element);
    }
}

/// While it lives, one number and its copies are written. The outermost one begins anew.
class CopyRound {
public:
    explicit CopyRound(NodeMap& map) : m_copying(map.Copying()) { ++m_copying.depth; }
    ~CopyRound() {
        if (--m_copying.depth == 0) {
            m_copying.reached.clear();
        }
    }
    CopyRound(const CopyRound&) = delete;
    CopyRound& operator=(const CopyRound&) = delete;

    /// Whether `source` is reached for the first time.
    bool Reaches(const void* source) const { return m_copying.reached.insert(source).second; }
    std::uint32_t Depth() const { return m_copying.depth; }

private:
    NodeMap::CopiesWritten& m_copying;
};

} // namespace

template <class T>
typename NumberSource<T>::More& NumberSource<T>::Extend(Loader& loader) {
    if (!m_more) {
        m_more = loader.New<More>();
    }
    return *m_more;
}

template <class T>
bool NumberSource<T>::LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Value:
        SetConstant(Number<T>(loader, owner, element));
        return true;
    case Tag::pValue:
        m_value = loader.Find(owner, element);
        return true;
    case Tag::pValueCopy:
        if (Node* node = loader.Find(owner, element)) {
            Extend(loader).copies.Add(loader.Arena(), node);
        }
        return true;
    case Tag::pIndex:
        Extend(loader).index = loader.Find(owner, element);
        return true;
    case Tag::ValueIndexed:
    case Tag::pValueIndexed: {
        Entry entry{};
        entry.index = loader.IntegerText(owner, "Index", element.attribute("Index").value());
        if (tag == Tag::ValueIndexed) {
            entry.constant = Number<T>(loader, owner, element);
        } else {
            entry.node = loader.Find(owner, element);
        }
        Extend(loader).entries.Add(loader.Arena(), entry);
        return true;
    }
    case Tag::ValueDefault:
        Extend(loader).otherwise.constant = Number<T>(loader, owner, element);
        m_more->hasDefault = true;
        return true;
    case Tag::pValueDefault:
        Extend(loader).otherwise.node = loader.Find(owner, element);
        m_more->hasDefault = m_more->otherwise.node != nullptr;
        return true;
    default:
        return false;
    }
}

template <class T>
void NumberSource<T>::CollectEdges(Node& owner, EdgeSink& edges) const {
    const auto source = [&](Node* node) {
        edges.AddRead(owner, Facet::Value, node, true);
        edges.Add(owner, Facet::Range, node, Facet::Range, true);
        edges.Add(owner, Facet::Presence, node, Facet::Presence);
        edges.Add(owner, Facet::Lock, node, Facet::Lock);
    };
    source(m_value);
    if (!m_more) {
        return;
    }
    source(m_more->otherwise.node);
    for (const auto& entry : m_more->entries) {
        source(entry.node);
    }
    if (Node* const index = m_more->index) {
        for (const auto facet : {Facet::Presence, Facet::Lock, Facet::Value, Facet::Range}) {
            edges.AddRead(owner, facet, index);
        }
        edges.Add(owner, Facet::Presence, index, Facet::Presence);
    }
}

template <class T>
typename NumberSource<T>::Entry* NumberSource<T>::Find(std::int64_t index) {
    for (auto& entry : m_more->entries) {
        if (entry.index == index) {
            return &entry;
        }
    }
    return m_more->hasDefault ? &m_more->otherwise : nullptr;
}

template <class T>
typename NumberSource<T>::Entry* NumberSource<T>::Chosen(bool fresh) {
    const auto index = Index()->ReadInteger(fresh);
    if (Entry* const entry = Find(index)) {
        return entry;
    }
    Index()->Fail(Error::GenApiLogical, "no value is described for the index " + std::to_string(index));
}

template <class T>
Node* NumberSource<T>::Current() {
    return m_value ? m_value : Index() ? Chosen(false)->node : nullptr;
}

template <class T>
EAccessMode NumberSource<T>::Presence() {
    if (m_value) {
        return m_value->Presence();
    }
    Node* const index = Index();
    if (!index) {
        return RW;
    }
    if (!index->Readable()) {
        return NA;
    }
    try {
        Node* const node = Current();
        return node ? node->Presence() : RW;
    } catch (const Exception&) {
        index->Map().NextEpoch(); // the failure may pass
        return NA;
    }
}

template <class T>
bool NumberSource<T>::Locked() {
    if (Index() && !IsWritable(Presence())) {
        return true;
    }
    Node* const node = Current();
    return node && node->Locked();
}

template <class T>
T NumberSource<T>::Read(bool fresh) {
    if (m_value) {
        return ReadNumber<T>(*m_value, fresh);
    }
    if (Index()) {
        const Entry& entry = *Chosen(fresh);
        return entry.node ? ReadNumber<T>(*entry.node, fresh) : entry.constant;
    }
    return m_constant;
}

template <class T>
bool NumberSource<T>::Write(T value) {
    if (!m_more || m_more->copies.begin() == m_more->copies.end()) {
        return WriteBehind(value);
    }
    Node& first = **m_more->copies.begin();
    const CopyRound round(first.Map());
    if (!round.Reaches(this)) {
        return false; // copies may list one another
    }
    if (round.Depth() > Graph::kLongestChain) {
        first.Fail(Error::GenApiLogical, "it stands at the end of too many copies of copies");
    }
    const bool keptHere = WriteBehind(value);
    for (Node* copy : m_more->copies) {
        if (IsWritable(copy->Access())) {
            WriteNumber<T>(*copy, value);
        }
    }
    return keptHere;
}

template <class T>
bool NumberSource<T>::WriteBehind(T value) {
    if (m_value) {
        WriteNumber<T>(*m_value, value);
        return false;
    }
    if (Index()) {
        Entry& entry = *Chosen(false);
        if (entry.node) {
            WriteNumber<T>(*entry.node, value);
            return false;
        }
        entry.constant = value;
        return true;
    }
    m_constant = value;
    return true;
}

template class NumberSource<std::int64_t>;
template class NumberSource<double>;

} // namespace Norvane::GenApi
