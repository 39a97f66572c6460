#include "LostCamera.h"

#include "PrivateNetwork.h"
#include "transport/aravis/Adapters.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

using Norvane::Transport::FormatIpAddress;
using Bytes = std::vector<std::uint8_t>;

namespace {

void Put(Bytes& packet, std::size_t offset, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        packet[offset + static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(value >> (8 * (bytes - 1 - i)));
    }
}

std::uint64_t Get(const Bytes& packet, std::size_t offset, int bytes) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) {
        value = (value << 8) | packet[offset + static_cast<std::size_t>(i)];
    }
    return value;
}

Bytes Acknowledge(std::uint16_t status, std::uint16_t command, std::uint64_t requestId, std::size_t size) {
    Bytes packet(8 + size);
    Put(packet, 0, status, 2);
    Put(packet, 2, command, 2);
    Put(packet, 4, size, 2);
    Put(packet, 6, requestId, 2);
    return packet;
}

Bytes DiscoveryAcknowledge(std::uint64_t requestId, std::uint64_t mac, std::uint32_t address) {
    Bytes packet = Acknowledge(0, 3, requestId, 0xF8);
    Put(packet, 8 + 0x0A, mac, 6);
    Put(packet, 8 + 0x24, address, 4);
    Put(packet, 8 + 0x34, 0xFFFFFF00, 4);
    std::memcpy(packet.data() + 8 + 0x48, "Altrona", 7);
    std::memcpy(packet.data() + 8 + 0x68, "Duskwing", 8);
    std::memcpy(packet.data() + 8 + 0xD8, "4711", 4);
    return packet;
}

bool SetAddresses(std::uint32_t own, std::uint32_t neighbour) {
    const std::string command = "ip addr flush dev nvcam && ip addr add " + FormatIpAddress(own) +
                                "/24 dev nvcam && ip addr add " + FormatIpAddress(neighbour) +
                                "/24 dev nvcam";
    return Shell(command.c_str());
}

} // namespace

LostCamera::LostCamera(Manner manner, std::uint32_t neighbour)
    : m_manner(manner), m_server([this, neighbour] { Serve(neighbour); }) {
    while (m_thread == 0) {
        std::this_thread::yield();
    }
    // Answers come from addresses that the near end has no route to.
    const std::string commands =
        "ip link add nvhost type veth peer name nvcam && ip link set nvcam netns " +
        std::to_string(m_thread.load()) +
        " && ip addr add 192.168.77.1/24 dev nvhost && ip link set nvhost up && "
        "for f in all nvhost; do echo 0 > /proc/sys/net/ipv4/conf/$f/rp_filter; done";
    m_stop = !Shell(commands.c_str());
    m_plugged = true;
    while (!m_ready && !m_stop) {
        std::this_thread::yield();
    }
}

LostCamera::~LostCamera() {
    m_stop = true;
    m_server.join();
    Shell("ip link del nvhost 2>/dev/null");
}

void LostCamera::Serve(std::uint32_t neighbour) {
    const bool alone = ::unshare(CLONE_NEWNET) == 0;
    m_thread = ::gettid();
    while (!m_plugged) {
        std::this_thread::yield();
    }
    if (!alone || m_stop || !SetAddresses(kFirstAddress, neighbour) || !Shell("ip link set nvcam up")) {
        m_stop = true;
        return;
    }
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    ::setsockopt(socket, SOL_SOCKET, SO_BINDTODEVICE, "nvcam", 5);
    sockaddr_in any{};
    any.sin_family = AF_INET;
    any.sin_port = htons(3956);
    m_stop = ::bind(socket, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0;
    m_ready = !m_stop;
    while (!m_stop) {
        pollfd descriptor{socket, POLLIN, 0};
        if (::poll(&descriptor, 1, 50) <= 0) {
            continue;
        }
        Bytes command(576);
        sockaddr_in from{};
        socklen_t size = sizeof from;
        const ssize_t length =
            ::recvfrom(socket, command.data(), command.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
        if (length >= 8) {
            command.resize(static_cast<std::size_t>(length));
            const std::uint32_t before = m_address;
            Answer(socket, command, ntohs(from.sin_port));
            if (m_address != before) {
                SetAddresses(m_address, neighbour);
            }
        }
    }
    ::close(socket);
}

void LostCamera::Answer(int socket, const Bytes& command, std::uint16_t port) {
    const auto send = [&](const Bytes& packet) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(port);
        to.sin_addr.s_addr = INADDR_BROADCAST;
        ::sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    };
    const std::uint64_t requestId = Get(command, 6, 2);
    switch (Get(command, 2, 2)) {
    case 2:
        send(DiscoveryAcknowledge(requestId, kMac, m_address));
        break;
    case 4: {
        if (command.size() != 8 + 56 || Get(command, 8 + 2, 6) != kMac) {
            break;
        }
        const auto address = static_cast<std::uint32_t>(Get(command, 8 + 20, 4));
        switch (m_manner) {
        case Manner::Obeys:
            m_address = address;
            send(Acknowledge(0, 5, requestId, 0));
            break;
        case Manner::ForgetsToAcknowledge:
            m_address = address;
            break;
        case Manner::IsSilent:
            break;
        case Manner::Refuses:
            send(Acknowledge(0x8006, 5, requestId, 0));
            break;
        case Manner::AnswersForOthers:
            send(Acknowledge(0, 5, requestId + 100, 0));
            send(DiscoveryAcknowledge(requestId, kMac + 1, address));
            send(DiscoveryAcknowledge(requestId, kMac, address + 1));
            break;
        }
        break;
    }
    case 0x80: {
        Bytes packet = Acknowledge(0, 0x81, requestId, 4); // nobody controls it
        send(packet);
        break;
    }
    default:
        break;
    }
}
