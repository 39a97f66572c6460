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

} // namespace

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
            m_copies.push_back(node);
        }
        return true;
    case Tag::pIndex:
        m_index = loader.Find(owner, element);
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
        m_entries.push_back(entry);
        return true;
    }
    case Tag::ValueDefault:
        m_default.constant = Number<T>(loader, owner, element);
        m_hasDefault = true;
        return true;
    case Tag::pValueDefault:
        m_default.node = loader.Find(owner, element);
        m_hasDefault = m_default.node != nullptr;
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
    source(m_default.node);
    for (const auto& entry : m_entries) {
        source(entry.node);
    }
    if (m_index) {
        for (const auto facet : {Facet::Presence, Facet::Lock, Facet::Value, Facet::Range}) {
            edges.AddRead(owner, facet, m_index);
        }
        edges.Add(owner, Facet::Presence, m_index, Facet::Presence);
    }
}

template <class T>
typename NumberSource<T>::Entry* NumberSource<T>::Find(std::int64_t index) {
    for (auto& entry : m_entries) {
        if (entry.index == index) {
            return &entry;
        }
    }
    return m_hasDefault ? &m_default : nullptr;
}

template <class T>
typename NumberSource<T>::Entry* NumberSource<T>::Chosen(bool fresh) {
    const auto index = m_index->ReadInteger(fresh);
    if (Entry* const entry = Find(index)) {
        return entry;
    }
    m_index->Fail(Error::GenApiLogical, "no value is described for the index " + std::to_string(index));
}

template <class T>
Node* NumberSource<T>::Current(bool fresh) {
    return m_value ? m_value : m_index ? Chosen(fresh)->node : nullptr;
}

template <class T>
EAccessMode NumberSource<T>::Presence() {
    if (m_value) {
        return m_value->Presence();
    }
    if (!m_index) {
        return RW;
    }
    if (!m_index->Readable()) {
        return NA;
    }
    try {
        Node* const node = Current();
        return node ? node->Presence() : RW;
    } catch (const Exception&) {
        m_index->Map().NextEpoch(); // the failure may pass
        return NA;
    }
}

template <class T>
bool NumberSource<T>::Locked() {
    if (m_index && !IsWritable(Presence())) {
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
    if (m_index) {
        const Entry& entry = *Chosen(fresh);
        return entry.node ? ReadNumber<T>(*entry.node, fresh) : entry.constant;
    }
    return m_constant;
}

template <class T>
bool NumberSource<T>::Write(T value) {
    bool keptHere = false;
    if (m_value) {
        WriteNumber<T>(*m_value, value);
    } else if (m_index) {
        Entry& entry = *Chosen(false);
        if (entry.node) {
            WriteNumber<T>(*entry.node, value);
        } else {
            entry.constant = value;
            keptHere = true;
        }
    } else {
        m_constant = value;
        keptHere = true;
    }
    for (Node* copy : m_copies) {
        if (IsWritable(copy->Access())) {
            WriteNumber<T>(*copy, value);
        }
    }
    return keptHere;
}

template class NumberSource<std::int64_t>;
template class NumberSource<double>;

} // namespace Norvane::GenApi
