#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/emulator/EmulatedCamera.h"

#include <functional>
#include <memory>
#include <string>

namespace Norvane::Transport::Emulator {

/// An emulated camera that a program has opened. The first one controls it, the others and those of a camera
/// with `access = RO` only read. Owned by the core; any thread may call it.
class EmulatedDevice final : public IDevice {
public:
    explicit EmulatedDevice(std::shared_ptr<EmulatedCamera> camera);
    ~EmulatedDevice() override;

    GenApi::EAccessMode GetAccessMode() const override;
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;
    std::string Description() override { return m_camera->Description(); }
    Access CurrentAccess() const override;
    bool IsAlive() const override { return m_camera->IsAlive(); }
    std::unique_ptr<IStream> OpenStream(const StreamSettings& settings) override;
    void SetLostHandler(std::function<void()> handler) override;

private:
    /// Shared with the camera's listener, which may run while the device goes.
    struct LostState {
        Mutex mutex;
        bool lost GUARDED_BY(mutex) = false;
        std::function<void()> handler GUARDED_BY(mutex);
    };
    static void Tell(LostState& state);

    const std::shared_ptr<EmulatedCamera> m_camera;
    const bool m_inControl;
    const std::shared_ptr<LostState> m_lost = std::make_shared<LostState>();
    std::uint64_t m_listener = 0;
};

} // namespace Norvane::Transport::Emulator
