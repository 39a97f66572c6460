#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"

#include <atomic>
#include <memory>

namespace Norvane::Core {

/// A port that leads to a device while one is open, and fails at once otherwise. It lets a node map, and with
/// it every INode pointer and callback, outlive closing, losing and reopening a camera. Any thread; the
/// device is called with no lock of this class held.
class SwitchablePort final : public GenApi::IPort {
public:
    /// Null closes the port.
    void Switch(std::shared_ptr<Transport::IDevice> device) EXCLUDES(m_mutex);

    /// That of the last device while closed: another mode would make nodes forget what they have cached.
    GenApi::EAccessMode GetAccessMode() const override;
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    std::shared_ptr<Transport::IDevice> Device() const EXCLUDES(m_mutex);
    std::shared_ptr<Transport::IDevice> OpenDevice() const;

    std::atomic<GenApi::EAccessMode> m_lastMode{GenApi::NA};
    mutable Mutex m_mutex;
    std::shared_ptr<Transport::IDevice> m_device GUARDED_BY(m_mutex);
};

} // namespace Norvane::Core
