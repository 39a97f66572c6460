#pragma once

#include "transport/aravis/Gvcp.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Norvane::Transport {

/// Reaches every device of the adapter's wire, whatever its address (RFC 919, section 7).
constexpr std::uint32_t kLimitedBroadcast = 0xFFFFFFFF;

/// A datagram as it came in.
struct GvcpDatagram {
    std::vector<std::uint8_t> bytes;
    std::uint32_t source = 0; ///< host order
    int adapterIndex = 0;     ///< kernel index of the adapter that received it
};

/// One UDP socket that serves all adapters side by side: each datagram says on which adapter it leaves, and
/// each answer on which it came. Needs no privileges, and hears broadcast answers of cameras whose address
/// does not fit the adapter's network. Used by one thread at a time.
class GvcpSocket {
public:
    /// @throws Exception (Io) when the system gives no socket.
    GvcpSocket();
    ~GvcpSocket();
    GvcpSocket(const GvcpSocket&) = delete;
    GvcpSocket& operator=(const GvcpSocket&) = delete;

    /// Sends to the GVCP port of `destination` through one adapter, from its address `source` (host order).
    /// False when the system refuses, for example because the adapter has gone.
    bool Send(int adapterIndex, std::uint32_t source, std::uint32_t destination,
              std::span<const std::uint8_t> bytes);
    /// The next datagram, or nothing when `deadline` comes first.
    std::optional<GvcpDatagram> Receive(std::chrono::steady_clock::time_point deadline);
    /// A request number that no recent request had, never 0.
    std::uint16_t NextRequestId();

private:
    int m_socket = -1;
    std::uint16_t m_lastRequestId;
};

/// Whether the device at `device` answers a discovery sent to it alone within the time; both addresses in
/// host order. Harmless to a device that is open. Any thread.
bool AnswersDiscovery(std::uint32_t adapterAddress, std::uint32_t device, std::chrono::milliseconds timeout);

} // namespace Norvane::Transport
