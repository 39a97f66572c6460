#include "genapi/CommandNode.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"

namespace Norvane::GenApi {

bool CommandNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::CommandValue:
        m_command = loader.Integer(*this, element);
        return true;
    case Tag::pCommandValue:
        m_commandNode = loader.Find(*this, element);
        return true;
    case Tag::Representation:
        return true;
    default:
        return m_target.LoadElement(*this, tag, element, loader) || Node::LoadElement(tag, element, loader);
    }
}

void CommandNode::FinishLoading(Loader& loader) {
    if (!Broken() && m_target.Missing()) {
        loader.Fault(*this, "it has neither Value nor pValue");
    }
}

void CommandNode::CollectEdges(EdgeSink& edges) {
    Node::CollectEdges(edges);
    m_target.CollectEdges(*this, edges);
    edges.AddRead(*this, Facet::Value, m_commandNode);
    edges.Add(*this, Facet::Presence, m_commandNode, Facet::Presence);
}

EAccessMode CommandNode::KindPresence() {
    if (m_commandNode && !m_commandNode->Readable()) {
        return NA;
    }
    return m_target.Direct() ? m_target.Presence() : WO;
}

std::int64_t CommandNode::CommandValue() {
    return m_commandNode ? m_commandNode->ReadInteger(false) : m_command;
}

void CommandNode::Run() {
    m_running = true;
    const bool keptHere = m_target.Write(CommandValue());
    const auto tellsItsEnd = [this] {
        Node* const behind = m_target.Current();
        return behind && behind->Readable();
    };
    if (keptHere || !tellsItsEnd()) {
        m_running = false; // it counts as done at once
    }
    // Whatever the register holds, the command has had its effect on the nodes that name it as their
    // invalidator.
    m_map.ValueChanged(*this);
}

void CommandNode::Execute(bool verify) {
    const Operation operation(m_map);
    RequireWritable();
    Run();
    if (verify) {
        CheckErrors();
    }
}

bool CommandNode::Done() {
    if (!m_running) {
        return true;
    }
    if (m_target.Read(true) == CommandValue()) {
        return false;
    }
    m_running = false;
    m_map.ValueChanged(*this);
    return true;
}

bool CommandNode::IsDone(bool) {
    const Operation operation(m_map);
    m_map.CheckPorts();
    if (!IsAvailable(Presence())) {
        RequireReadable();
    }
    return Done();
}

void CommandNode::PollNow() {
    Done();
}

std::int64_t CommandNode::ReadInteger(bool fresh) {
    RequireSound();
    return m_target.Read(fresh);
}

void CommandNode::WriteInteger(std::int64_t value) {
    if (value != 0) {
        Run();
    }
}

std::string CommandNode::ToText(bool, bool) {
    return Done() ? "1" : "0";
}

void CommandNode::FromText(const std::string& text, bool) {
    if (text == "1" || text == "true" || text == "Execute") {
        Run();
    } else if (text != "0" && text != "false") {
        Fail(Error::GenApiOutOfRange, "'" + text + "' does not execute a command; 1 does");
    }
}

} // namespace Norvane::GenApi
