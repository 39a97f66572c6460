#pragma once

#include "genapi/Callbacks.h"
#include "genapi/Graph.h"
#include "genapi/IndexTable.h"
#include "genapi/LargePages.h"
#include "genapi/MapMutex.h"
#include "genapi/Node.h"
#include "genapi/Published.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <memory>
#include <memory_resource>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Norvane::GenApi {

class PortNode;
class RegisterTarget;

/// The nodes of one description, their memory and their lock. Built by Loader; afterwards the set of nodes
/// and their references never change, only what the nodes cache.
///
/// One recursive lock covers every operation. Operation enters and leaves it; leaving the outermost one runs
/// the callbacks of the nodes that changed: those "inside" with the lock still held, then, without it, the
/// rest.
class NodeMap final : public INodeMap {
public:
    /// @param text  the description as plain XML.
    NodeMap(std::string_view text, std::shared_ptr<IPort> port, const NodeMapOptions& options);
    ~NodeMap() override;

    INode* GetNode(const gcstring& name) const override;
    void GetNodes(node_vector& nodes) const override;
    std::uint64_t GetNumNodes() const override;
    gcstring GetDeviceName() const override { return m_options.deviceName; }
    void InvalidateNodes() const override;
    void Poll(std::int64_t elapsedMs) override;

    void Enter() ACQUIRE(m_mutex) {
        m_mutex.lock();
        m_callbacks.Enter();
    }
    void Leave() noexcept RELEASE(m_mutex) {
        if (m_callbacks.ChangesPending() && m_callbacks.IsOutermost()) {
            LeaveAndCall();
            return;
        }
        m_callbacks.Leave();
        m_mutex.unlock();
    }
    /// Between two operations of a long series, without the lock: lets those in who wait for it.
    void MakeWay() const;
    void AttachChunks(const std::map<std::uint64_t, ChunkView>& chunksById);
    CallbackList& Callbacks() { return m_callbacks; }
    /// Whether what nodes have cached may be taken as it is; with or without the lock.
    bool Undisturbed() const { return !Auditing() && PortsUnchanged(); }

    // ---- with the lock held

    const NodeMapOptions& Options() const { return m_options; }
    bool Auditing() const { return m_options.cacheAudit != nullptr; }
    /// Whether a facet comes from what is polled because the camera changes it by itself.
    bool Moves(std::uint32_t vertex);
    /// Grows whenever something cached is forgotten or could not be read, and never repeats.
    std::uint64_t Epoch() const { return m_epoch; }
    std::uint64_t NextEpoch() { return ++m_epoch; }

    /// The value of `node` was written: what depends on it is forgotten, itself excepted.
    void ValueChanged(Node& node);
    /// As ValueChanged, for all registers whose bytes changed together.
    void ValuesChanged(std::span<Node* const> nodes);
    /// Forgets the node itself, the registers behind it, and what depends on them.
    void Refresh(Node& node);
    /// Takes notice of a port that was opened or closed. Part of every operation, so as cheap as can be.
    void CheckPorts() {
        if (!PortsUnchanged()) {
            PortModesChanged();
        }
    }
    void CheckPort(PortNode& port);

    std::pmr::memory_resource& Buffers() { return m_buffers; }
    void AddChanged(Node& node) { m_callbacks.AddChanged(node); }
    const Graph& Dependencies() const { return m_graph; }
    const std::vector<Node*>& Nodes() const { return m_nodes; }
    /// Null when no node has the name, or only a hidden one.
    Node* Named(std::string_view name) const { return Named(name, HashOf(name)); }
    Node* Named(std::string_view name, std::uint64_t hash) const;
    static std::uint64_t HashOf(std::string_view name) { return std::hash<std::string_view>()(name); }
    const std::vector<Link>& Links() const { return m_links; }
    /// What is wrong with a broken node.
    std::string FaultOf(const Node& node) const;

    /// What one write has reached of numbers with copies, and how deep it is in copies of copies.
    struct CopiesWritten {
        std::unordered_set<const void*> reached;
        std::uint32_t depth = 0;
    };
    CopiesWritten& Copying() { return m_copying; }

    void BytesWritten(PortNode& port, std::int64_t address, std::int64_t length, const RegisterTarget* by,
                      std::vector<Node*>& changed);

private:
    friend class Loader;
    friend class Node;

    void LeaveAndCall() noexcept RELEASE(m_mutex);
    bool PortsUnchanged() const {
        for (const auto& live : m_livePorts) {
            if (live.port->GetAccessMode() != live.mode) {
                return false;
            }
        }
        return true;
    }
    void PortModesChanged();
    /// Forgets what is cached of a facet of a node, and has the node's callbacks called.
    void ForgetVertex(std::uint32_t vertex);
    /// The facets themselves and all that depends on them.
    void ForgetAll(const std::vector<std::uint32_t>& roots);
    /// False when the device does not answer.
    bool PollNode(Node& node, std::uint64_t since);

    mutable MapMutex m_mutex;
    CallbackList m_callbacks;
    const NodeMapOptions m_options;
    const std::shared_ptr<IPort> m_port;
    LargePages m_pages;
    std::pmr::monotonic_buffer_resource m_arena;      ///< what loading makes, down to the nodes' lists
    std::pmr::unsynchronized_pool_resource m_buffers; ///< what changes its size later
    std::span<char> m_text;                           ///< in the arena
    pugi::xml_document m_document;                    ///< points into the text
    std::vector<Node*> m_nodes; ///< in the description's order; a hidden one has no place in m_byName
    std::vector<Link> m_links;
    IndexTable m_byName; ///< indices of m_nodes
    std::unordered_map<const Node*, std::string> m_faults;
    std::vector<RegisterTarget*> m_targets; ///< in the arena, as the nodes
    struct LivePort {
        IPort* port;
        Published<EAccessMode> mode;
    };
    std::vector<LivePort> m_livePorts;   ///< each one behind m_ports once
    std::vector<PortNode*> m_ports;      ///< whose mode can change at any time
    std::vector<PortNode*> m_chunkPorts; ///< change only when chunks are attached
    Graph m_graph{m_arena};
    std::uint64_t m_epoch = 1;

    struct Polled {
        Node* node;
        std::int64_t elapsed;
    };
    std::vector<Polled> m_polled;
    std::vector<bool> m_moves; ///< by vertex; empty before the first question
    CopiesWritten m_copying;
};

/// One operation on a map, from the first access to the callbacks that it causes.
class SCOPED_CAPABILITY Operation {
public:
    explicit Operation(NodeMap& map) NO_THREAD_SAFETY_ANALYSIS : m_map(map) { map.Enter(); }
    ~Operation() NO_THREAD_SAFETY_ANALYSIS { m_map.Leave(); }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    NodeMap& m_map;
};

template <class Interface>
gcstring ValueNode<Interface>::ToString(bool verify, bool ignoreCache) {
    const Operation operation(m_map);
    RequireReadable();
    return ToText(verify, ignoreCache);
}

template <class Interface>
void ValueNode<Interface>::FromString(const gcstring& text, bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    FromText(text.str(), verify);
    if (verify) {
        CheckErrors();
    }
}

template <class Interface>
bool ValueNode<Interface>::IsValueCacheValid() const {
    const Operation operation(m_map);
    return ValueCached();
}

} // namespace Norvane::GenApi
