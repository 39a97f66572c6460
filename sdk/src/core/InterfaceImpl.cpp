#include "core/InterfaceImpl.h"

#include <utility>

namespace Norvane::Core {

InterfaceImpl::InterfaceImpl(Services services, const Transport::InterfaceRecord& record)
    : m_information({record, {}, 0}, {[this] { CurrentServices().rescan(); },
                                      [this](const std::string& deviceId) {
                                          StartForceIp(CurrentServices(), deviceId, m_forcing);
                                      },
                                      [forcing = m_forcing] { return *forcing > 0; }}),
      m_services(std::move(services)) {}

CameraList InterfaceImpl::GetCameras(bool update) {
    if (update) {
        CurrentServices().rescan();
    }
    MutexLock lock(m_mutex);
    return CameraList(m_cameras);
}

void InterfaceImpl::Arrive(const Transport::InterfaceRecord& record,
                           const std::vector<std::shared_ptr<CameraImpl>>& cameras) {
    std::vector<CameraPtr> handles;
    std::vector<InterfaceView::Device> devices;
    for (const std::shared_ptr<CameraImpl>& camera : cameras) {
        const DeviceView view = camera->View();
        handles.emplace_back(camera);
        devices.push_back({view.record.id, view.record.serial, view.record.model, view.number});
    }
    {
        MutexLock lock(m_mutex);
        m_cameras.swap(handles);
    }
    m_valid = true;
    m_information.Update([&record, &devices](InterfaceView& view) {
        view.record = record;
        view.devices = devices;
    });
}

void InterfaceImpl::Leave() {
    m_valid = false;
    std::vector<CameraPtr> handles;
    {
        MutexLock lock(m_mutex);
        m_cameras.swap(handles);
    }
    m_information.Update([](InterfaceView& view) { view.devices.clear(); });
}

void InterfaceImpl::Shutdown() {
    m_valid = false;
    MutexLock lock(m_mutex);
    m_cameras.clear();
    m_services = {nullptr, nullptr, [] {}};
}

Services InterfaceImpl::CurrentServices() const {
    MutexLock lock(m_mutex);
    return m_services;
}

} // namespace Norvane::Core
