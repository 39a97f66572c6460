#include "Receiver.h"

#include "transport/Transport.h"

#include <chrono>
#include <stdexcept>

using namespace Norvane::Transport;

namespace {

using Clock = std::chrono::steady_clock;

// Registers of the simulated camera.
constexpr std::int64_t kWidth = 0x100;
constexpr std::int64_t kHeight = 0x104;
constexpr std::int64_t kAcquisition = 0x124;
constexpr std::int64_t kFramePeriodUs = 0x138;
constexpr std::int64_t kPacketSize = 0x0D04; // the first stream channel's packet size register of GigE Vision

void WriteRegister(IDevice& device, std::int64_t address, std::uint32_t value) {
    const std::uint8_t bytes[4] = {static_cast<std::uint8_t>(value >> 24),
                                   static_cast<std::uint8_t>(value >> 16),
                                   static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    device.Write(bytes, address, sizeof bytes);
}

} // namespace

Received Receive(const Load& load, int seconds) {
    const auto transport = CreateAravisTransport();
    const auto cameras = transport->Scan().devices;
    if (cameras.empty()) {
        throw std::runtime_error("no camera answers");
    }
    const auto device = transport->Open(cameras.front().id);
    WriteRegister(*device, kWidth, load.size);
    WriteRegister(*device, kHeight, load.size);
    WriteRegister(*device, kFramePeriodUs, 1000000 / load.frameRate);
    WriteRegister(*device, kPacketSize, load.packetSize); // its upper bits are flags, all zero here
    StreamSettings settings;
    settings.bufferCount = 50; // as many as the tool has
    settings.payloadSize = std::uint64_t{load.size} * load.size;
    const auto stream = device->OpenStream(settings);

    Received received;
    WriteRegister(*device, kAcquisition, 1);
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    while (Clock::now() < end) {
        if (const auto frame = stream->Pop(100)) {
            received.complete += frame->status == Norvane::IMAGE_NO_ERROR;
        }
    }
    WriteRegister(*device, kAcquisition, 0);
    const StreamStatistics statistics = stream->Statistics();
    received.failures = statistics.corruptImages + statistics.underruns;
    return received;
}
