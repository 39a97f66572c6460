#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

/// A camera's control channel behind a cable: it answers discoveries and force-IP commands on the far end of
/// a pair of virtual adapters, in a network namespace of its own, with an address that does not fit the near
/// end.
class LostCamera {
public:
    enum class Manner {
        Obeys,
        ForgetsToAcknowledge, ///< takes the address without saying so
        IsSilent,             ///< ignores force-IP commands
        Refuses,
        AnswersForOthers, ///< sends answers of another camera and to another request
    };

    static constexpr const char* kAdapter = "nvhost"; ///< the near end, 192.168.77.1/24
    static constexpr std::uint32_t kAdapterAddress = 0xC0A84D01;
    static constexpr std::uint32_t kAdapterMask = 0xFFFFFF00;
    static constexpr std::uint32_t kFirstAddress = 0x0A010203; ///< 10.1.2.3
    static constexpr std::uint64_t kMac = 0x00111CF58007;

    /// @param neighbour an address of the near network that another host owns
    LostCamera(Manner manner, std::uint32_t neighbour);
    ~LostCamera();
    LostCamera(const LostCamera&) = delete;
    LostCamera& operator=(const LostCamera&) = delete;

    bool IsReady() const { return m_ready; }
    std::uint32_t Address() const { return m_address; }

private:
    void Serve(std::uint32_t neighbour);
    void Answer(int socket, const std::vector<std::uint8_t>& command, std::uint16_t port);

    const Manner m_manner;
    std::atomic<pid_t> m_thread{0};
    std::atomic<bool> m_plugged{false};
    std::atomic<bool> m_ready{false};
    std::atomic<bool> m_stop{false};
    std::atomic<std::uint32_t> m_address{kFirstAddress};
    std::thread m_server;
};
