#include "core/SwitchablePort.h"

#include "norvane/Exception.h"

namespace Norvane::Core {

void SwitchablePort::Switch(std::shared_ptr<Transport::IDevice> device) {
    if (device) {
        m_lastMode = device->GetAccessMode();
    }
    {
        MutexLock lock(m_mutex);
        m_device.swap(device);
    }
    // The former device, if this was its last owner, is closed here, after the lock.
}

GenApi::EAccessMode SwitchablePort::GetAccessMode() const {
    const std::shared_ptr<Transport::IDevice> device = Device();
    return device ? device->GetAccessMode() : m_lastMode.load();
}

void SwitchablePort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    OpenDevice()->Read(buffer, address, length);
}

void SwitchablePort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    OpenDevice()->Write(buffer, address, length);
}

std::shared_ptr<Transport::IDevice> SwitchablePort::Device() const {
    MutexLock lock(m_mutex);
    return m_device;
}

std::shared_ptr<Transport::IDevice> SwitchablePort::OpenDevice() const {
    std::shared_ptr<Transport::IDevice> device = Device();
    if (!device) {
        throw Exception(Error::Io, "the camera is not open");
    }
    return device;
}

} // namespace Norvane::Core
