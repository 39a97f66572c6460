#include "FakeCamera.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr const char* kProgram = "/usr/bin/arv-fake-gv-camera-0.8";

} // namespace

bool FakeCamera::IsInstalled() {
    return std::filesystem::exists(kProgram);
}

FakeCamera::FakeCamera(std::vector<std::string> extraArguments) {
    std::vector<std::string> arguments{kProgram, "-i", "127.0.0.1"};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    m_process = ::fork();
    if (m_process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::execv(kProgram, pointers.data());
        ::_exit(127);
    }
    if (m_process < 0) {
        throw std::runtime_error("no process for the simulated camera");
    }
}

void FakeCamera::Kill() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = -1;
    }
}

void FakeCamera::Signal(int signal) {
    ::kill(m_process, signal);
    if (signal == SIGSTOP) {
        ::waitpid(m_process, nullptr, WUNTRACED); // it stops some time later
    }
}

std::uint32_t ReadRegister(Norvane::Transport::IDevice& device, std::int64_t address) {
    std::uint8_t bytes[4];
    device.Read(bytes, address, 4);
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

void WriteRegister(Norvane::Transport::IDevice& device, std::int64_t address, std::uint32_t value) {
    const std::uint8_t bytes[4] = {static_cast<std::uint8_t>(value >> 24),
                                   static_cast<std::uint8_t>(value >> 16),
                                   static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    device.Write(bytes, address, 4);
}

bool WaitFor(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

Norvane::Transport::DeviceRecord WaitForCamera(Norvane::Transport::ITransport& transport) {
    Norvane::Transport::DeviceRecord found;
    WaitFor(
        [&] {
            const auto result = transport.Scan();
            if (!result.devices.empty()) {
                found = result.devices.front();
            }
            return !result.devices.empty();
        },
        std::chrono::seconds(10));
    return found;
}

std::chrono::milliseconds TimeOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}
