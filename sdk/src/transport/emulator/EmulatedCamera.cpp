#include "transport/emulator/EmulatedCamera.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cstring>

namespace Norvane::Transport::Emulator {

EmulatedCamera::EmulatedCamera(const CameraSettings& camera, const InterfaceSettings& interface,
                               std::string descriptionOverride, std::shared_ptr<Flash> flash, Poster post)
    : m_model(camera, interface, std::move(flash)), m_descriptionOverride(std::move(descriptionOverride)),
      m_post(std::move(post)), m_gigE(interface.kind == Kind::GigEVision), m_seed(HashOf(camera.serial)) {
    m_model.onWake = [this] { m_changed.notify_all(); };
}

void EmulatedCamera::Apply(const CameraSettings& camera, const InterfaceSettings& interface) {
    const MutexLock lock(m_mutex);
    m_model.Apply(camera, interface);
}

bool EmulatedCamera::IsSameDevice(const CameraSettings& camera, const InterfaceSettings& interface) const {
    const MutexLock lock(m_mutex);
    const CameraSettings& own = m_model.Camera();
    return own.serial == camera.serial && own.interfaceId == camera.interfaceId &&
           own.descriptionPath == camera.descriptionPath && m_model.Interface().kind == interface.kind;
}

DeviceRecord EmulatedCamera::Record() const {
    const MutexLock lock(m_mutex);
    const CameraSettings& camera = m_model.Camera();
    DeviceRecord record;
    record.id = camera.serial;
    record.interfaceId = camera.interfaceId;
    record.vendor = camera.vendor;
    record.model = camera.model;
    record.serial = camera.serial;
    record.version = "1.0";
    record.firmwareVersion = "1.0.0";
    record.userName = m_model.UserName();
    record.manufacturerInfo = "Emulated camera";
    record.technology = m_gigE ? Technology::GigEVision : Technology::Usb3Vision;
    record.speed = m_gigE ? "1000" : "SuperSpeed";
    record.access = camera.readOnly ? Access::ReadOnly : Access::ReadWrite;
    record.unusable = camera.unusable;
    if (m_gigE) {
        record.ipAddress = m_address;
        record.subnetMask = m_netmask;
        record.macAddress = m_model.MacAddress();
    }
    return record;
}

std::uint32_t EmulatedCamera::Address() const {
    const MutexLock lock(m_mutex);
    return m_address;
}

std::uint32_t EmulatedCamera::Netmask() const {
    const MutexLock lock(m_mutex);
    return m_netmask;
}

void EmulatedCamera::SetAddress(std::uint32_t address, std::uint32_t netmask) {
    const MutexLock lock(m_mutex);
    m_address = address;
    m_netmask = netmask;
    m_model.SetAddress(address, netmask);
}

void EmulatedCamera::Unplug() {
    std::map<std::uint64_t, std::function<void()>> listeners;
    {
        const MutexLock lock(m_mutex);
        if (!m_alive.exchange(false)) {
            return;
        }
        listeners.swap(m_listeners);
        m_model.StopAcquisition();
        m_changed.notify_all();
    }
    for (const auto& [handle, listener] : listeners) {
        listener();
    }
}

std::uint64_t EmulatedCamera::AddLostListener(std::function<void()> listener) {
    const MutexLock lock(m_mutex);
    if (!m_alive) {
        return 0;
    }
    m_listeners[m_nextListener] = std::move(listener);
    return m_nextListener++;
}

void EmulatedCamera::RemoveLostListener(std::uint64_t handle) {
    const MutexLock lock(m_mutex);
    m_listeners.erase(handle);
}

void EmulatedCamera::SetResetHandler(std::function<void()> handler) {
    const MutexLock lock(m_mutex);
    m_model.onReset = std::move(handler);
}

bool EmulatedCamera::IsReadOnly() const {
    const MutexLock lock(m_mutex);
    return m_model.Camera().readOnly;
}

std::string EmulatedCamera::Description() const {
    if (!m_alive) {
        throw Exception(Error::Io, "the emulated camera has left");
    }
    const MutexLock lock(m_mutex);
    return m_descriptionOverride.empty() ? m_model.Description() : m_descriptionOverride;
}

void EmulatedCamera::Delay(MutexLock& lock) {
    const std::uint32_t microseconds = m_model.Camera().registerDelayUs;
    if (microseconds > 0) {
        const auto end = Clock::now() + std::chrono::microseconds(microseconds);
        while (m_alive && Clock::now() < end) {
            m_changed.wait_until(lock, end);
        }
    }
    if (!m_alive) {
        throw Exception(Error::Io,
                        "camera " + m_model.Camera().serial + " has left; its registers cannot be reached");
    }
}

void EmulatedCamera::Read(void* buffer, std::uint64_t address, std::uint64_t length) {
    MutexLock lock(m_mutex);
    Delay(lock);
    if (m_descriptionOverride.empty()) {
        m_model.Bank().Read(buffer, address, length);
        return;
    }
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::memset(out, 0, length);
    for (auto byte = m_plain.lower_bound(address); byte != m_plain.end() && byte->first - address < length;
         ++byte) {
        out[byte->first - address] = byte->second;
    }
}

void EmulatedCamera::Write(const void* buffer, std::uint64_t address, std::uint64_t length) {
    MutexLock lock(m_mutex);
    Delay(lock);
    if (m_descriptionOverride.empty()) {
        m_model.Bank().Write(buffer, address, length);
        return;
    }
    const auto* in = static_cast<const std::uint8_t*>(buffer);
    for (std::uint64_t i = 0; i < length; ++i) {
        m_plain[address + i] = in[i];
    }
}

std::optional<EmulatedCamera::Image> EmulatedCamera::WaitForImage(const std::atomic<bool>& stop) {
    MutexLock lock(m_mutex);
    for (;;) {
        if (stop || !m_alive) {
            return std::nullopt;
        }
        const Acquisition::Parameters parameters = m_model.AcquisitionParameters();
        const auto due = m_model.Frames().Due(parameters);
        const auto now = Clock::now();
        if (!due) {
            const auto edge = m_model.NextLineEdge(now);
            if (!edge) {
                m_changed.wait(lock);
            } else {
                m_changed.wait_until(lock, *edge);
                if (m_alive && Clock::now() >= *edge) {
                    m_model.TriggerByLines(*edge);
                }
            }
        } else if (*due > now) {
            m_changed.wait_until(lock, *due);
        } else {
            Image image;
            image.frameId = m_model.Frames().Take(now, parameters);
            const std::int64_t timestamp = m_model.NanosecondsSincePowerUp(*due);
            image.seconds = static_cast<double>(timestamp) * 1e-9;
            image.timestampNs = static_cast<std::uint64_t>(m_model.Timestamp(*due));
            image.settings = m_model.CurrentImageSettings();
            image.chunksActive = m_model.ChunksActive();
            if (image.chunksActive) {
                image.chunks = m_model.ChunksOf(*image.settings, image.frameId,
                                                static_cast<std::int64_t>(image.timestampNs), image.seconds);
            }
            image.packetBytes = m_model.PacketPayload();
            image.loss = m_model.Camera().loss;
            image.incompleteEvery = m_model.Camera().incompleteEvery;
            m_model.AfterImage(image.frameId, timestamp);
            return image;
        }
    }
}

void EmulatedCamera::WakeStream() {
    const MutexLock lock(m_mutex);
    m_changed.notify_all();
}

bool EmulatedCamera::TakeStream() {
    const MutexLock lock(m_mutex);
    if (m_streaming) {
        return false;
    }
    m_streaming = true;
    // Nobody knows where another description has its start command: such a camera sends as long as somebody
    // listens.
    if (!m_descriptionOverride.empty()) {
        m_model.StartAcquisition();
    }
    return true;
}

void EmulatedCamera::ReturnStream() {
    const MutexLock lock(m_mutex);
    m_streaming = false;
    if (!m_descriptionOverride.empty()) {
        m_model.StopAcquisition();
    }
}

std::size_t EmulatedCamera::PayloadSize() {
    const MutexLock lock(m_mutex);
    return m_model.PayloadSize();
}

std::shared_ptr<const ImageSettings> EmulatedCamera::CurrentImageSettings() {
    const MutexLock lock(m_mutex);
    return m_model.CurrentImageSettings();
}

} // namespace Norvane::Transport::Emulator
