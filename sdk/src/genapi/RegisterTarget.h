#pragma once

#include "genapi/ArenaList.h"

#include <array>
#include <cstdint>
#include <limits>
#include <memory_resource>
#include <vector>

namespace Norvane::GenApi {

class Node;
class PortNode;

/// Bytes; a longer register is a fault of the description.
constexpr std::int64_t kLongestRegister = 256 << 20;

/// How an address and a length come about: a constant, plus values of nodes, plus indices times offsets.
struct AddressPlan {
    struct Term {
        Node* node = nullptr;
        Node* offsetNode = nullptr;
        std::int64_t offset = 1;
        bool timesLength = false; ///< an index without an offset steps by the register's length

        bool operator==(const Term&) const = default;
    };
    PortNode* port = nullptr;
    std::int64_t constant = 0;
    ArenaList<Term> terms;
    std::int64_t length = 0;
    Node* lengthNode = nullptr;
    bool hasAddress = false;
    bool hasLength = false;

    bool operator==(const AddressPlan&) const = default;
};
std::uint64_t HashOf(const AddressPlan& plan);

/// The bytes at one address of one port, shared by all register nodes that are described by the same plan.
/// Owned by the node map, guarded by its lock.
class RegisterTarget {
public:
    /// @param buffers  for the bytes; must outlive the object.
    RegisterTarget(const AddressPlan& plan, std::pmr::memory_resource& buffers);
    RegisterTarget(const RegisterTarget&) = delete;
    RegisterTarget& operator=(const RegisterTarget&) = delete;

    const AddressPlan& Plan() const { return m_plan; }
    PortNode& Port() const { return *m_plan.port; }
    bool IsStatic() const { return m_plan.terms.empty() && !m_plan.lengthNode; }
    bool Resolved() const { return m_resolved; }
    std::int64_t Address() const { return m_address; }
    std::int64_t Length() const { return m_length; }

    /// Calculates address and length. A new address makes the bytes unknown. `fresh` reads the nodes of the
    /// address past their caches. @throws Exception when one of them cannot be read or the length is absurd,
    /// in the name of `by`.
    void Resolve(const Node& by, bool fresh);
    void Unresolve() { m_resolved = m_resolved && IsStatic(); }

    std::uint8_t* Bytes() { return m_length <= kFew ? m_few.data() : m_many.data(); }
    /// The epoch at which the bytes were last known to be the port's; 0 when they are not.
    std::uint64_t Epoch() const { return m_epoch; }
    void SetEpoch(std::uint64_t epoch) {
        m_epoch = epoch;
        m_seen = m_seen || epoch;
    }
    void Seen() { m_seen = true; }
    /// Whether the bytes were ever the port's at this address.
    bool WasSeen() const { return m_seen; }
    void ForgetBytes() { m_epoch = 0; }

    ArenaList<Node*>& Users() { return m_users; }
    bool m_anyUncachable = false; ///< a user that is not cached, or not after writing

private:
    const AddressPlan m_plan;
    std::int64_t m_address = 0;
    std::int64_t m_length = 0;
    std::uint64_t m_epoch = 0;
    /// Most registers are so short that their bytes can stand here.
    static constexpr std::int64_t kFew = 16;

    std::array<std::uint8_t, kFew> m_few{};
    std::pmr::vector<std::uint8_t> m_many;
    ArenaList<Node*> m_users;
    bool m_resolved = false;
    bool m_seen = false;
};

} // namespace Norvane::GenApi
