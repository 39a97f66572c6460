#pragma once

#include "genapi/NumberSource.h"

namespace Norvane::GenApi {

/// Command: writes CommandValue to where Value is; done when something else stands there again. While it
/// runs, polling looks for its end.
class CommandNode final : public ValueNode<ICommand> {
public:
    CommandNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfICommand) {}

    void Execute(bool verify) override;
    bool IsDone(bool verify) override;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    std::int64_t ReadInteger(bool fresh) override;
    void WriteInteger(std::int64_t value) override;
    void PollNow() override;
    bool Polls() const override { return m_running; }

protected:
    EAccessMode KindPresence() override;
    bool KindLocked() override { return m_target.Locked(); }
    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;

private:
    std::int64_t CommandValue();
    void Run();
    bool Done();

    NumberSource<std::int64_t> m_target;
    Node* m_commandNode = nullptr;
    std::int64_t m_command = 1;
    bool m_running = false;
};

} // namespace Norvane::GenApi
