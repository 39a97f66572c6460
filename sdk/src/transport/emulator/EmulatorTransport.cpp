#include "transport/emulator/EmulatorTransport.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "transport/emulator/EmulatedDevice.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::chrono::seconds kRestartTime{1};

std::optional<std::string> ReadFile(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        errno = EISDIR;
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// The name and whereabouts of an interface in the records. Its MAC address is made up and marked as such.
InterfaceRecord RecordOf(const InterfaceSettings& settings) {
    InterfaceRecord record;
    record.id = settings.id;
    record.displayName = settings.name;
    record.usable = settings.usable;
    if (settings.kind == Kind::GigEVision) {
        record.technology = Technology::GigEVision;
        record.ipAddress = settings.address;
        record.subnetMask = settings.netmask;
        record.macAddress = 0x060000000000U | (HashOf(settings.id) & 0xFFFFFFFFFFU);
        record.linkSpeedMbps = 1000;
    } else {
        record.technology = Technology::Usb3Vision;
        record.linkSpeedMbps = 5000;
    }
    return record;
}

const InterfaceSettings* FindInterface(const Settings& settings, const std::string& id) {
    const auto found = std::find_if(settings.interfaces.begin(), settings.interfaces.end(),
                                    [&](const auto& i) { return i.id == id; });
    return found == settings.interfaces.end() ? nullptr : &*found;
}

} // namespace

std::string EmulatorTransport::DefaultPath() {
    if (const char* named = std::getenv("NORVANE_EMULATOR"); named && *named) {
        std::error_code error;
        return std::filesystem::absolute(named, error).string();
    }
    if (const char* home = std::getenv("HOME"); home && *home) {
        return std::string(home) + "/.config/norvane/emulator.ini";
    }
    return {};
}

EmulatorTransport::EmulatorTransport(std::string path) : m_path(std::move(path)) {
    if (m_path.empty()) {
        return;
    }
    m_watcher = std::make_unique<FileWatcher>(m_path, [this] { Reload(); });
    {
        const MutexLock lock(m_door->mutex);
        m_door->watcher = m_watcher.get();
    }
    Reload();
}

void EmulatorTransport::Door::Post(std::function<void()> task, Clock::duration delay) {
    const MutexLock lock(mutex);
    if (watcher) {
        watcher->Post(std::move(task), delay);
    }
}

EmulatorTransport::~EmulatorTransport() {
    {
        const MutexLock lock(m_door->mutex);
        m_door->watcher = nullptr;
    }
    m_watcher.reset();
    std::map<std::string, std::shared_ptr<EmulatedCamera>> cameras;
    {
        const MutexLock lock(m_mutex);
        cameras.swap(m_cameras);
    }
    for (const auto& [serial, camera] : cameras) {
        camera->SetResetHandler(nullptr);
        camera->Unplug();
    }
}

EmulatorTransport::FileState EmulatorTransport::LookAtFile() const {
    struct stat info {};
    if (stat(m_path.c_str(), &info) != 0) {
        return {};
    }
    return {true, info.st_ino, info.st_size,
            std::int64_t{info.st_mtim.tv_sec} * 1000000000 + info.st_mtim.tv_nsec};
}

void EmulatorTransport::Reload() {
    const MutexLock reloading(m_reloading);
    const FileState state = LookAtFile();
    const std::optional<std::string> text = ReadFile(m_path);
    const int error = errno;
    {
        const MutexLock lock(m_mutex);
        m_loaded = m_seen = state;
    }
    if (!text) {
        const bool named = std::getenv("NORVANE_EMULATOR") != nullptr;
        if (state.exists || named) {
            Log(LogLevel::Warning, "emulator: cannot read " + m_path + " (" + std::strerror(error) +
                                       "); there are no emulated cameras");
        }
    } else if (m_text && *m_text == *text) {
        return;
    }
    m_text = text;
    std::vector<Problem> problems;
    const Settings settings =
        Settings::Read(text.value_or(""), std::filesystem::path(m_path).parent_path().string(), problems);
    std::stable_sort(problems.begin(), problems.end(),
                     [](const auto& a, const auto& b) { return a.line < b.line; });
    for (const Problem& problem : problems) {
        Log(LogLevel::Warning, m_path + ":" + std::to_string(problem.line) + ": " + problem.text);
    }
    std::vector<std::shared_ptr<EmulatedCamera>> leaving;
    {
        const MutexLock lock(m_mutex);
        leaving = Rearrange(settings);
    }
    // Without the lock: the cameras' listeners reach into the core.
    for (const auto& camera : leaving) {
        camera->Unplug();
    }
    TellChange();
}

std::vector<std::shared_ptr<EmulatedCamera>> EmulatorTransport::Rearrange(const Settings& settings) {
    std::vector<std::shared_ptr<EmulatedCamera>> leaving;
    std::map<std::string, std::shared_ptr<EmulatedCamera>> staying;
    const Settings before = std::exchange(m_settings, settings);
    // Those that stay come first, so that a new camera is not given the address of one of them.
    for (const CameraSettings& wanted : settings.cameras) {
        const InterfaceSettings& interface = *FindInterface(settings, wanted.interfaceId);
        const auto present = m_cameras.find(wanted.serial);
        if (present == m_cameras.end() || !interface.usable ||
            !present->second->IsSameDevice(wanted, interface)) {
            continue;
        }
        const auto camera = present->second;
        staying[wanted.serial] = camera;
        camera->Apply(wanted, interface);
        const auto old = std::find_if(before.cameras.begin(), before.cameras.end(),
                                      [&](const auto& c) { return c.serial == wanted.serial; });
        const InterfaceSettings* oldInterface = FindInterface(before, wanted.interfaceId);
        if (old == before.cameras.end() || !oldInterface || old->address != wanted.address ||
            old->netmask != wanted.netmask || oldInterface->address != interface.address ||
            oldInterface->netmask != interface.netmask) {
            camera->SetAddress(wanted.address ? wanted.address : FreeAddress(interface, wanted.serial),
                               wanted.netmask ? wanted.netmask : interface.netmask);
        }
    }
    for (const auto& [serial, camera] : m_cameras) {
        if (staying.find(serial) == staying.end()) {
            leaving.push_back(camera);
        }
    }
    m_cameras = std::move(staying);
    for (const CameraSettings& wanted : settings.cameras) {
        const InterfaceSettings& interface = *FindInterface(settings, wanted.interfaceId);
        if (interface.usable && m_cameras.find(wanted.serial) == m_cameras.end() &&
            m_restarting.count(wanted.serial) == 0) {
            Plug(wanted, interface);
        }
    }
    return leaving;
}

void EmulatorTransport::Plug(const CameraSettings& camera, const InterfaceSettings& interface) {
    std::string description;
    if (!camera.descriptionPath.empty()) {
        if (const auto text = ReadFile(camera.descriptionPath); text && !text->empty()) {
            description = *text;
        } else {
            Log(LogLevel::Warning, m_path + ": camera " + camera.serial + ": cannot read the description " +
                                       camera.descriptionPath + " (" +
                                       (text ? "it is empty" : std::strerror(errno)) +
                                       "); the camera keeps its own");
        }
    }
    auto& flash = m_flash[camera.serial];
    if (!flash) {
        flash = std::make_shared<Flash>();
    }
    auto plugged = std::make_shared<EmulatedCamera>(
        camera, interface, std::move(description), flash,
        [door = m_door](std::function<void()> task) { door->Post(std::move(task)); });
    plugged->SetResetHandler(
        [this, door = m_door, serial = camera.serial] { door->Post([this, serial] { Restart(serial); }); });
    if (const Flash::PersistentIp& own = flash->persistentIp; own.enabled && own.address != 0) {
        plugged->SetAddress(own.address, own.netmask);
    } else {
        plugged->SetAddress(camera.address ? camera.address : FreeAddress(interface, camera.serial),
                            camera.netmask ? camera.netmask : interface.netmask);
    }
    m_cameras[camera.serial] = plugged;
}

void EmulatorTransport::Restart(const std::string& serial) {
    std::shared_ptr<EmulatedCamera> leaving;
    {
        const MutexLock lock(m_mutex);
        const auto found = m_cameras.find(serial);
        if (found == m_cameras.end()) {
            return;
        }
        leaving = found->second;
        m_cameras.erase(found);
        m_restarting.insert(serial);
    }
    leaving->Unplug();
    TellChange();
    m_door->Post(
        [this, serial] {
            {
                const MutexLock lock(m_mutex);
                m_restarting.erase(serial);
                Rearrange(Settings(m_settings));
            }
            TellChange();
        },
        kRestartTime);
}

std::uint32_t EmulatorTransport::FreeAddress(const InterfaceSettings& interface,
                                             const std::string& serial) const {
    const std::uint32_t network = interface.address & interface.netmask, hosts = ~interface.netmask;
    std::set<std::uint32_t> taken{interface.address};
    for (const CameraSettings& camera : m_settings.cameras) {
        if (camera.serial != serial) {
            taken.insert(camera.address);
        }
    }
    for (const auto& [other, camera] : m_cameras) {
        if (other != serial) {
            taken.insert(camera->Address());
        }
    }
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(hosts, 65536); ++i) {
        const std::uint32_t host = (i + 20) % hosts;
        if (host != 0 && taken.count(network | host) == 0) {
            return network | host;
        }
    }
    return network | 1;
}

ScanResult EmulatorTransport::Scan() {
    if (m_path.empty()) {
        return {};
    }
    // A second look, for file systems that tell nothing: what stood still since the last scan and is not what
    // was loaded is loaded now.
    const FileState state = LookAtFile();
    ScanResult result;
    const MutexLock lock(m_mutex);
    if (state != m_loaded && state == m_seen) {
        m_loaded = state;
        m_door->Post([this] { Reload(); });
    }
    m_seen = state;
    for (const InterfaceSettings& interface : m_settings.interfaces) {
        result.interfaces.push_back(RecordOf(interface));
    }
    for (const CameraSettings& camera : m_settings.cameras) {
        if (const auto found = m_cameras.find(camera.serial); found != m_cameras.end()) {
            result.devices.push_back(found->second->Record());
        }
    }
    return result;
}

void EmulatorTransport::SetChangeHandler(std::function<void()> handler) {
    const MutexLock lock(m_mutex);
    m_changeHandler = std::move(handler);
}

void EmulatorTransport::TellChange() {
    std::function<void()> handler;
    {
        const MutexLock lock(m_mutex);
        handler = m_changeHandler;
    }
    if (handler) {
        handler();
    }
}

std::shared_ptr<IDevice> EmulatorTransport::Open(const std::string& deviceId) {
    const MutexLock lock(m_mutex);
    const auto found = m_cameras.find(deviceId);
    if (found == m_cameras.end()) {
        throw Exception(Error::InvalidId,
                        "there is no emulated camera " + deviceId + " any more; look for cameras again");
    }
    return std::make_shared<EmulatedDevice>(found->second);
}

void EmulatorTransport::ForceIp(const std::string& deviceId) {
    {
        const MutexLock lock(m_mutex);
        const auto found = m_cameras.find(deviceId);
        if (found == m_cameras.end()) {
            throw Exception(Error::InvalidId,
                            "there is no emulated camera " + deviceId + " any more; look for cameras again");
        }
        const auto camera = std::find_if(m_settings.cameras.begin(), m_settings.cameras.end(),
                                         [&](const auto& c) { return c.serial == deviceId; });
        const InterfaceSettings& interface = *FindInterface(m_settings, camera->interfaceId);
        if (interface.kind != Kind::GigEVision) {
            throw Exception(Error::NotImplemented, "a USB camera has no address that could be forced");
        }
        const std::uint32_t address = found->second->Address();
        const std::uint32_t host = address & ~interface.netmask;
        if ((address & interface.netmask) == (interface.address & interface.netmask) && host != 0 &&
            host != ~interface.netmask && found->second->Netmask() == interface.netmask) {
            return; // it has a valid address already
        }
        found->second->SetAddress(FreeAddress(interface, deviceId), interface.netmask);
    }
    TellChange();
}

} // namespace Norvane::Transport::Emulator

namespace Norvane::Transport {

std::unique_ptr<ITransport> CreateEmulatorTransport() {
    return std::make_unique<Emulator::EmulatorTransport>(Emulator::EmulatorTransport::DefaultPath());
}

} // namespace Norvane::Transport
