#pragma once

#include "genapi/Published.h"
#include "genapi/Tags.h"
#include "norvane/Exception.h"
#include "norvane/genapi/INode.h"

#include <pugixml.hpp>

#include <cstdint>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Norvane::GenApi {

class EdgeSink;
class Loader;
class Node;
class NodeMap;
class RegisterCore;
struct XmlElement;

/// What of a node another node can depend on. Dependencies are kept per facet: a width whose maximum is
/// calculated from an offset whose maximum is calculated from the width is no cycle.
enum class Facet : std::uint8_t {
    Presence, ///< access mode without locks
    Lock,     ///< whether writing is locked
    Value,
    Range, ///< minimum, maximum, increment
};
constexpr std::uint32_t kFacets = 4;

/// A node's other references.
enum class LinkKind : std::uint8_t { Invalidator, Selected, Error, Alias, CastAlias, BlockPolling };
struct Link {
    Node* target;
    LinkKind kind;
};

/// The strictest of two modes (GenApi: access mode algebra).
EAccessMode Combine(EAccessMode left, EAccessMode right) noexcept;
EAccessMode WithoutWriting(EAccessMode mode) noexcept;
const char* NameOf(EAccessMode mode) noexcept;

/// Base of all nodes. Owned by the node map's arena and alive as long as the map, which ends without
/// destroying the nodes: their lists are in the arena too, their buffers in Buffers(). The functions of INode
/// and of the value interfaces take the map's lock and check access; the functions below the line are for
/// other nodes, are called with the lock held and check nothing.
class Node : public INode, public ISelector {
public:
    Node(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index, EInterfaceType type);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    EAccessMode GetAccessMode() const override;
    gcstring GetName(bool fullQualified) const override;
    ENameSpace GetNameSpace() const override;
    EVisibility GetVisibility() const override;
    void InvalidateNode() override;
    bool IsCachable() const override;
    ECachingMode GetCachingMode() const override;
    std::int64_t GetPollingTime() const override;
    gcstring GetToolTip() const override;
    gcstring GetDescription() const override;
    gcstring GetDisplayName() const override;
    gcstring GetDeviceName() const override;
    gcstring GetEventID() const override;
    bool IsStreamable() const override;
    bool IsDeprecated() const override;
    bool IsFeature() const override { return m_feature; }
    gcstring GetDocuURL() const override;
    INode* GetAlias() const override;
    INode* GetCastAlias() const override;
    void GetChildren(node_vector& children, ELinkType linkType) const override;
    EInterfaceType GetPrincipalInterfaceType() const override { return m_type; }
    INodeMap* GetNodeMap() const override;
    bool GetProperty(const gcstring& name, gcstring& value, gcstring& attribute) const override;
    void ImposeAccessMode(EAccessMode mode) override;
    void ImposeVisibility(EVisibility visibility) override;

    bool IsSelector() const override;
    void GetSelectedFeatures(node_vector& features) const override;
    void GetSelectingFeatures(node_vector& features) const override;

    // ---- with the lock held

    NodeMap& Map() const { return m_map; }
    std::string Name() const { return std::string(m_name); }
    std::string_view NameView() const { return m_name; }
    std::uint32_t Index() const { return m_index; }
    std::uint32_t Vertex(Facet facet) const { return m_index * kFacets + static_cast<std::uint32_t>(facet); }

    EAccessMode Access();
    EAccessMode Presence();
    bool Locked();

    /// The value as another node sees it. `fresh` reads the port whatever is cached.
    /// @throws Exception (GenApiLogical) for a node whose kind has no such value.
    virtual std::int64_t ReadInteger(bool fresh);
    virtual double ReadFloat(bool fresh);
    virtual std::string ReadText(bool fresh);
    virtual void WriteInteger(std::int64_t value);
    virtual void WriteFloat(double value);
    virtual void WriteText(const std::string& value);
    /// Before a verified write: whether what lies behind the value can hold it, whatever range is described.
    /// @throws Exception (GenApiOutOfRange).
    virtual void RequireRoom(std::int64_t) {}
    virtual std::int64_t MinInteger();
    virtual std::int64_t MaxInteger();
    virtual std::int64_t IncInteger();
    virtual double MinFloat();
    virtual double MaxFloat();
    virtual std::optional<double> IncFloat();
    virtual bool IsFloat() const { return false; }
    virtual ERepresentation Representation() { return PureNumber; }
    virtual std::string Unit() { return std::string(Child("Unit")); }
    /// The registers behind the value, for polling.
    virtual RegisterCore* Registers() { return nullptr; }

    /// Whether another node may read this one now; not checked for locks.
    bool Readable() { return IsReadable(Presence()); }

    // Loading. LoadElement handles one child element and says whether the kind knows it; FinishLoading checks
    // what is missing, CollectEdges names what each facet depends on.
    void Load(std::span<const XmlElement> elements, Loader& loader);
    virtual bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader);
    virtual void FinishLoading(Loader&) {}
    virtual void CollectEdges(EdgeSink& edges);

    void MarkFeature() { m_feature = true; }
    void MarkBroken() { m_broken = true; }
    bool Broken() const { return m_broken; }
    /// Forgets what is cached of a facet. `keepBytes`: the register's bytes are known to be right.
    virtual void Forget(Facet facet, bool keepBytes);
    void SetUncachable(Facet facet) {
        m_cachable = static_cast<std::uint8_t>(m_cachable & ~(1u << static_cast<unsigned>(facet)));
    }
    virtual ECachingMode OwnCachingMode() const { return WriteThrough; }
    std::int64_t PollingTime() const { return m_pollingTime; }
    /// A kind that polls in its own way, and whether it wants to now; others have their registers read again.
    virtual bool Polls() const { return false; }
    virtual void PollNow() {}
    bool PollingBlocked();

    /// Checks access before a read or write through the public interface.
    void RequireReadable();
    void RequireWritable();
    /// After a verified write: the error enumerations (pError) that the device may have set.
    void CheckErrors();
    [[noreturn]] void Fail(Error code, const std::string& what) const;
    /// The element's text without blanks around it; empty when there is none.
    std::string_view Child(const char* element) const;

    /// For every read that is not answered from the cache: a broken node lacks parts.
    void RequireSound() const {
        if (m_broken) {
            FailBroken();
        }
    }

    // Used by the callback list of the map.
    bool m_hasListeners = false;
    bool m_changePending = false;

protected:
    enum Cached : std::uint32_t { kPresence = 1, kLock = 2, kValue = 4, kMin = 8, kMax = 16, kInc = 32 };
    bool Has(Cached what) const { return m_cached & what; }
    /// Whether the node can be read and its value is cached: then the value may be taken without the lock.
    /// An operation that is changing it meanwhile has not ended, so either order of the two is right.
    bool ValueAtHand() const;
    /// Marks something as cached, unless the node map was invalidated since `epoch`, while it was being read.
    void Keep(Cached what, Facet facet, std::uint64_t epoch);
    std::uint64_t EpochNow() const;
    std::pmr::memory_resource& Buffers() const;
    /// In a map that is audited: asks whether what is cached of a facet is what reading it now would give.
    template <class IsSame>
    void AuditCache(Facet facet, IsSame&& isSame) const {
        if (Auditing()) {
            try {
                CountAudit(facet, isSame());
            } catch (const Exception&) {
                // The camera is closed or does not answer; what is cached stays what it was then.
            }
        }
    }

    /// What the kind adds to implemented, available and imposed.
    virtual EAccessMode KindPresence() { return RO; }
    virtual bool KindLocked() { return false; }

    /// Whether the access mode hangs on other nodes.
    bool HasConditions() const { return m_isImplemented || m_isAvailable || m_isLocked; }

    Node* FindLink(LinkKind kind) const;
    ERepresentation OwnRepresentation(ERepresentation otherwise) const {
        return m_representation == _UndefinedRepresentation ? otherwise
                                                            : static_cast<ERepresentation>(m_representation);
    }
    void SetRepresentation(ERepresentation representation) {
        m_representation = static_cast<std::uint8_t>(representation);
    }
    /// The element that a public text comes from: a StructEntry falls back to its StructReg.
    pugi::xml_node Element(const char* name) const;
    pugi::xml_node Xml() const { return m_xml; }

    NodeMap& m_map;

private:
    friend class Loader;
    bool Auditing() const;
    void CountAudit(Facet facet, bool same) const;
    [[noreturn]] void FailBroken() const;
    EAccessMode ComputePresence();
    bool ComputeLocked();
    /// Reads a pIsImplemented, pIsAvailable or pIsLocked; nothing when it cannot be read.
    std::optional<bool> Test(Node& condition);
    std::string WhyNoAccess();

    // The cached presence and lock stand in one word with what is cached, so that whoever looks without the
    // lock sees them together.
    static constexpr std::uint32_t kPresenceShift = 8;
    static constexpr std::uint32_t kPresenceMask = 7u << kPresenceShift;
    static constexpr std::uint32_t kLockedBit = 1u << 11;
    static EAccessMode PresenceIn(std::uint32_t cached) {
        return static_cast<EAccessMode>((cached & kPresenceMask) >> kPresenceShift);
    }

    pugi::xml_node m_xml;
    std::string_view m_name;
    const char* m_displayName = ""; ///< as the description has it; lists ask for it again and again
    Node* m_isImplemented = nullptr;
    Node* m_isAvailable = nullptr;
    Node* m_isLocked = nullptr;
    std::uint32_t m_index;
    std::uint32_t m_firstLink = 0;
    Published<std::uint32_t> m_cached;
    std::uint16_t m_links = 0;
    std::uint8_t m_cachable = 0xF; ///< a bit for each facet
    EInterfaceType m_type;
    std::int32_t m_pollingTime = -1;
    std::uint8_t m_imposed = RW;
    std::uint8_t m_visibility = Beginner;
    std::uint8_t m_imposedVisibility = Beginner;
    std::uint8_t m_representation = _UndefinedRepresentation;
    bool m_feature = false;
    bool m_broken = false;
    bool m_standard = false;
};

/// The IValue part, which is the same for every kind: the text conversions belong to the kind.
template <class Interface>
class ValueNode : public Node, public Interface {
public:
    using Node::Node;
    INode* GetNode() override { return this; }
    gcstring ToString(bool verify, bool ignoreCache) override;
    void FromString(const gcstring& text, bool verify) override;
    bool IsValueCacheValid() const override;

protected:
    /// With the lock held and access checked.
    virtual std::string ToText(bool verify, bool ignoreCache) = 0;
    virtual void FromText(const std::string& text, bool verify) = 0;
    virtual bool ValueCached() const { return Has(kValue); }
};

} // namespace Norvane::GenApi
