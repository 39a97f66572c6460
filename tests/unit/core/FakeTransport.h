#pragma once

#include "transport/Transport.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// A transport whose interfaces, cameras and trouble a test scripts.
namespace Norvane::Test {

/// Waits until `condition()` holds; false after five seconds, which is far longer than anything takes.
bool Eventually(const std::function<bool()>& condition);

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

/// One camera: what a scan shows of it, its registers, and its stream. Lives as long as the test.
class FakeCamera {
public:
    FakeCamera(std::string id, std::string interfaceId, std::string serial);

    Transport::DeviceRecord record;
    std::string description;
    Transport::Access access = Transport::Access::ReadWrite;
    Gate opening;
    std::function<void()> onOpenStream; ///< for example to throw

    /// The stream gets an image, as long as it has a free buffer. False when nothing streams.
    bool Send(std::uint64_t frameId, std::map<std::uint64_t, std::vector<std::uint8_t>> chunks = {});
    /// The device stops answering, and says so.
    void Lose();

    std::int64_t Register(std::int64_t address) const;
    void SetRegister(std::int64_t address, std::int64_t value);
    int Opened() const { return m_opened; }   ///< devices opened so far
    int Devices() const { return m_devices; } ///< devices open now
    bool IsStreaming() const;
    std::uint32_t BuffersInUse() const { return *m_buffersInUse; }
    Transport::StreamSettings LastSettings() const;

    std::shared_ptr<Transport::IDevice> Open();

private:
    friend class FakeDevice;
    friend class FakeStream;

    mutable std::mutex m_mutex;
    std::map<std::int64_t, std::int64_t> m_registers;
    std::function<void()> m_lostHandler;
    class FakeStream* m_stream = nullptr;
    Transport::StreamSettings m_settings;
    std::atomic<bool> m_alive{true};
    std::atomic<int> m_opened{0};
    std::atomic<int> m_devices{0};
    std::shared_ptr<std::atomic<std::uint32_t>> m_buffersInUse =
        std::make_shared<std::atomic<std::uint32_t>>(0);
};

/// What the scans of one transport show.
class FakeWorld {
public:
    std::shared_ptr<FakeCamera> AddCamera(const std::string& id, const std::string& interfaceId,
                                          const std::string& serial);
    void AddInterface(const std::string& id,
                      Transport::Technology technology = Transport::Technology::GigEVision);
    void Plug(const std::shared_ptr<FakeCamera>& camera);
    void Unplug(const std::shared_ptr<FakeCamera>& camera);
    void RemoveInterface(const std::string& id);
    /// Changes a camera's record as the next scan shows it.
    void Change(const std::shared_ptr<FakeCamera>& camera,
                const std::function<void(Transport::DeviceRecord&)>& change);

    Gate scanning;
    std::atomic<int> scans{0};
    std::atomic<int> forcedIps{0};
    Gate forcing;

private:
    friend class FakeTransport;

    void Announce();

    std::mutex m_mutex;
    std::vector<Transport::InterfaceRecord> m_interfaces;
    std::vector<std::shared_ptr<FakeCamera>> m_cameras;
    std::function<void()> m_changed;
};

std::unique_ptr<Transport::ITransport> MakeTransport(std::shared_ptr<FakeWorld> world);

/// Addresses of the fake camera's registers, see kFakeDescription.
constexpr std::int64_t kAcquisitionStart = 0x100;
constexpr std::int64_t kAcquisitionStop = 0x108;
constexpr std::int64_t kParamsLocked = 0x110;
constexpr std::int64_t kGain = 0x118;
constexpr std::int64_t kPolled = 0x120;

/// A camera of 4 x 2 pixels, Mono8.
extern const char* const kFakeDescription;

} // namespace Norvane::Test
