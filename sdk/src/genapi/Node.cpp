#include "genapi/Node.h"

#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <algorithm>

namespace Norvane::GenApi {

EAccessMode Combine(EAccessMode left, EAccessMode right) noexcept {
    if (left == NI || right == NI) {
        return NI;
    }
    if (left == NA || right == NA) {
        return NA;
    }
    const bool read = IsReadable(left) && IsReadable(right);
    const bool write = IsWritable(left) && IsWritable(right);
    return read ? (write ? RW : RO) : (write ? WO : NA);
}

EAccessMode WithoutWriting(EAccessMode mode) noexcept {
    return mode == RW ? RO : mode == WO ? NA : mode;
}

const char* NameOf(EAccessMode mode) noexcept {
    switch (mode) {
    case NI:
        return "NI";
    case NA:
        return "NA";
    case WO:
        return "WO";
    case RO:
        return "RO";
    default:
        return "RW";
    }
}

Node::Node(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index, EInterfaceType type)
    : m_map(map), m_xml(xml), m_name(name), m_index(index), m_type(type) {
    m_standard = Trim(xml.attribute("NameSpace").value()) == "Standard";
}

void Node::Load(std::span<const XmlElement> elements, Loader& loader) {
    m_firstLink = loader.LinkCount();
    for (const auto& element : elements) {
        loader.SetCurrent(&element);
        if (!LoadElement(element.tag, element.xml, loader)) {
            loader.Complain(Name() + ": the element '" + element.xml.name() + "' is not known and ignored");
        }
    }
    loader.SetCurrent(nullptr); // the elements may go
    m_links = static_cast<std::uint16_t>(std::min<std::uint32_t>(loader.LinkCount() - m_firstLink, 0xFFFF));
}

bool Node::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    const auto link = [&](LinkKind kind) {
        if (Node* target = loader.FindOptional(*this, element)) {
            loader.AddLink(*this, {target, kind});
        }
    };
    switch (tag) {
    case Tag::pIsImplemented:
        m_isImplemented = loader.Find(*this, element);
        return true;
    case Tag::pIsAvailable:
        m_isAvailable = loader.Find(*this, element);
        return true;
    case Tag::pIsLocked:
        m_isLocked = loader.Find(*this, element);
        return true;
    case Tag::pBlockPolling:
        link(LinkKind::BlockPolling);
        return true;
    case Tag::pInvalidator:
        link(LinkKind::Invalidator);
        return true;
    case Tag::pSelected:
        link(LinkKind::Selected);
        return true;
    case Tag::pError:
        link(LinkKind::Error);
        return true;
    case Tag::pAlias:
        link(LinkKind::Alias);
        return true;
    case Tag::pCastAlias:
        link(LinkKind::CastAlias);
        return true;
    case Tag::ImposedAccessMode:
        m_imposed =
            static_cast<std::uint8_t>(loader.Word(*this, element, {"NI", "NA", "WO", "RO", "RW"}, RW));
        return true;
    case Tag::Visibility:
        m_visibility = static_cast<std::uint8_t>(
            loader.Word(*this, element, {"Beginner", "Expert", "Guru", "Invisible"}, Beginner));
        return true;
    case Tag::ImposedVisibility:
        m_imposedVisibility = static_cast<std::uint8_t>(
            loader.Word(*this, element, {"Beginner", "Expert", "Guru", "Invisible"}, Beginner));
        return true;
    case Tag::PollingTime: {
        const auto time = loader.Integer(*this, element);
        m_pollingTime = static_cast<std::int32_t>(std::clamp<std::int64_t>(time, -1, 0x7FFFFFFF));
        return true;
    }
    case Tag::DisplayName:
        m_displayName = element.child_value();
        return true;
    // Read where they are asked for.
    case Tag::Extension:
    case Tag::ToolTip:
    case Tag::Description:
    case Tag::DocuURL:
    case Tag::IsDeprecated:
    case Tag::EventID:
    case Tag::Streamable:
    case Tag::Unit:
    case Tag::pTerminal:
    case Tag::pDependent:
        return true;
    default:
        return false;
    }
}

void Node::CollectEdges(EdgeSink& edges) {
    for (Node* condition : {m_isImplemented, m_isAvailable}) {
        edges.AddRead(*this, Facet::Presence, condition);
        edges.Add(*this, Facet::Presence, condition, Facet::Presence);
    }
    edges.AddRead(*this, Facet::Lock, m_isLocked);
    edges.Add(*this, Facet::Lock, m_isLocked, Facet::Presence);
}

std::pmr::memory_resource& Node::Buffers() const {
    return m_map.Buffers();
}

std::uint64_t Node::EpochNow() const {
    return m_map.Epoch();
}

bool Node::Auditing() const {
    return m_map.Auditing();
}

void Node::CountAudit(Facet facet, bool same) const {
    auto& audit = *m_map.Options().cacheAudit;
    ++audit.reads;
    if (!same && !m_map.Moves(Vertex(facet))) {
        ++audit.differences;
        Log(LogLevel::Warning, Name() + ": the cached state is not what the port holds now");
    }
}

void Node::Keep(Cached what, Facet facet, std::uint64_t epoch) {
    if ((m_cachable & (1u << static_cast<unsigned>(facet))) && epoch == m_map.Epoch()) {
        m_cached = m_cached | what;
    }
}

void Node::Forget(Facet facet, bool) {
    constexpr std::uint32_t kFlags[] = {kPresence, kLock, kValue, kMin | kMax | kInc};
    m_cached = m_cached & ~kFlags[static_cast<unsigned>(facet)];
}

bool Node::ValueAtHand() const {
    const std::uint32_t cached = m_cached;
    return (cached & (kPresence | kValue)) == (kPresence | kValue) && IsReadable(PresenceIn(cached)) &&
           m_map.Undisturbed();
}

EAccessMode Node::Access() {
    const auto mode = Presence();
    return IsWritable(mode) && Locked() ? WithoutWriting(mode) : mode;
}

EAccessMode Node::Presence() {
    if (Has(kPresence)) {
        AuditCache(Facet::Presence, [&] { return ComputePresence() == PresenceIn(m_cached); });
        return PresenceIn(m_cached);
    }
    const auto epoch = EpochNow();
    const auto mode = ComputePresence();
    m_cached = (m_cached & ~kPresenceMask) | static_cast<std::uint32_t>(mode) << kPresenceShift;
    Keep(kPresence, Facet::Presence, epoch);
    return mode;
}

bool Node::Locked() {
    if (Has(kLock)) {
        AuditCache(Facet::Lock, [&] { return ComputeLocked() == ((m_cached & kLockedBit) != 0); });
        return m_cached & kLockedBit;
    }
    const auto epoch = EpochNow();
    const bool locked = ComputeLocked();
    m_cached = locked ? m_cached | kLockedBit : m_cached & ~kLockedBit;
    Keep(kLock, Facet::Lock, epoch);
    return locked;
}

std::optional<bool> Node::Test(Node& condition) {
    if (!condition.Readable()) {
        return std::nullopt;
    }
    try {
        return condition.ReadInteger(false) != 0;
    } catch (const Exception& error) {
        m_map.NextEpoch(); // the failure may pass: nothing that rests on it is kept
        Log(LogLevel::Debug, Name() + ": access cannot be told: " + error.what());
        return std::nullopt;
    }
}

EAccessMode Node::ComputePresence() {
    if (m_broken) {
        return NA;
    }
    if (m_isImplemented) {
        const auto implemented = Test(*m_isImplemented);
        if (!implemented) {
            return NA;
        }
        if (!*implemented) {
            return NI;
        }
    }
    if (m_isAvailable && !Test(*m_isAvailable).value_or(false)) {
        // A part that is not implemented makes the whole so, available or not.
        return KindPresence() == NI ? NI : NA;
    }
    return Combine(static_cast<EAccessMode>(m_imposed), KindPresence());
}

bool Node::ComputeLocked() {
    return (m_isLocked && Test(*m_isLocked).value_or(true)) || KindLocked();
}

void Node::Fail(Error code, const std::string& what) const {
    const char* name = code == Error::GenApiAccess       ? "AccessException"
                       : code == Error::GenApiOutOfRange ? "OutOfRangeException"
                                                         : "LogicalErrorException";
    throw Exception(code, Name() + ": " + what, name);
}

void Node::FailBroken() const {
    Fail(Error::GenApiAccess, "its description is broken (" + m_map.FaultOf(*this) + ")");
}

std::string Node::WhyNoAccess() {
    if (m_broken) {
        return "its description is broken (" + m_map.FaultOf(*this) + ")";
    }
    const auto because = [](const Node* condition, const char* what) {
        return std::string(what) + " by '" + condition->Name() + "'";
    };
    if (m_isImplemented && !Test(*m_isImplemented).value_or(false)) {
        return because(m_isImplemented, "it is switched off");
    }
    if (m_isAvailable && !Test(*m_isAvailable).value_or(false)) {
        return because(m_isAvailable, "it is made unavailable");
    }
    if (m_isLocked && Test(*m_isLocked).value_or(true)) {
        return because(m_isLocked, "it is locked");
    }
    return std::string("its access mode is ") + NameOf(Access());
}

void Node::RequireReadable() {
    m_map.CheckPorts();
    if (!IsReadable(Presence())) {
        Fail(Error::GenApiAccess, "it cannot be read: " + WhyNoAccess());
    }
}

void Node::RequireWritable() {
    m_map.CheckPorts();
    if (!IsWritable(Access())) {
        Fail(Error::GenApiAccess, "it cannot be written: " + WhyNoAccess());
    }
}

bool Node::PollingBlocked() {
    Node* const block = FindLink(LinkKind::BlockPolling);
    return block && Test(*block).value_or(true);
}

void Node::CheckErrors() {
    for (std::uint32_t i = m_firstLink; i < m_firstLink + m_links; ++i) {
        const auto& link = m_map.Links()[i];
        if (link.kind != LinkKind::Error || !link.target->Readable()) {
            continue;
        }
        if (link.target->ReadInteger(true) != 0) {
            Fail(Error::GenApiOutOfRange, "the device refuses the value: " + link.target->Name() + " is " +
                                              link.target->ReadText(false));
        }
    }
}

namespace {

[[noreturn]] void NoSuchValue(const Node& node, const char* what) {
    node.Fail(Error::GenApiLogical, std::string("its kind has no value that ") + what);
}

} // namespace

std::int64_t Node::ReadInteger(bool) {
    NoSuchValue(*this, "another node can read as a number");
}
double Node::ReadFloat(bool fresh) {
    return static_cast<double>(ReadInteger(fresh));
}
std::string Node::ReadText(bool) {
    NoSuchValue(*this, "another node can read as text");
}
void Node::WriteInteger(std::int64_t) {
    NoSuchValue(*this, "another node can write as a number");
}
void Node::WriteFloat(double) {
    NoSuchValue(*this, "another node can write as a number");
}
void Node::WriteText(const std::string&) {
    NoSuchValue(*this, "another node can write as text");
}
std::int64_t Node::MinInteger() {
    NoSuchValue(*this, "has a minimum");
}
std::int64_t Node::MaxInteger() {
    NoSuchValue(*this, "has a maximum");
}
std::int64_t Node::IncInteger() {
    return 1;
}
double Node::MinFloat() {
    return static_cast<double>(MinInteger());
}
double Node::MaxFloat() {
    return static_cast<double>(MaxInteger());
}
std::optional<double> Node::IncFloat() {
    return static_cast<double>(IncInteger());
}

} // namespace Norvane::GenApi
