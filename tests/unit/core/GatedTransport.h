#pragma once

#include "transport/Transport.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace Norvane::Test {

/// A gate that a test closes to hold a library thread at a known place.
class Gate {
public:
    void Close();
    void Open();
    /// Waits while the gate is closed.
    void Pass();
    int Waiting() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_closed = false;
    int m_waiting = 0;
};

/// What a test does to a transport and sees of it. Lives as long as the test.
class Gates {
public:
    Gate scanning;
    Gate opening; ///< of camera 7 only
    Gate forcing;
    std::atomic<int> scans{0};
    std::atomic<bool> scansMissCameras{false};
    std::atomic<int> opened{0};

    /// The device opened last; null when it is closed.
    std::shared_ptr<Transport::IDevice> Device() const;

private:
    friend class GatedTransport;

    mutable std::mutex m_mutex;
    std::weak_ptr<Transport::IDevice> m_device;
};

/// The emulator's transport behind gates.
class GatedTransport final : public Transport::ITransport {
public:
    explicit GatedTransport(std::shared_ptr<Gates> gates);

    Transport::ScanResult Scan() override;
    void SetChangeHandler(std::function<void()> handler) override;
    std::shared_ptr<Transport::IDevice> Open(const std::string& deviceId) override;
    void ForceIp(const std::string& deviceId) override;

private:
    const std::shared_ptr<Gates> m_gates;
    const std::unique_ptr<Transport::ITransport> m_emulator;
};

} // namespace Norvane::Test
