#pragma once

#include "base/Mutex.h"
#include "core/CameraImpl.h"
#include "core/InterfaceInformation.h"
#include "norvane/Interface.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Norvane::Core {

/// One interface, from its first sight until the system is released; it may leave and come back meanwhile.
/// Owned by the registry, which calls it on the discovery thread; program code calls it on any thread.
class InterfaceImpl final : public IInterface {
public:
    InterfaceImpl(Services services, const Transport::InterfaceRecord& record);

    bool IsValid() const override { return m_valid; }
    CameraList GetCameras(bool update) override;
    GenApi::INodeMap& GetTLNodeMap() override { return m_information.Map(); }
    bool IsUsable() const override { return m_valid && m_information.Get().record.usable; }
    std::string GetInterfaceID() const override { return m_information.Get().record.id; }

    // For the registry.

    /// What the latest picture shows of the interface.
    void Arrive(const Transport::InterfaceRecord& record,
                const std::vector<std::shared_ptr<CameraImpl>>& cameras) EXCLUDES(m_mutex);
    void Leave() EXCLUDES(m_mutex);
    void Shutdown() EXCLUDES(m_mutex);

private:
    Services CurrentServices() const EXCLUDES(m_mutex);

    const std::shared_ptr<std::atomic<int>> m_forcing = std::make_shared<std::atomic<int>>(0);
    InterfaceInformation m_information;
    std::atomic<bool> m_valid{true};

    mutable Mutex m_mutex;
    Services m_services GUARDED_BY(m_mutex);
    std::vector<CameraPtr> m_cameras GUARDED_BY(m_mutex);
};

} // namespace Norvane::Core
