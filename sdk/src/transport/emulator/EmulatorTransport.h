#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/emulator/EmulatedCamera.h"
#include "transport/emulator/FileWatcher.h"
#include "transport/emulator/Settings.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The interfaces and cameras of a description file, which may change at any time. Owned by the system; the
/// discovery thread scans, the file watcher's thread reloads, any thread opens.
class EmulatorTransport : public ITransport {
public:
    /// `path` names the description file, which need not exist; empty for no cameras at all.
    explicit EmulatorTransport(std::string path);
    ~EmulatorTransport() override;

    ScanResult Scan() override;
    void SetChangeHandler(std::function<void()> handler) override;
    std::shared_ptr<IDevice> Open(const std::string& deviceId) override;
    void ForceIp(const std::string& deviceId) override;

    /// The file that NORVANE_EMULATOR names, else .config/norvane/emulator.ini under HOME, else empty.
    static std::string DefaultPath();

private:
    /// What tells one state of a file from another without reading it.
    struct FileState {
        bool exists = false;
        std::uint64_t inode = 0;
        std::int64_t size = 0, changedNs = 0;
        bool operator==(const FileState&) const = default;
    };
    FileState LookAtFile() const;

    void Reload();
    /// Makes the cameras be those of the settings. @returns those that leave
    std::vector<std::shared_ptr<EmulatedCamera>> Rearrange(const Settings& settings) REQUIRES(m_mutex);
    void Plug(const CameraSettings& camera, const InterfaceSettings& interface) REQUIRES(m_mutex);
    void Restart(const std::string& serial);
    std::uint32_t FreeAddress(const InterfaceSettings& interface, const std::string& serial) const
        REQUIRES(m_mutex);
    void TellChange() EXCLUDES(m_mutex);

    const std::string m_path;
    Mutex m_reloading; ///< one reload at a time; taken before m_mutex
    std::optional<std::string> m_text GUARDED_BY(m_reloading);
    Mutex m_mutex;
    FileState m_loaded GUARDED_BY(m_mutex), m_seen GUARDED_BY(m_mutex);
    Settings m_settings GUARDED_BY(m_mutex);
    std::map<std::string, std::shared_ptr<EmulatedCamera>> m_cameras GUARDED_BY(m_mutex);
    std::map<std::string, std::shared_ptr<Flash>>
        m_flash GUARDED_BY(m_mutex); ///< by serial, also of unplugged cameras
    std::set<std::string> m_restarting GUARDED_BY(m_mutex);
    std::function<void()> m_changeHandler GUARDED_BY(m_mutex);
    std::unique_ptr<FileWatcher> m_watcher; ///< null without a path
    /// The way to the watcher's thread for cameras, which may outlive the transport.
    struct Door {
        Mutex mutex;
        FileWatcher* watcher GUARDED_BY(mutex) = nullptr;
        void Post(std::function<void()> task, Clock::duration delay = {}) EXCLUDES(mutex);
    };
    const std::shared_ptr<Door> m_door = std::make_shared<Door>();
};

} // namespace Norvane::Transport::Emulator
