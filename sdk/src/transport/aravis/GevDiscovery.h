#pragma once

#include "transport/Transport.h"
#include "transport/aravis/Adapters.h"
#include "transport/aravis/GvcpSocket.h"

#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Norvane::Transport {

/// A GigE Vision camera and the adapter it is reached through.
struct GevCamera {
    DeviceRecord record;
    Adapter adapter;
};

/// Finds GigE Vision cameras on all adapters at once and remembers them from scan to scan, so that one lost
/// datagram does not make a camera leave. Owned by the transport, used by one thread at a time.
class GevDiscovery {
public:
    /// How a camera stands with this program; an open one is not asked again and again who controls it.
    enum class Held { No, Alive, Lost };
    using HeldLookup = std::function<Held(const std::string& deviceId)>;

    /// Asks all usable adapters, listens until no camera has spoken for 150 ms, for `window` at most and
    /// where a known camera is silent, and returns the cameras by their identifier. An answer that comes
    /// later counts for the next scan.
    /// @throws Exception (Io) when the system gives no socket.
    std::map<std::string, GevCamera> Scan(const std::vector<Adapter>& adapters, const HeldLookup& held,
                                          std::chrono::milliseconds window = std::chrono::milliseconds(400));

private:
    struct Known {
        GevCamera camera;
        int missedScans = 0;
        bool seen = false; ///< in the current scan
        std::string previousInterfaceId;
    };

    void Ask(const std::vector<Adapter>& adapters);
    /// Takes what comes until nobody has spoken for `pause`, not beyond `end`.
    void Listen(std::chrono::steady_clock::time_point end, std::chrono::milliseconds pause,
                const std::vector<Adapter>& adapters, const HeldLookup& held);
    void Take(const GvcpDatagram& datagram, const std::vector<Adapter>& adapters, const HeldLookup& held);
    void TakeCamera(const Gvcp::DiscoveryAnswer& answer, const Adapter& adapter, const HeldLookup& held);
    /// Whether there was one to ask.
    bool AskMissingAgain();

    GvcpSocket m_socket;
    std::set<std::uint16_t> m_requests; ///< discoveries of this scan and the one before
    std::set<std::uint16_t> m_previousRequests;
    std::map<std::uint16_t, std::string> m_controlQuestions; ///< request number to device
    std::map<std::string, Known> m_known;
};

/// The adapter that an answer belongs to: one of those that heard it, where there is a choice the one whose
/// network holds the camera. Null when the adapter is not listed.
const Adapter* FindReceivingAdapter(const std::vector<Adapter>& adapters, int adapterIndex,
                                    std::uint32_t source);

} // namespace Norvane::Transport
