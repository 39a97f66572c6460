#include "genapi/Graph.h"

#include <algorithm>
#include <numeric>

namespace Norvane::GenApi {

namespace {

/// Turns counts per vertex into the start of each vertex's range; one more entry marks the end.
void ToStarts(std::pmr::vector<std::uint32_t>& counts) {
    std::exclusive_scan(counts.begin(), counts.end(), counts.begin(), 0u);
}

bool IsValue(std::uint32_t vertex) {
    return static_cast<Facet>(vertex % kFacets) == Facet::Value;
}

} // namespace

void Graph::Build(std::uint32_t vertices, const std::vector<Edge>& edges) {
    m_outStart.assign(vertices + 1, 0);
    m_inStart.assign(vertices + 1, 0);
    m_cachable.assign(vertices, 1);
    m_mark.assign(vertices, 0);
    for (const auto& edge : edges) {
        ++m_outStart[edge.from];
        ++m_inStart[edge.to];
    }
    ToStarts(m_outStart);
    ToStarts(m_inStart);
    m_out.resize(edges.size());
    m_in.resize(edges.size());
    std::vector<std::uint32_t> outNext(m_outStart.begin(), m_outStart.end());
    std::vector<std::uint32_t> inNext(m_inStart.begin(), m_inStart.end());
    for (const auto& edge : edges) {
        m_out[outNext[edge.from]++] = {edge.to & 0x7FFFFFFFu, edge.content};
        m_in[inNext[edge.to]++] = edge.from;
    }
}

/// Tarjan's strongly connected components with a stack of its own: chains may be longer than the program's
/// stack.
std::vector<Graph::Trouble> Graph::Sort() {
    const auto count = static_cast<std::uint32_t>(m_cachable.size());
    constexpr std::uint32_t kNew = 0;
    struct Frame {
        std::uint32_t vertex;
        std::uint32_t next;
    };
    std::vector<std::uint32_t> number(count, kNew);
    std::vector<std::uint32_t> low(count, 0);
    std::vector<std::uint16_t> depth(count, 0);
    std::vector<std::uint32_t> reads(count, 1);
    std::vector<std::uint8_t> open(count, 0);
    std::vector<std::uint32_t> component;
    std::vector<Frame> frames;
    std::vector<Trouble> troubles;
    std::uint32_t next = 0;

    const auto enter = [&](std::uint32_t vertex) {
        number[vertex] = low[vertex] = ++next;
        open[vertex] = 1;
        component.push_back(vertex);
        frames.push_back({vertex, m_outStart[vertex]});
    };
    const auto close = [&](std::uint32_t vertex) {
        bool selfLoop = false;
        std::uint32_t deepest = 0;
        std::uint64_t needed = 1;
        for (auto i = m_outStart[vertex]; i != m_outStart[vertex + 1]; ++i) {
            const std::uint32_t to = m_out[i].vertex;
            selfLoop = selfLoop || to == vertex;
            deepest = std::max<std::uint32_t>(deepest, depth[to] + 1u);
            // A fresh value asks for fresh values below it, whatever is cached.
            needed += !m_cachable[to] || (IsValue(vertex) && IsValue(to)) ? reads[to] : 1;
            m_cachable[vertex] = m_cachable[vertex] && m_cachable[to];
        }
        if (component.back() == vertex && !selfLoop) {
            component.pop_back();
            open[vertex] = 0;
            if (deepest > kLongestChain || needed > kMostReads) {
                troubles.push_back(
                    {{vertex},
                     deepest > kLongestChain ? Trouble::Kind::LongChain : Trouble::Kind::ManyReads});
                deepest = 0; // a broken node reads nothing
                needed = 1;
            }
            depth[vertex] = static_cast<std::uint16_t>(deepest);
            reads[vertex] = static_cast<std::uint32_t>(needed);
            return;
        }
        Trouble cycle{{}, Trouble::Kind::Cycle};
        std::uint32_t member = 0;
        do {
            member = component.back();
            component.pop_back();
            open[member] = 0;
            m_cachable[member] = 1;
            cycle.vertices.push_back(member);
        } while (member != vertex);
        std::reverse(cycle.vertices.begin(), cycle.vertices.end());
        troubles.push_back(std::move(cycle));
    };

    for (std::uint32_t start = 0; start < count; ++start) {
        if (number[start] != kNew) {
            continue;
        }
        enter(start);
        while (!frames.empty()) {
            auto& frame = frames.back();
            const auto vertex = frame.vertex;
            if (frame.next != m_outStart[vertex + 1]) {
                const std::uint32_t to = m_out[frame.next++].vertex;
                if (number[to] == kNew) {
                    enter(to);
                } else if (open[to]) {
                    low[vertex] = std::min(low[vertex], number[to]);
                }
                continue;
            }
            if (low[vertex] == number[vertex]) {
                close(vertex);
            }
            frames.pop_back();
            if (!frames.empty()) {
                auto& parent = low[frames.back().vertex];
                parent = std::min(parent, low[vertex]);
            }
        }
    }
    return troubles;
}

void Graph::AddTriggers(std::vector<std::pair<std::uint32_t, std::uint32_t>> triggers) {
    std::sort(triggers.begin(), triggers.end());
    triggers.erase(std::unique(triggers.begin(), triggers.end()), triggers.end());
    m_triggerStart.assign(m_cachable.size() + 1, 0);
    m_triggers.clear();
    m_triggers.reserve(triggers.size());
    for (const auto& [from, to] : triggers) {
        ++m_triggerStart[from];
        m_triggers.push_back(to);
    }
    ToStarts(m_triggerStart);
}

std::vector<std::uint32_t> Graph::ContentOf(std::uint32_t vertex, const std::vector<Node*>& nodes) const {
    std::vector<std::uint32_t> found{vertex};
    for (std::size_t at = 0; at < found.size(); ++at) {
        for (auto i = m_outStart[found[at]]; i != m_outStart[found[at] + 1]; ++i) {
            const std::uint32_t to = m_out[i].vertex;
            if (m_out[i].content && !nodes[to / kFacets]->IsFeature() &&
                std::find(found.begin(), found.end(), to) == found.end()) {
                found.push_back(to);
            }
        }
    }
    return found;
}

std::vector<std::uint32_t> Graph::DependenciesOf(std::uint32_t vertex) const {
    std::vector<std::uint32_t> found;
    for (auto i = m_outStart[vertex]; i != m_outStart[vertex + 1]; ++i) {
        found.push_back(m_out[i].vertex);
    }
    return found;
}

std::vector<std::uint32_t> Graph::DependentsOf(std::uint32_t vertex) const {
    return {m_in.begin() + m_inStart[vertex], m_in.begin() + m_inStart[vertex + 1]};
}

} // namespace Norvane::GenApi
