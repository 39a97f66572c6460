#pragma once

#include "genapi/Node.h"

#include <cstdint>
#include <memory_resource>
#include <vector>

namespace Norvane::GenApi {

/// One dependency: facet `from` is calculated from facet `to`. A content edge leads to where a value or a
/// range itself comes from (pValue, pVariable, pMin, ...), as opposed to what merely chooses or addresses it.
struct Edge {
    std::uint32_t from;
    std::uint32_t to;
    bool content;
};

/// Collects the edges while nodes name them.
class EdgeSink {
public:
    void Add(Node& from, Facet facet, Node* to, Facet toFacet, bool content = false) {
        if (to) {
            m_edges.push_back({from.Vertex(facet), to->Vertex(toFacet), content});
        }
    }
    /// The facet is calculated from the other node's value.
    void AddRead(Node& from, Facet facet, Node* to, bool content = false) {
        Add(from, facet, to, Facet::Value, content);
    }
    std::vector<Edge> m_edges;
};

/// The dependencies between the facets of a map's nodes: finds cycles, tells what may be cached, and what a
/// change reaches. Built once; the traversal's marks are guarded by the map's lock.
class Graph {
public:
    /// A group of facets that depend on one another, a facet at the end of a chain that is too long, or one
    /// whose calculation asks other nodes too often.
    struct Trouble {
        enum class Kind : std::uint8_t { Cycle, LongChain, ManyReads };
        std::vector<std::uint32_t> vertices;
        Kind kind;
    };
    /// Longer chains than this would endanger the stack, and come from no camera.
    static constexpr std::uint32_t kLongestChain = 250;
    /// More reads than this for one value would take seconds, and come from no camera: where each of sixty
    /// formulas reads the one before it twice and nothing is cached, they are beyond counting.
    static constexpr std::uint32_t kMostReads = 1'000'000;

    /// @param memory  for what Build and AddTriggers make; must outlive the object.
    explicit Graph(std::pmr::memory_resource& memory)
        : m_outStart(&memory), m_out(&memory), m_inStart(&memory), m_in(&memory), m_triggerStart(&memory),
          m_triggers(&memory), m_cachable(&memory), m_mark(&memory) {}

    void Build(std::uint32_t vertices, const std::vector<Edge>& edges);
    /// Dependencies first. Sets Cachable from what nodes say of themselves (see SetUncachable).
    std::vector<Trouble> Sort();
    void SetUncachable(std::uint32_t vertex) { m_cachable[vertex] = 0; }
    bool Cachable(std::uint32_t vertex) const { return m_cachable[vertex]; }

    /// Adds edges along which changes travel although nothing is calculated along them (pInvalidator,
    /// pSelected).
    void AddTriggers(std::vector<std::pair<std::uint32_t, std::uint32_t>> triggers);

    /// Calls `visit(vertex)` once for everything that depends on the roots, directly or not. The roots
    /// themselves are visited only where something reaches them.
    template <class Visit>
    void Dependents(const std::vector<std::uint32_t>& roots, Visit&& visit);
    /// Everything that a facet's content comes from, itself included, down to registers and to other
    /// features.
    std::vector<std::uint32_t> ContentOf(std::uint32_t vertex, const std::vector<Node*>& nodes) const;

    /// Direct neighbours.
    std::vector<std::uint32_t> DependenciesOf(std::uint32_t vertex) const;
    std::vector<std::uint32_t> DependentsOf(std::uint32_t vertex) const;

private:
    struct Half {
        std::uint32_t vertex : 31;
        std::uint32_t content : 1;
    };
    std::pmr::vector<std::uint32_t> m_outStart;
    std::pmr::vector<Half> m_out; ///< from dependent to dependency
    std::pmr::vector<std::uint32_t> m_inStart;
    std::pmr::vector<std::uint32_t> m_in;
    std::pmr::vector<std::uint32_t> m_triggerStart;
    std::pmr::vector<std::uint32_t> m_triggers;
    std::pmr::vector<std::uint8_t> m_cachable;
    std::pmr::vector<std::uint32_t> m_mark;
    std::vector<std::uint32_t> m_queue;
    std::uint32_t m_round = 0;
};

template <class Visit>
void Graph::Dependents(const std::vector<std::uint32_t>& roots, Visit&& visit) {
    if (++m_round == 0) {
        m_mark.assign(m_mark.size(), 0);
        m_round = 1;
    }
    m_queue.assign(roots.begin(), roots.end());
    const auto reach = [&](std::uint32_t vertex) {
        if (m_mark[vertex] != m_round) {
            m_mark[vertex] = m_round;
            m_queue.push_back(vertex);
            visit(vertex);
        }
    };
    for (std::size_t at = 0; at < m_queue.size(); ++at) {
        const auto vertex = m_queue[at];
        for (auto i = m_inStart[vertex]; i != m_inStart[vertex + 1]; ++i) {
            reach(m_in[i]);
        }
        for (auto i = m_triggerStart[vertex]; i != m_triggerStart[vertex + 1]; ++i) {
            reach(m_triggers[i]);
        }
    }
}

} // namespace Norvane::GenApi
