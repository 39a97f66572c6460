#include "genapi/RegisterCore.h"

#include "genapi/Graph.h"
#include "genapi/Loader.h"
#include "genapi/PortNode.h"
#include "genapi/Text.h"
#include "norvane/Exception.h"

#include <cstring>

namespace Norvane::GenApi {

bool RegisterCore::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    auto& plan = loader.Plan();
    switch (tag) {
    case Tag::Address:
        plan.constant =
            static_cast<std::int64_t>(static_cast<std::uint64_t>(plan.constant) +
                                      static_cast<std::uint64_t>(loader.Integer(m_owner, element)));
        plan.hasAddress = true;
        return true;
    case Tag::pAddress:
        if (Node* node = loader.Find(m_owner, element)) {
            plan.terms.Add(loader.Arena(), {node});
        }
        plan.hasAddress = true;
        return true;
    case Tag::IntSwissKnife:
        if (Node* node = loader.NodeFor(element)) {
            plan.terms.Add(loader.Arena(), {node});
        }
        plan.hasAddress = true;
        return true;
    case Tag::pIndex: {
        AddressPlan::Term term{loader.Find(m_owner, element)};
        if (const auto pOffset = element.attribute("pOffset")) {
            term.offsetNode = loader.FindName(m_owner, "pOffset", pOffset.value());
        } else if (const auto offset = element.attribute("Offset")) {
            term.offset = loader.IntegerText(m_owner, "Offset", offset.value());
        } else {
            term.timesLength = true;
        }
        if (term.node) {
            plan.terms.Add(loader.Arena(), term);
        }
        plan.hasAddress = true;
        return true;
    }
    case Tag::Length:
        plan.length = loader.Integer(m_owner, element);
        plan.hasLength = true;
        return true;
    case Tag::pLength:
        plan.lengthNode = loader.Find(m_owner, element);
        plan.hasLength = true;
        return true;
    case Tag::AccessMode:
        m_mode = static_cast<EAccessMode>(loader.Word(m_owner, element, {"NI", "NA", "WO", "RO", "RW"}, RO));
        return true;
    case Tag::pPort:
        if (Node* node = loader.Find(m_owner, element)) {
            if (node->GetPrincipalInterfaceType() == intfIPort) {
                plan.port = static_cast<PortNode*>(node);
            } else {
                plan.port = nullptr;
                loader.Fault(m_owner, "its pPort '" + node->Name() + "' is no Port");
            }
        }
        return true;
    case Tag::Cachable:
        m_caching = static_cast<ECachingMode>(
            loader.Word(m_owner, element, {"NoCache", "WriteThrough", "WriteAround"}, WriteThrough));
        return true;
    default:
        return false;
    }
}

void RegisterCore::FinishLoading(Loader& loader) {
    auto& plan = loader.Plan();
    if (m_owner.Broken()) {
        return;
    }
    if (!plan.hasAddress) {
        loader.Fault(m_owner, "it has no Address");
        return;
    }
    if (!plan.lengthNode && (plan.length < 1 || plan.length > kLongestRegister)) {
        loader.Fault(m_owner, plan.hasLength ? "its Length " + std::to_string(plan.length) + " is impossible"
                                             : std::string("it has no Length"));
        return;
    }
    if (!plan.port) {
        plan.port = loader.MainPort();
    }
    m_target = loader.Target(plan);
    m_target->Users().Add(loader.Arena(), &m_owner);
    m_target->m_anyUncachable = m_target->m_anyUncachable || m_caching != WriteThrough;
}

void RegisterCore::CollectEdges(EdgeSink& edges) const {
    if (!m_target) {
        return;
    }
    const auto& plan = m_target->Plan();
    edges.Add(m_owner, Facet::Presence, plan.port, Facet::Presence);
    edges.Add(m_owner, Facet::Value, plan.port, Facet::Value);
    const auto reads = [&](Node* node) {
        edges.AddRead(m_owner, Facet::Value, node);
        edges.Add(m_owner, Facet::Presence, node, Facet::Presence);
    };
    reads(plan.lengthNode);
    for (const auto& term : plan.terms) {
        reads(term.node);
        reads(term.offsetNode);
    }
}

EAccessMode RegisterCore::Presence() const {
    if (!m_target) {
        return NA;
    }
    const auto& plan = m_target->Plan();
    const auto readable = [](Node* node) { return !node || node->Readable(); };
    if (!readable(plan.lengthNode)) {
        return NA;
    }
    for (const auto& term : plan.terms) {
        if (!readable(term.node) || !readable(term.offsetNode)) {
            return NA;
        }
    }
    return Combine(m_mode, plan.port->Presence());
}

bool RegisterCore::Current() const {
    return m_target->Resolved() && m_target->Epoch() != 0 && m_target->Epoch() >= m_required &&
           m_owner.IsCachable();
}

void RegisterCore::Rethrow(const char* doing) const {
    const auto where = std::string(doing) + " " + std::to_string(m_target->Length()) + " bytes at " +
                       FormatHex(static_cast<std::uint64_t>(m_target->Address())) + " failed: ";
    try {
        throw;
    } catch (const Exception& error) {
        throw Exception(error.GetError(), m_owner.Name() + ": " + where + error.what(), error.GetName());
    } catch (const std::exception& error) {
        throw Exception(Error::Io, m_owner.Name() + ": " + where + error.what());
    }
}

void RegisterCore::ReadPort(bool report) {
    auto& target = *m_target;
    const auto length = static_cast<std::size_t>(target.Length());
    std::uint8_t few[16];
    std::vector<std::uint8_t> many;
    std::uint8_t* bytes = few;
    if (length > sizeof few) {
        many.resize(length);
        bytes = many.data();
    }
    try {
        target.Port().Read(bytes, target.Address(), target.Length());
    } catch (...) {
        target.ForgetBytes();
        m_owner.Map().NextEpoch();
        Rethrow("reading");
    }
    const bool changed = target.WasSeen() && std::memcmp(bytes, target.Bytes(), length) != 0;
    std::memcpy(target.Bytes(), bytes, length);
    target.SetEpoch(m_owner.Map().Epoch());
    if (changed && report) {
        m_owner.Map().ValuesChanged(target.Users());
    }
}

const std::uint8_t* RegisterCore::Read(bool fresh) {
    if (!fresh && Current()) {
        return m_target->Bytes();
    }
    if (!m_owner.IsCachable()) {
        m_target->Unresolve();
    }
    m_target->Resolve(m_owner, fresh);
    if (!fresh && Current()) {
        return m_target->Bytes();
    }
    // A register that is not cached changes all the time, and says so to nobody: a listener that reads it
    // again would be told again without end.
    ReadPort(m_owner.IsCachable());
    return m_target->Bytes();
}

const std::uint8_t* RegisterCore::ReadToModify() {
    if (!IsReadable(Combine(m_mode, m_target->Port().Presence()))) {
        m_target->Resolve(m_owner, false);
        return m_target->Bytes();
    }
    return Read(m_target->m_anyUncachable);
}

void RegisterCore::Write(const std::uint8_t* data, std::int64_t length) {
    auto& map = m_owner.Map();
    auto& target = *m_target;
    if (!m_owner.IsCachable()) {
        target.Unresolve();
    }
    target.Resolve(m_owner, false);
    std::vector<Node*> changed(target.Users().begin(), target.Users().end());
    map.BytesWritten(target.Port(), target.Address(), target.Length(), &target, changed);
    try {
        target.Port().Write(data, target.Address(), length);
    } catch (...) {
        target.ForgetBytes(); // nobody knows how far it came
        map.ValuesChanged(changed);
        Rethrow("writing");
    }
    const bool whole = length == target.Length();
    if (whole && data != target.Bytes()) {
        std::memcpy(target.Bytes(), data, static_cast<std::size_t>(length));
    }
    target.Seen();
    if (m_caching == WriteThrough && whole) {
        target.SetEpoch(map.NextEpoch());
    } else {
        target.ForgetBytes();
    }
    map.ValuesChanged(changed);
}

std::int64_t RegisterCore::Address() {
    m_target->Resolve(m_owner, false);
    return m_target->Address();
}

std::int64_t RegisterCore::Length() {
    m_target->Resolve(m_owner, false);
    return m_target->Length();
}

std::int64_t RegisterCore::StaticLength() const {
    return m_target && !m_target->Plan().lengthNode ? m_target->Plan().length : 0;
}

bool RegisterCore::Swapped() const {
    return m_target && m_target->Port().SwapsEndianess();
}

void RegisterCore::Forget(bool keepBytes) {
    if (m_target && !keepBytes) {
        m_required = m_owner.Map().Epoch();
        m_target->Unresolve();
    }
}

void RegisterCore::Poll(std::uint64_t since) {
    if (!m_target || !m_owner.Readable() || (m_target->Epoch() >= since && m_target->Epoch() != 0)) {
        return;
    }
    if (!m_target->WasSeen() && !m_owner.Map().Callbacks().Any()) {
        return; // nobody has asked for it yet, and nobody waits for it
    }
    m_target->Resolve(m_owner, false);
    ReadPort(true);
}

} // namespace Norvane::GenApi
