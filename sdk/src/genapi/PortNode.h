#pragma once

#include "genapi/Node.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <memory>
#include <vector>

namespace Norvane::GenApi {

class RegisterTarget;

/// A Port: reaches registers through an IPort, or the bytes of one chunk of an image. Knows the registers
/// behind it, so that a write can tell which of them it touched.
class PortNode final : public Node {
public:
    PortNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index);

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    void SetPort(std::shared_ptr<IPort> port) { m_port = std::move(port); }
    IPort* Behind() const { return m_port.get(); }
    bool IsChunk() const { return m_isChunk; }
    bool IsEvent() const { return m_isEvent; }
    /// Whether numbers are stored in the other byte order than registers say.
    bool SwapsEndianess() const { return m_swap; }

    void Read(std::uint8_t* data, std::int64_t address, std::int64_t length);
    void Write(const std::uint8_t* data, std::int64_t address, std::int64_t length);
    /// Whether the port's mode, or the chunk behind it, has changed since the last call.
    bool ModeChanged();
    void AttachChunk(const std::map<std::uint64_t, ChunkView>& chunksById);

    void AddTarget(RegisterTarget* target);
    /// Calls `visit(target)` for all registers that share bytes with the range.
    template <class Visit>
    void Overlapping(std::int64_t address, std::int64_t length, Visit&& visit);

protected:
    EAccessMode KindPresence() override;

private:
    EAccessMode CurrentMode() const;
    void SortTargets();

    /// Longer registers (files, tables) stand apart: they would widen every search.
    static constexpr std::int64_t kShort = 64;

    std::shared_ptr<IPort> m_port;
    std::vector<std::pair<std::int64_t, RegisterTarget*>> m_short; ///< static ones by address, once sorted
    std::vector<RegisterTarget*> m_others; ///< long ones and those whose address varies
    ChunkView m_chunk;
    Node* m_chunkIdNode = nullptr;
    std::uint64_t m_chunkId = 0;
    EAccessMode m_mode = _UndefinedAccesMode;
    bool m_isChunk = false;
    bool m_isEvent = false;
    bool m_swap = false;
    bool m_sorted = false;
    bool m_chunkChanged = false;
};

} // namespace Norvane::GenApi

#include "genapi/RegisterTarget.h"

#include <algorithm>

namespace Norvane::GenApi {

template <class Visit>
void PortNode::Overlapping(std::int64_t address, std::int64_t length, Visit&& visit) {
    if (!m_sorted) {
        SortTargets();
    }
    const auto overlaps = [&](const RegisterTarget& target) {
        // In unsigned arithmetic, for addresses at the end of the 64-bit range.
        const auto distance =
            static_cast<std::uint64_t>(target.Address()) - static_cast<std::uint64_t>(address);
        const auto back = static_cast<std::uint64_t>(address) - static_cast<std::uint64_t>(target.Address());
        return distance < static_cast<std::uint64_t>(length) ||
               back < static_cast<std::uint64_t>(target.Length());
    };
    const auto from =
        address < std::numeric_limits<std::int64_t>::min() + kShort ? address : address - kShort;
    auto at = std::lower_bound(m_short.begin(), m_short.end(), from,
                               [](const auto& entry, std::int64_t value) { return entry.first < value; });
    for (; at != m_short.end() && (at->first < address || overlaps(*at->second)); ++at) {
        if (overlaps(*at->second)) {
            visit(*at->second);
        }
    }
    for (RegisterTarget* target : m_others) {
        if (target->Resolved() && overlaps(*target)) {
            visit(*target);
        }
    }
}

} // namespace Norvane::GenApi
