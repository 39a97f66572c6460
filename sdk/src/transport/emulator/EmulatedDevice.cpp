#include "transport/emulator/EmulatedDevice.h"

#include "norvane/Exception.h"
#include "transport/emulator/EmulatedStream.h"

#include <utility>

namespace Norvane::Transport::Emulator {

EmulatedDevice::EmulatedDevice(std::shared_ptr<EmulatedCamera> camera)
    : m_camera(std::move(camera)), m_inControl(m_camera->TakeControl()) {
    m_listener = m_camera->AddLostListener([state = m_lost] { Tell(*state); });
    if (m_listener == 0) {
        const MutexLock lock(m_lost->mutex);
        m_lost->lost = true;
    }
}

EmulatedDevice::~EmulatedDevice() {
    m_camera->RemoveLostListener(m_listener);
    SetLostHandler(nullptr);
    if (m_inControl) {
        m_camera->ReturnControl();
    }
}

GenApi::EAccessMode EmulatedDevice::GetAccessMode() const {
    if (!m_camera->IsAlive()) {
        return GenApi::NA;
    }
    return CurrentAccess() == Access::ReadWrite ? GenApi::RW : GenApi::RO;
}

Access EmulatedDevice::CurrentAccess() const {
    return m_inControl && !m_camera->IsReadOnly() ? Access::ReadWrite : Access::ReadOnly;
}

void EmulatedDevice::Read(void* buffer, std::int64_t address, std::int64_t length) {
    m_camera->Read(buffer, static_cast<std::uint64_t>(address), static_cast<std::uint64_t>(length));
}

void EmulatedDevice::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (m_camera->IsAlive() && CurrentAccess() != Access::ReadWrite) {
        throw Exception(Error::AccessDenied, "the camera is opened elsewhere; it can only be read here");
    }
    m_camera->Write(buffer, static_cast<std::uint64_t>(address), static_cast<std::uint64_t>(length));
}

std::unique_ptr<IStream> EmulatedDevice::OpenStream(const StreamSettings& settings) {
    return std::make_unique<EmulatedStream>(m_camera, settings);
}

void EmulatedDevice::Tell(LostState& state) {
    std::function<void()> handler;
    {
        const MutexLock lock(state.mutex);
        state.lost = true;
        handler = std::exchange(state.handler, nullptr);
    }
    // Without the lock: the handler reaches into the core, which may be about to replace it.
    if (handler) {
        handler();
    }
}

void EmulatedDevice::SetLostHandler(std::function<void()> handler) {
    const MutexLock lock(m_lost->mutex);
    m_lost->handler = std::move(handler);
    // A camera that left between opening and here has nobody else to tell.
    if (m_lost->lost && m_lost->handler) {
        m_camera->Post([state = m_lost] { Tell(*state); });
    }
}

} // namespace Norvane::Transport::Emulator
