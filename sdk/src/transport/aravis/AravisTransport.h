#pragma once

#include "base/Mutex.h"
#include "transport/Transport.h"
#include "transport/aravis/AravisDevice.h"
#include "transport/aravis/GevDiscovery.h"
#include "transport/aravis/UsbDiscovery.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Norvane::Transport {

/// Reaches GigE Vision and USB3 Vision cameras. Discovery is our own (see GevDiscovery): Aravis's blocks and
/// tells neither the adapter nor mask and gateway; opening and streaming is Aravis's.
/// Owned by the system. Scan is called by one thread at a time, the rest by any.
class AravisTransport final : public ITransport {
public:
    AravisTransport();

    ScanResult Scan() override;
    void SetChangeHandler(std::function<void()>) override {} // nothing here changes between two scans
    std::shared_ptr<IDevice> Open(const std::string& deviceId) override;
    void ForceIp(const std::string& deviceId) override;

private:
    void ScanGev(ScanResult& result);
    void ScanUsb(ScanResult& result);
    std::shared_ptr<AravisDevice> FindOpen(const std::string& deviceId);
    GevDiscovery::Held HeldState(const std::string& deviceId);
    std::optional<DeviceTarget> FindTarget(const std::string& deviceId);
    bool Promise(const std::string& deviceId, std::uint32_t address);
    void ReportOnce(std::string& last, const std::string& trouble);

    Mutex m_mutex;
    std::map<std::string, std::weak_ptr<AravisDevice>> m_open GUARDED_BY(m_mutex);
    std::map<std::string, GevCamera> m_gevCameras GUARDED_BY(m_mutex);
    std::map<std::string, UsbCamera> m_usbCameras GUARDED_BY(m_mutex);
    std::set<std::uint32_t> m_adapterAddresses GUARDED_BY(m_mutex);
    /// Addresses that cameras are getting, by device, until a scan finds them there: several cameras may get
    /// theirs at once.
    std::map<std::string, std::uint32_t> m_promisedAddresses GUARDED_BY(m_mutex);

    // Used by Scan only.
    std::unique_ptr<GevDiscovery> m_gevDiscovery;
    UsbDiscovery m_usbDiscovery;
    std::string m_gevTrouble;
    std::string m_usbTrouble;
};

} // namespace Norvane::Transport
