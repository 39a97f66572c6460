#pragma once

#include "transport/Transport.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

/// Aravis's simulated GigE Vision camera as a process of its own.
class FakeCamera {
public:
    static bool IsInstalled();

    explicit FakeCamera(std::vector<std::string> extraArguments = {});
    ~FakeCamera() { Kill(); }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

    void Kill();
    void Signal(int signal);

    // Registers of this camera; their values are big endian.
    static constexpr std::int64_t kWidth = 0x100;
    static constexpr std::int64_t kHeight = 0x104;
    static constexpr std::int64_t kAcquisition = 0x124;
    static constexpr std::int64_t kFramePeriodUs = 0x138;
    static constexpr std::int64_t kPacketSize = 0x0D04;

private:
    pid_t m_process = -1;
};

std::uint32_t ReadRegister(Norvane::Transport::IDevice& device, std::int64_t address);
void WriteRegister(Norvane::Transport::IDevice& device, std::int64_t address, std::uint32_t value);

/// Asks again and again until the condition holds; false when the time is over first.
bool WaitFor(const std::function<bool()>& condition, std::chrono::milliseconds timeout);
/// Scans until a camera is seen, and returns its record; one without identifier when none comes.
Norvane::Transport::DeviceRecord WaitForCamera(Norvane::Transport::ITransport& transport);

/// The time that something takes.
std::chrono::milliseconds TimeOf(const std::function<void()>& action);
