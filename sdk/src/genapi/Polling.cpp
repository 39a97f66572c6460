// The part of NodeMap that reads polled nodes again.
#include "genapi/NodeMap.h"

#include "genapi/RegisterCore.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

namespace Norvane::GenApi {

void NodeMap::Poll(std::int64_t elapsedMs) {
    std::uint64_t since = 0;
    std::vector<Node*> due;
    {
        const Operation operation(*this);
        CheckPorts();
        // Registers that several due nodes share are read once.
        since = NextEpoch();
        for (auto& polled : m_polled) {
            polled.elapsed += elapsedMs;
            if (polled.elapsed >= polled.node->PollingTime()) {
                polled.elapsed = 0;
                due.push_back(polled.node);
            }
        }
    }
    for (Node* node : due) {
        // One operation each: with a slow device, whoever wants the map waits for one register, not for all.
        MakeWay();
        const Operation operation(*this);
        if (!PollNode(*node, since)) {
            break; // a device that does not answer would cost one time-out per node
        }
    }
}

bool NodeMap::Moves(std::uint32_t vertex) {
    if (m_moves.empty()) {
        m_moves.resize(m_nodes.size() * kFacets);
        std::vector<std::uint32_t> sources;
        for (const Polled& polled : m_polled) {
            for (const auto source : m_graph.ContentOf(polled.node->Vertex(Facet::Value), m_nodes)) {
                sources.push_back(source);
                m_moves[source] = true;
            }
        }
        m_graph.Dependents(sources, [this](std::uint32_t dependent) { m_moves[dependent] = true; });
    }
    return m_moves[vertex];
}

bool NodeMap::PollNode(Node& node, std::uint64_t since) {
    try {
        if (node.PollingBlocked() || !IsAvailable(node.Presence())) {
            return true;
        }
        if (node.Polls()) {
            node.PollNow();
            return true;
        }
        for (const auto vertex : m_graph.ContentOf(node.Vertex(Facet::Value), m_nodes)) {
            if (auto* const registers = m_nodes[vertex / kFacets]->Registers()) {
                registers->Poll(since);
            }
        }
    } catch (const Exception& error) {
        Log(LogLevel::Debug, std::string("Polling: ") + error.what());
        return error.GetError() != Error::Io && error.GetError() != Error::Timeout;
    }
    return true;
}

} // namespace Norvane::GenApi
