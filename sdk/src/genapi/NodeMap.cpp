#include "genapi/NodeMap.h"

#include "genapi/PortNode.h"
#include "genapi/RegisterTarget.h"
#include "norvane/Log.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace Norvane::GenApi {

NodeMap::NodeMap(std::string_view text, std::shared_ptr<IPort> port, const NodeMapOptions& options)
    // The text, and what descriptions make on the average: nodes of once and dependencies of half its size.
    : m_options(options), m_port(std::move(port)),
      m_arena(std::max<std::size_t>(3 * text.size(), 4096), &m_pages),
      m_text(static_cast<char*>(m_arena.allocate(text.size(), 1)), text.size()) {
    std::copy(text.begin(), text.end(), m_text.begin());
}

NodeMap::~NodeMap() {
    // All other nodes have nothing outside of the arena and the buffers, which end as a whole.
    for (const auto* ports : {&m_ports, &m_chunkPorts}) {
        for (PortNode* port : *ports) {
            port->~PortNode();
        }
    }
}

INode* NodeMap::GetNode(const gcstring& name) const {
    std::string_view text = name;
    for (const std::string_view prefix : {"Std::", "Cust::"}) {
        if (text.substr(0, prefix.size()) == prefix) {
            text.remove_prefix(prefix.size());
        }
    }
    return Named(text);
}

Node* NodeMap::Named(std::string_view name, std::uint64_t hash) const {
    const auto found =
        m_byName.Find(hash, [&](std::uint32_t index) { return m_nodes[index]->NameView() == name; });
    return found == IndexTable::kNone ? nullptr : m_nodes[found];
}

void NodeMap::GetNodes(node_vector& nodes) const {
    nodes.clear();
    nodes.reserve(m_byName.Size());
    for (Node* node : m_nodes) {
        if (Named(node->NameView()) == node) {
            nodes.push_back(node);
        }
    }
}

std::uint64_t NodeMap::GetNumNodes() const {
    return m_byName.Size();
}

void NodeMap::MakeWay() const {
    constexpr int kMostTurns = 50; // a waiting thread may have been stopped; nothing hangs on it
    for (int turn = 0; turn < kMostTurns && m_mutex.IsWaitedFor(); ++turn) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

void NodeMap::LeaveAndCall() noexcept {
    m_callbacks.RunInside();
    const auto due = m_callbacks.TakeOutside();
    m_callbacks.Leave();
    m_mutex.unlock();
    CallbackList::RunOutside(due);
    if (m_options.onChanged) {
        m_options.onChanged();
    }
}

std::string NodeMap::FaultOf(const Node& node) const {
    const auto found = m_faults.find(&node);
    return found == m_faults.end() ? std::string() : found->second;
}

void NodeMap::ValueChanged(Node& node) {
    Node* const one = &node;
    ValuesChanged({&one, 1});
}

void NodeMap::ValuesChanged(std::span<Node* const> nodes) {
    ++m_epoch;
    std::vector<std::uint32_t> roots;
    roots.reserve(nodes.size());
    for (Node* node : nodes) {
        roots.push_back(node->Vertex(Facet::Value));
        node->Forget(Facet::Value, true);
        m_callbacks.AddChanged(*node);
    }
    m_graph.Dependents(roots, [this](std::uint32_t vertex) { ForgetVertex(vertex); });
}

void NodeMap::ForgetVertex(std::uint32_t vertex) {
    Node& node = *m_nodes[vertex / kFacets];
    node.Forget(static_cast<Facet>(vertex % kFacets), false);
    m_callbacks.AddChanged(node);
}

void NodeMap::ForgetAll(const std::vector<std::uint32_t>& roots) {
    for (const auto root : roots) {
        ForgetVertex(root);
    }
    m_graph.Dependents(roots, [this](std::uint32_t vertex) { ForgetVertex(vertex); });
}

void NodeMap::Refresh(Node& node) {
    ++m_epoch;
    auto roots = m_graph.ContentOf(node.Vertex(Facet::Value), m_nodes);
    const auto range = m_graph.ContentOf(node.Vertex(Facet::Range), m_nodes);
    roots.insert(roots.end(), range.begin(), range.end());
    roots.push_back(node.Vertex(Facet::Presence));
    roots.push_back(node.Vertex(Facet::Lock));
    ForgetAll(roots);
}

void NodeMap::InvalidateNodes() const {
    auto& self = const_cast<NodeMap&>(*this);
    const Operation operation(self);
    ++self.m_epoch;
    for (Node* node : m_nodes) {
        for (const auto facet : {Facet::Presence, Facet::Lock, Facet::Value, Facet::Range}) {
            node->Forget(facet, false);
        }
        self.m_callbacks.AddChanged(*node);
    }
}

void NodeMap::PortModesChanged() {
    for (auto& live : m_livePorts) {
        live.mode = live.port->GetAccessMode();
    }
    for (PortNode* port : m_ports) {
        CheckPort(*port);
    }
}

void NodeMap::CheckPort(PortNode& port) {
    if (!port.ModeChanged()) {
        return;
    }
    ++m_epoch;
    ForgetAll({port.Vertex(Facet::Presence), port.Vertex(Facet::Value)});
}

void NodeMap::AttachChunks(const std::map<std::uint64_t, ChunkView>& chunksById) {
    const Operation operation(*this);
    for (PortNode* port : m_chunkPorts) {
        port->AttachChunk(chunksById);
        CheckPort(*port);
    }
}

void NodeMap::BytesWritten(PortNode& port, std::int64_t address, std::int64_t length,
                           const RegisterTarget* by, std::vector<Node*>& changed) {
    port.Overlapping(address, length, [&](RegisterTarget& target) {
        if (&target != by) {
            target.ForgetBytes();
            changed.insert(changed.end(), target.Users().begin(), target.Users().end());
        }
    });
}

void AttachChunks(INodeMap& map, const std::map<std::uint64_t, ChunkView>& chunksById) {
    if (auto* const inner = dynamic_cast<NodeMap*>(&map)) {
        inner->AttachChunks(chunksById);
    }
}

} // namespace Norvane::GenApi
