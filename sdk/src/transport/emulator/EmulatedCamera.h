#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/emulator/CameraModel.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Norvane::Transport::Emulator {

/// One emulated camera while it is plugged in: the transport owns it, opened devices and streams share it.
/// Any thread may call it; one mutex guards the registers and all behaviour behind them.
class EmulatedCamera {
public:
    using Poster = std::function<void(std::function<void()>)>;

    /// `descriptionOverride` is the text of another description, over a plain register file; empty for the
    /// own one. `post` runs a task on the transport's thread.
    EmulatedCamera(const CameraSettings& camera, const InterfaceSettings& interface,
                   std::string descriptionOverride, std::shared_ptr<Flash> flash, Poster post);

    /// Takes changed settings over.
    void Apply(const CameraSettings& camera, const InterfaceSettings& interface) EXCLUDES(m_mutex);
    /// Settings that cannot change while the camera runs: a camera with others is another camera.
    bool IsSameDevice(const CameraSettings& camera, const InterfaceSettings& interface) const
        EXCLUDES(m_mutex);
    DeviceRecord Record() const EXCLUDES(m_mutex);
    std::uint32_t Address() const EXCLUDES(m_mutex);
    std::uint32_t Netmask() const EXCLUDES(m_mutex);
    void SetAddress(std::uint32_t address, std::uint32_t netmask) EXCLUDES(m_mutex);

    /// The camera leaves: accesses fail from now on, streams end, and the listeners are called on this
    /// thread.
    void Unplug() EXCLUDES(m_mutex);
    bool IsAlive() const { return m_alive; }
    /// `listener` is called once when the camera leaves. @returns a handle for RemoveLostListener; 0 when it
    /// has left.
    std::uint64_t AddLostListener(std::function<void()> listener) EXCLUDES(m_mutex);
    void RemoveLostListener(std::uint64_t handle) EXCLUDES(m_mutex);
    void Post(std::function<void()> task) const { m_post(std::move(task)); }
    /// Asks the transport, on the caller's thread, to take the camera away and bring it back.
    void SetResetHandler(std::function<void()> handler) EXCLUDES(m_mutex);

    /// One program controls a camera, others may look on.
    bool TakeControl() { return !m_controlled.exchange(true); }
    void ReturnControl() { m_controlled = false; }
    bool IsReadOnly() const EXCLUDES(m_mutex);

    std::string Description() const EXCLUDES(m_mutex);
    /// @throws Exception (Io) when the camera left, else as RegisterBank does.
    void Read(void* buffer, std::uint64_t address, std::uint64_t length) EXCLUDES(m_mutex);
    void Write(const void* buffer, std::uint64_t address, std::uint64_t length) EXCLUDES(m_mutex);

    // For the stream.

    /// An image that is due, and how its way over the link is to go.
    struct Image {
        std::shared_ptr<const ImageSettings> settings;
        std::uint64_t frameId = 0;
        std::uint64_t timestampNs = 0;
        double seconds = 0.0; ///< since power-up
        bool chunksActive = false;
        ChunkLayout::Chunks chunks;
        std::uint32_t packetBytes = 0; ///< of payload in one packet
        double loss = 0.0;
        std::uint32_t incompleteEvery = 0;
    };
    /// Waits until an image is due. Nothing when `stop` was set (and WakeStream called) or the camera left.
    std::optional<Image> WaitForImage(const std::atomic<bool>& stop) EXCLUDES(m_mutex);
    void WakeStream() EXCLUDES(m_mutex);
    /// A camera has one stream. False while another one runs.
    bool TakeStream() EXCLUDES(m_mutex);
    void ReturnStream() EXCLUDES(m_mutex);
    std::size_t PayloadSize() EXCLUDES(m_mutex);
    std::shared_ptr<const ImageSettings> CurrentImageSettings() EXCLUDES(m_mutex);
    bool IsGigE() const { return m_gigE; }
    bool IsBigEndian() const { return m_gigE; }
    std::uint64_t Seed() const { return m_seed; }

private:
    void Delay(MutexLock& lock) REQUIRES(m_mutex);

    mutable Mutex m_mutex;
    ConditionVariable m_changed;
    CameraModel m_model GUARDED_BY(m_mutex);
    const std::string m_descriptionOverride;
    const Poster m_post;
    std::map<std::uint64_t, std::uint8_t>
        m_plain GUARDED_BY(m_mutex); ///< the register file of another description
    const bool m_gigE;
    const std::uint64_t m_seed;
    std::uint32_t m_address GUARDED_BY(m_mutex) = 0, m_netmask GUARDED_BY(m_mutex) = 0;
    std::atomic<bool> m_alive{true};
    std::atomic<bool> m_controlled{false};
    bool m_streaming GUARDED_BY(m_mutex) = false;
    std::uint64_t m_nextListener GUARDED_BY(m_mutex) = 1;
    std::map<std::uint64_t, std::function<void()>> m_listeners GUARDED_BY(m_mutex);
};

} // namespace Norvane::Transport::Emulator
