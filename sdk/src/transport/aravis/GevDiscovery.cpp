#include "transport/aravis/GevDiscovery.h"

#include <algorithm>
#include <cstdio>

namespace Norvane::Transport {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kScansUntilGone = 2;
/// Cameras answer within some milliseconds; the first list of a program waits for this.
constexpr std::chrono::milliseconds kSilence{150};

std::string DeviceId(const Gvcp::DiscoveryAnswer& answer) {
    char mac[16];
    std::snprintf(mac, sizeof mac, "%012llx", static_cast<unsigned long long>(answer.macAddress));
    // Simulated cameras on one host share a MAC address, so the serial number takes part.
    return std::string("gev-") + mac + (answer.serial.empty() ? "" : "-" + answer.serial);
}

} // namespace

const Adapter* FindReceivingAdapter(const std::vector<Adapter>& adapters, int adapterIndex,
                                    std::uint32_t source) {
    const Adapter* found = nullptr;
    for (const Adapter& adapter : adapters) {
        // A camera that runs on this host answers over loopback, from the address of the adapter it serves.
        if (adapter.record.ipAddress == source && !adapter.loopback) {
            return &adapter;
        }
        if (adapter.index == adapterIndex && (!found || (!found->Holds(source) && adapter.Holds(source)))) {
            found = &adapter;
        }
    }
    return found;
}

std::map<std::string, GevCamera> GevDiscovery::Scan(const std::vector<Adapter>& adapters,
                                                    const HeldLookup& held,
                                                    std::chrono::milliseconds window) {
    const auto end = Clock::now() + window;
    for (auto& [id, known] : m_known) {
        known.seen = false;
        known.previousInterfaceId = known.camera.adapter.record.id;
    }
    m_controlQuestions.clear();
    Ask(adapters);
    Listen(end, kSilence, adapters, held);
    if (AskMissingAgain()) {
        Listen(std::max(end, Clock::now() + window / 2), window, adapters, held);
    }

    std::map<std::string, GevCamera> cameras;
    for (auto entry = m_known.begin(); entry != m_known.end();) {
        Known& known = entry->second;
        const Held state = held(entry->first);
        known.missedScans = known.seen || state == Held::Alive ? 0 : known.missedScans + 1;
        const bool adapterLeft = std::none_of(adapters.begin(), adapters.end(), [&](const Adapter& adapter) {
            return adapter.record.id == known.camera.adapter.record.id;
        });
        if (adapterLeft || known.missedScans >= kScansUntilGone || (state == Held::Lost && !known.seen)) {
            entry = m_known.erase(entry);
        } else {
            cameras.emplace(entry->first, known.camera);
            ++entry;
        }
    }
    return cameras;
}

void GevDiscovery::Ask(const std::vector<Adapter>& adapters) {
    m_previousRequests = std::move(m_requests);
    const std::uint16_t requestId = m_socket.NextRequestId();
    m_requests = {requestId};
    const auto request = Gvcp::BuildDiscovery(requestId, Gvcp::AnswerBy::Broadcast);
    for (const Adapter& adapter : adapters) {
        const InterfaceRecord& record = adapter.record;
        if (!record.usable) {
            continue;
        }
        // The limited broadcast reaches cameras of any address. Routers and simulated cameras may only know
        // the network's own broadcast, and on loopback there is none that all of them hear.
        m_socket.Send(adapter.index, record.ipAddress, kLimitedBroadcast, request);
        m_socket.Send(adapter.index, record.ipAddress, record.ipAddress | ~record.subnetMask, request);
        if (adapter.loopback) {
            m_socket.Send(adapter.index, record.ipAddress, record.ipAddress, request);
        }
    }
}

void GevDiscovery::Listen(Clock::time_point end, std::chrono::milliseconds pause,
                          const std::vector<Adapter>& adapters, const HeldLookup& held) {
    while (const auto datagram = m_socket.Receive(std::min(end, Clock::now() + pause))) {
        Take(*datagram, adapters, held);
    }
}

void GevDiscovery::Take(const GvcpDatagram& datagram, const std::vector<Adapter>& adapters,
                        const HeldLookup& held) {
    const auto acknowledge = Gvcp::ParseAcknowledge(datagram.bytes);
    if (!acknowledge) {
        return;
    }
    if (const auto question = m_controlQuestions.find(acknowledge->requestId);
        question != m_controlQuestions.end()) {
        const auto known = m_known.find(question->second);
        if (known == m_known.end()) {
            return;
        }
        Access& access = known->second.camera.record.access;
        if (const auto privilege = Gvcp::ParseReadRegister(*acknowledge)) {
            access = (*privilege & (Gvcp::kControlAccess | Gvcp::kExclusiveAccess)) != 0 ? Access::ReadOnly
                                                                                         : Access::ReadWrite;
        } else if (acknowledge->status == Gvcp::kStatusAccessDenied) {
            access = Access::None; // held exclusively: not even reading is allowed
        }
        return;
    }
    if (m_requests.count(acknowledge->requestId) == 0 &&
        m_previousRequests.count(acknowledge->requestId) == 0) {
        return;
    }
    const auto answer = Gvcp::ParseDiscovery(*acknowledge);
    const Adapter* adapter = FindReceivingAdapter(adapters, datagram.adapterIndex, datagram.source);
    if (answer && adapter) {
        TakeCamera(*answer, *adapter, held);
    }
}

void GevDiscovery::TakeCamera(const Gvcp::DiscoveryAnswer& answer, const Adapter& adapter,
                              const HeldLookup& held) {
    const std::string id = DeviceId(answer);
    Known& known = m_known[id];
    // A camera can be heard through several adapters: best is the one whose network holds it, then the one of
    // the scan before, or else it would move to and fro.
    const auto rank = [&](const Adapter& candidate) {
        return 2 * static_cast<int>(candidate.Holds(answer.ipAddress)) +
               static_cast<int>(candidate.record.id == known.previousInterfaceId);
    };
    if (known.seen && rank(adapter) <= rank(known.camera.adapter)) {
        return;
    }
    known.seen = true;
    known.camera.adapter = adapter;
    DeviceRecord& record = known.camera.record;
    record.id = id;
    record.interfaceId = adapter.record.id;
    record.technology = Technology::GigEVision;
    record.vendor = answer.vendor;
    record.model = answer.model;
    record.serial = answer.serial;
    record.version = answer.version;
    record.firmwareVersion = answer.version; // the only version that a discovery tells
    record.userName = answer.userName;
    record.manufacturerInfo = answer.manufacturerInfo;
    record.speed = adapter.record.linkSpeedMbps ? std::to_string(adapter.record.linkSpeedMbps) : "";
    record.ipAddress = answer.ipAddress;
    record.subnetMask = answer.subnetMask;
    record.gateway = answer.gateway;
    record.macAddress = answer.macAddress;

    if (held(id) == Held::Alive) {
        return;
    }
    if (adapter.loopback || adapter.Holds(answer.ipAddress)) {
        const std::uint16_t requestId = m_socket.NextRequestId();
        m_controlQuestions[requestId] = id;
        m_socket.Send(adapter.index, adapter.record.ipAddress, answer.ipAddress,
                      Gvcp::BuildReadRegister(requestId, Gvcp::kControlChannelPrivilegeRegister));
    }
}

bool GevDiscovery::AskMissingAgain() {
    bool asked = false;
    for (const auto& [id, known] : m_known) {
        if (!known.seen) {
            const std::uint16_t requestId = m_socket.NextRequestId();
            m_requests.insert(requestId);
            m_socket.Send(known.camera.adapter.index, known.camera.adapter.record.ipAddress,
                          known.camera.record.ipAddress,
                          Gvcp::BuildDiscovery(requestId, Gvcp::AnswerBy::Broadcast));
            asked = true;
        }
    }
    return asked;
}

} // namespace Norvane::Transport
