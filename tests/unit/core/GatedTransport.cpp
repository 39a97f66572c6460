#include "GatedTransport.h"

namespace Norvane::Test {

void Gate::Close() {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
}

void Gate::Open() {
    {
        const std::lock_guard lock(m_mutex);
        m_closed = false;
    }
    m_changed.notify_all();
}

void Gate::Pass() {
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    m_changed.wait(lock, [this] { return !m_closed; });
    --m_waiting;
}

int Gate::Waiting() const {
    const std::lock_guard lock(m_mutex);
    return m_waiting;
}

std::shared_ptr<Transport::IDevice> Gates::Device() const {
    const std::lock_guard lock(m_mutex);
    return m_device.lock();
}

GatedTransport::GatedTransport(std::shared_ptr<Gates> gates)
    : m_gates(std::move(gates)), m_emulator(Transport::CreateEmulatorTransport()) {}

Transport::ScanResult GatedTransport::Scan() {
    m_gates->scanning.Pass();
    ++m_gates->scans;
    Transport::ScanResult result = m_emulator->Scan();
    if (m_gates->scansMissCameras) {
        result.devices.clear();
    }
    return result;
}

void GatedTransport::SetChangeHandler(std::function<void()> handler) {
    m_emulator->SetChangeHandler(std::move(handler));
}

std::shared_ptr<Transport::IDevice> GatedTransport::Open(const std::string& deviceId) {
    if (deviceId == "7") {
        m_gates->opening.Pass();
    }
    auto device = m_emulator->Open(deviceId);
    {
        const std::lock_guard lock(m_gates->m_mutex);
        m_gates->m_device = device;
    }
    ++m_gates->opened;
    return device;
}

void GatedTransport::ForceIp(const std::string& deviceId) {
    m_gates->forcing.Pass();
    m_emulator->ForceIp(deviceId);
}

} // namespace Norvane::Test
