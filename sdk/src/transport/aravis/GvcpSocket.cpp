#include "transport/aravis/GvcpSocket.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <random>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace Norvane::Transport {
namespace {

using Clock = std::chrono::steady_clock;

sockaddr_in SocketAddress(std::uint32_t address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(address);
    result.sin_port = htons(port);
    return result;
}

bool WaitReadable(int socket, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd descriptor{socket, POLLIN, 0};
        const int ready = ::poll(&descriptor, 1, static_cast<int>(std::clamp<long long>(left, 0, 60000)));
        if (ready > 0) {
            return true;
        }
        if (ready == 0 || errno != EINTR) {
            return false;
        }
    }
}

std::uint16_t RandomRequestId() {
    // Two programs on one host must not take each other's broadcast answers for their own.
    return static_cast<std::uint16_t>(std::random_device{}() | 1U);
}

} // namespace

GvcpSocket::GvcpSocket() : m_lastRequestId(RandomRequestId()) {
    m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    const sockaddr_in any = SocketAddress(INADDR_ANY, 0);
    if (m_socket < 0 || ::setsockopt(m_socket, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0 ||
        ::setsockopt(m_socket, IPPROTO_IP, IP_PKTINFO, &on, sizeof on) != 0 ||
        ::bind(m_socket, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
        const std::string reason = std::strerror(errno);
        if (m_socket >= 0) {
            ::close(m_socket);
        }
        throw Exception(Error::Io, "No socket for the discovery of GigE Vision cameras: " + reason);
    }
}

GvcpSocket::~GvcpSocket() {
    ::close(m_socket);
}

bool GvcpSocket::Send(int adapterIndex, std::uint32_t source, std::uint32_t destination,
                      std::span<const std::uint8_t> bytes) {
    sockaddr_in to = SocketAddress(destination, Gvcp::kPort);
    iovec data{const_cast<std::uint8_t*>(bytes.data()), bytes.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo))> control{};
    msghdr message{};
    message.msg_name = &to;
    message.msg_namelen = sizeof to;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_IP;
    header->cmsg_type = IP_PKTINFO;
    header->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
    in_pktinfo info{};
    info.ipi_ifindex = adapterIndex;
    info.ipi_spec_dst.s_addr = htonl(source);
    std::memcpy(CMSG_DATA(header), &info, sizeof info);
    return ::sendmsg(m_socket, &message, MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

std::optional<GvcpDatagram> GvcpSocket::Receive(Clock::time_point deadline) {
    while (WaitReadable(m_socket, deadline)) {
        GvcpDatagram datagram;
        datagram.bytes.resize(Gvcp::kMaximumPacketSize);
        sockaddr_in from{};
        iovec data{datagram.bytes.data(), datagram.bytes.size()};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo))> control{};
        msghdr message{};
        message.msg_name = &from;
        message.msg_namelen = sizeof from;
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const ssize_t size = ::recvmsg(m_socket, &message, 0);
        if (size < 0) {
            continue; // somebody else's error report, or a datagram with a wrong checksum
        }
        datagram.bytes.resize(static_cast<std::size_t>(size));
        datagram.source = ntohl(from.sin_addr.s_addr);
        for (cmsghdr* header = CMSG_FIRSTHDR(&message); header; header = CMSG_NXTHDR(&message, header)) {
            if (header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO) {
                in_pktinfo info{};
                std::memcpy(&info, CMSG_DATA(header), sizeof info);
                datagram.adapterIndex = info.ipi_ifindex;
            }
        }
        return datagram;
    }
    return std::nullopt;
}

std::uint16_t GvcpSocket::NextRequestId() {
    m_lastRequestId = m_lastRequestId == 0xFFFF ? 1 : static_cast<std::uint16_t>(m_lastRequestId + 1);
    return m_lastRequestId;
}

bool AnswersDiscovery(std::uint32_t adapterAddress, std::uint32_t device, std::chrono::milliseconds timeout) {
    constexpr int kTries = 3; // one lost datagram is no sign of absence
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0) {
        return true; // out of descriptors: says nothing about the device
    }
    const sockaddr_in from = SocketAddress(adapterAddress, 0);
    const sockaddr_in to = SocketAddress(device, Gvcp::kPort);
    const std::uint16_t requestId = RandomRequestId();
    const auto request = Gvcp::BuildDiscovery(requestId, Gvcp::AnswerBy::Unicast);
    // A connected socket learns at once when no process listens at the other end.
    bool open = ::bind(socket, reinterpret_cast<const sockaddr*>(&from), sizeof from) == 0 &&
                ::connect(socket, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
    bool answered = false;
    for (int attempt = 0; open && !answered && attempt < kTries; ++attempt) {
        const auto deadline = Clock::now() + timeout / kTries;
        open = ::send(socket, request.data(), request.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(request.size());
        while (open && !answered && WaitReadable(socket, deadline)) {
            std::array<std::uint8_t, Gvcp::kMaximumPacketSize> bytes;
            const ssize_t size = ::recv(socket, bytes.data(), bytes.size(), 0);
            open = size >= 0;
            const auto acknowledge = Gvcp::ParseAcknowledge(
                std::span(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(0, size))));
            answered = acknowledge && acknowledge->requestId == requestId;
        }
    }
    ::close(socket);
    return answered;
}

} // namespace Norvane::Transport
