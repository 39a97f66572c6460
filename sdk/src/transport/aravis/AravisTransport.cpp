#include "transport/aravis/AravisTransport.h"

#include "norvane/Log.h"
#include "transport/aravis/ForceIp.h"

#include <algorithm>

namespace Norvane::Transport {
namespace {

/// Whether the camera's address is a host's address of its adapter's network.
bool HasValidAddress(const GevCamera& camera) {
    const std::uint32_t mask = camera.adapter.record.subnetMask;
    const std::uint32_t host = camera.record.ipAddress & ~mask;
    return camera.adapter.Holds(camera.record.ipAddress) && camera.record.subnetMask == mask && host != 0 &&
           host != ~mask;
}

} // namespace

std::unique_ptr<ITransport> CreateAravisTransport() {
    return std::make_unique<AravisTransport>();
}

AravisTransport::AravisTransport() {
    arv_debug_enable("all:0"); // its warnings would go to standard error, and each comes to us as an error
}

ScanResult AravisTransport::Scan() {
    ScanResult result;
    try {
        ScanGev(result);
        m_gevTrouble.clear();
    } catch (const std::exception& error) {
        ReportOnce(m_gevTrouble, error.what());
    }
    try {
        ScanUsb(result);
        m_usbTrouble.clear();
    } catch (const std::exception& error) {
        ReportOnce(m_usbTrouble, std::string("Looking for USB3 Vision cameras failed: ") + error.what());
    }
    return result;
}

void AravisTransport::ReportOnce(std::string& last, const std::string& trouble) {
    if (last != trouble) { // the next scan fails in the same way, a second from now
        Log(LogLevel::Warning, trouble);
        last = trouble;
    }
}

void AravisTransport::ScanGev(ScanResult& result) {
    if (!m_gevDiscovery) {
        m_gevDiscovery = std::make_unique<GevDiscovery>();
    }
    const std::vector<Adapter> adapters = ListAdapters();
    const auto cameras =
        m_gevDiscovery->Scan(adapters, [this](const std::string& deviceId) { return HeldState(deviceId); });

    for (const Adapter& adapter : adapters) {
        const bool hasCamera = std::any_of(cameras.begin(), cameras.end(), [&](const auto& camera) {
            return camera.second.record.interfaceId == adapter.record.id;
        });
        if (!adapter.loopback || hasCamera) {
            result.interfaces.push_back(adapter.record);
        }
    }
    for (const auto& [id, camera] : cameras) {
        result.devices.push_back(camera.record);
        if (const auto open = FindOpen(id); open && open->IsAlive()) {
            result.devices.back().access = open->CurrentAccess();
        }
    }
    const MutexLock lock(m_mutex);
    m_gevCameras = cameras;
    for (const auto& [id, camera] : cameras) {
        const auto promise = m_promisedAddresses.find(id);
        if (promise != m_promisedAddresses.end() && promise->second == camera.record.ipAddress) {
            m_promisedAddresses.erase(promise);
        }
    }
    m_adapterAddresses.clear();
    for (const Adapter& adapter : adapters) {
        m_adapterAddresses.insert(adapter.record.ipAddress);
    }
}

void AravisTransport::ScanUsb(ScanResult& result) {
    const UsbTree tree = ReadUsbTree();
    const auto& cameras = m_usbDiscovery.Scan(tree);
    result.interfaces.insert(result.interfaces.end(), tree.controllers.begin(), tree.controllers.end());
    for (const auto& [id, camera] : cameras) {
        result.devices.push_back(camera.record);
    }
    const MutexLock lock(m_mutex);
    m_usbCameras = cameras;
}

std::shared_ptr<AravisDevice> AravisTransport::FindOpen(const std::string& deviceId) {
    const MutexLock lock(m_mutex);
    const auto found = m_open.find(deviceId);
    return found == m_open.end() ? nullptr : found->second.lock();
}

GevDiscovery::Held AravisTransport::HeldState(const std::string& deviceId) {
    const auto device = FindOpen(deviceId);
    if (!device) {
        return GevDiscovery::Held::No;
    }
    return device->IsAlive() ? GevDiscovery::Held::Alive : GevDiscovery::Held::Lost;
}

std::optional<DeviceTarget> AravisTransport::FindTarget(const std::string& deviceId) {
    const MutexLock lock(m_mutex);
    DeviceTarget target;
    if (const auto gev = m_gevCameras.find(deviceId); gev != m_gevCameras.end()) {
        const GevCamera& camera = gev->second;
        target.label = camera.record.model + " " + camera.record.serial + " at " +
                       FormatIpAddress(camera.record.ipAddress);
        target.technology = Technology::GigEVision;
        target.adapterAddress = camera.adapter.record.ipAddress;
        target.deviceAddress = camera.record.ipAddress;
        return target;
    }
    if (const auto usb = m_usbCameras.find(deviceId); usb != m_usbCameras.end()) {
        const UsbCamera& camera = usb->second;
        target.label = camera.record.model + " " + camera.record.serial + " on " + camera.record.interfaceId;
        target.technology = Technology::Usb3Vision;
        target.guid = camera.guid;
        target.sysfsPath = camera.sysfsPath;
        return target;
    }
    return std::nullopt;
}

std::shared_ptr<IDevice> AravisTransport::Open(const std::string& deviceId) {
    const auto target = FindTarget(deviceId);
    if (!target) {
        throw Exception(Error::InvalidId, "There is no camera " + deviceId + "; refresh the list");
    }
    const auto device = std::make_shared<AravisDevice>(*target);
    const MutexLock lock(m_mutex);
    m_open[deviceId] = device;
    return device;
}

void AravisTransport::ForceIp(const std::string& deviceId) {
    std::optional<GevCamera> camera;
    std::set<std::uint32_t> taken;
    {
        const MutexLock lock(m_mutex);
        if (m_usbCameras.count(deviceId) != 0) {
            throw Exception(Error::NotImplemented,
                            deviceId + ": a USB3 Vision camera has no network address");
        }
        taken = m_adapterAddresses;
        for (const auto& [id, other] : m_gevCameras) {
            if (id == deviceId) {
                camera = other;
            } else {
                taken.insert(other.record.ipAddress);
            }
        }
    }
    if (!camera) {
        throw Exception(Error::InvalidId, "There is no camera " + deviceId + "; refresh the list");
    }
    if (HasValidAddress(*camera) && taken.count(camera->record.ipAddress) == 0) {
        return; // another one would only disturb those who use it
    }
    try {
        ForceIpAddress(*camera, taken, [&](std::uint32_t address) { return Promise(deviceId, address); });
    } catch (...) {
        const MutexLock lock(m_mutex);
        m_promisedAddresses.erase(deviceId);
        throw;
    }
}

bool AravisTransport::Promise(const std::string& deviceId, std::uint32_t address) {
    const MutexLock lock(m_mutex);
    const bool taken =
        std::any_of(m_promisedAddresses.begin(), m_promisedAddresses.end(), [&](const auto& promise) {
            return promise.first != deviceId && promise.second == address;
        });
    if (!taken) {
        m_promisedAddresses[deviceId] = address;
    }
    return !taken;
}

} // namespace Norvane::Transport
