#include "transport/aravis/ReceiveSocket.h"

#include "norvane/Log.h"

#include <arpa/inet.h>
#include <atomic>
#include <filesystem>
#include <netinet/in.h>
#include <netpacket/packet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Norvane::Transport {
namespace {

constexpr int kEnoughBytes = 4 << 20;

/// The UDP socket of this process that is bound to a port, or -1. Aravis does not hand its socket out.
int FindUdpSocket(std::uint16_t port) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const int descriptor = std::atoi(entry.path().filename().c_str());
        int type = 0;
        socklen_t typeSize = sizeof type;
        sockaddr_in address{};
        socklen_t addressSize = sizeof address;
        if (::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &typeSize) == 0 && type == SOCK_DGRAM &&
            ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &addressSize) == 0 &&
            address.sin_family == AF_INET && ntohs(address.sin_port) == port) {
            return descriptor;
        }
    }
    return -1;
}

bool MayUsePacketSockets() {
    const int probe = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        return false;
    }
    ::close(probe);
    return true;
}

} // namespace

void SizeReceiveSocket(ArvGvStream* stream, int wantedBytes, const std::string& label) {
    if (MayUsePacketSockets()) {
        return;
    }
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 wantedBytes, nullptr);
    const int socket = FindUdpSocket(arv_gv_stream_get_port(stream));
    if (socket < 0) {
        return;
    }
    // The forced form passes the limit, with the right to do it.
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &wantedBytes, sizeof wantedBytes) != 0) {
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &wantedBytes, sizeof wantedBytes);
    }
    int granted = 0;
    socklen_t size = sizeof granted;
    ::getsockopt(socket, SOL_SOCKET, SO_RCVBUF, &granted, &size);
    granted /= 2; // the kernel counts its own bookkeeping with it
    static std::atomic<bool> said{false};
    if (granted < kEnoughBytes && !said.exchange(true)) {
        Log(LogLevel::Warning,
            label + ": the system limits the receive buffer to " + std::to_string(granted) +
                " bytes, so images will be lost; run \"sysctl -w net.core.rmem_max=" +
                std::to_string(wantedBytes) + "\" as root, or give the program the capability cap_net_raw");
    }
}

} // namespace Norvane::Transport
