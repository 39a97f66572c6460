#include "genapi/PortNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <cstring>

namespace Norvane::GenApi {

PortNode::PortNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
    : Node(map, xml, name, index, intfIPort) {}

bool PortNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::ChunkID: {
        m_isChunk = true;
        const auto id = ParseHex(element.child_value());
        if (id) {
            m_chunkId = *id;
        } else {
            loader.Fault(*this,
                         std::string("its ChunkID '") + element.child_value() + "' is no hexadecimal number");
        }
        return true;
    }
    case Tag::pChunkID:
        m_isChunk = true;
        m_chunkIdNode = loader.Find(*this, element);
        return true;
    case Tag::SwapEndianess:
        m_swap = loader.YesNo(*this, element);
        return true;
    case Tag::CacheChunkData:
        return true;
    case Tag::EventID:
        m_isEvent = true;
        return true;
    default:
        return Node::LoadElement(tag, element, loader);
    }
}

void PortNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    edges.AddRead(*this, Facet::Presence, m_chunkIdNode);
}

EAccessMode PortNode::CurrentMode() const {
    if (m_isChunk) {
        return m_chunk.data ? RO : NA;
    }
    return m_port ? m_port->GetAccessMode() : NA;
}

EAccessMode PortNode::KindPresence() {
    return CurrentMode();
}

bool PortNode::ModeChanged() {
    const auto mode = CurrentMode();
    const bool changed = (mode != m_mode && m_mode != _UndefinedAccesMode) || m_chunkChanged;
    m_mode = mode;
    m_chunkChanged = false;
    return changed;
}

void PortNode::AttachChunk(const std::map<std::uint64_t, ChunkView>& chunksById) {
    auto id = m_chunkId;
    if (m_chunkIdNode) {
        try {
            id = ParseHex(m_chunkIdNode->ReadText(false)).value_or(0);
        } catch (const Exception&) {
            id = 0; // an ID that cannot be told belongs to no chunk
        }
    }
    const auto found = chunksById.find(id);
    const ChunkView chunk = found == chunksById.end() ? ChunkView{} : found->second;
    m_chunkChanged = m_chunkChanged || chunk.data || m_chunk.data;
    m_chunk = chunk;
}

void PortNode::Read(std::uint8_t* data, std::int64_t address, std::int64_t length) {
    if (m_isChunk) {
        const auto size = static_cast<std::int64_t>(m_chunk.size);
        if (!m_chunk.data || address < 0 || address > size || length > size - address) {
            throw Exception(Error::InvalidAddress, "the image's chunk " + FormatHex(m_chunkId) +
                                                       " has only " + std::to_string(size) + " bytes");
        }
        std::memcpy(data, m_chunk.data + address, static_cast<std::size_t>(length));
        return;
    }
    if (!m_port) {
        throw Exception(Error::NotAvailable, "there is no port");
    }
    m_port->Read(data, address, length);
}

void PortNode::Write(const std::uint8_t* data, std::int64_t address, std::int64_t length) {
    if (!m_port) {
        throw Exception(Error::NotAvailable, m_isChunk ? "chunk data cannot be written" : "there is no port");
    }
    m_port->Write(data, address, length);
}

void PortNode::AddTarget(RegisterTarget* target) {
    if (target->IsStatic() && target->Length() <= kShort) {
        m_short.emplace_back(target->Address(), target);
    } else {
        m_others.push_back(target);
    }
}

void PortNode::SortTargets() {
    std::sort(m_short.begin(), m_short.end());
    m_sorted = true;
}

} // namespace Norvane::GenApi
