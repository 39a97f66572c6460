#include "core/Registry.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <algorithm>

namespace Norvane::Core {
namespace {

template <class T>
bool Contains(const std::vector<T>& list, const T& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

const Transport::InterfaceRecord* FindRecord(const Scan& scan, const std::string& id) {
    const auto& records = scan.found.interfaces;
    const auto it =
        std::find_if(records.begin(), records.end(), [&id](const auto& record) { return record.id == id; });
    return it == records.end() ? nullptr : &*it;
}

Exception AlreadyRegistered() {
    return Exception(Error::InvalidParameter, "this event handler is registered already");
}

} // namespace

Registry::Registry(std::vector<Services> services, EventQueue& events)
    : m_services(std::move(services)), m_events(events) {}

void Registry::Apply(const Picture& picture) {
    State present;
    {
        MutexLock lock(m_mutex);
        present = m_present;
    }
    std::vector<Camera> lost;
    for (const Camera& camera : present.cameras) {
        if (camera->TakeLoss()) {
            lost.push_back(camera);
        }
    }
    State next;
    for (std::size_t transport = 0; transport < picture.size(); ++transport) {
        if (picture[transport]) {
            ApplyScan(transport, *picture[transport], present, next);
        }
    }
    for (const Camera& camera : present.cameras) {
        if (!Contains(next.cameras, camera)) {
            camera->Leave();
        }
    }
    for (const Interface& interface : present.interfaces) {
        if (!Contains(next.interfaces, interface)) {
            interface->Leave();
        }
    }
    const bool complete = std::find(picture.begin(), picture.end(), nullptr) == picture.end();
    Publish(present, lost, next, complete);
}

void Registry::ApplyScan(std::size_t transport, const Scan& scan, const State& present, State& next) {
    std::vector<Camera> cameras;
    for (const Transport::DeviceRecord& record : scan.found.devices) {
        if (const Transport::InterfaceRecord* interface = FindRecord(scan, record.interfaceId)) {
            const DeviceView view = ViewOf(transport, record, *interface);
            const Camera camera = FindCamera(transport, view);
            if (!Contains(cameras, camera) && camera->Arrive(view, scan.start)) {
                cameras.push_back(camera);
            }
        }
    }
    // One lost reply must not disturb a camera that is open and answers.
    for (const auto& [key, camera] : m_cameras) {
        if (key.first == transport && Contains(present.cameras, camera) && !Contains(cameras, camera) &&
            camera->IsHeld() && FindRecord(scan, camera->InterfaceId())) {
            cameras.push_back(camera);
        }
    }
    for (const Transport::InterfaceRecord& record : scan.found.interfaces) {
        const Interface interface = FindInterface(transport, record);
        if (Contains(next.interfaces, interface)) {
            continue;
        }
        std::vector<Camera> onInterface;
        std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(onInterface),
                     [&record](const Camera& camera) { return camera->InterfaceId() == record.id; });
        interface->Arrive(record, onInterface);
        next.interfaces.push_back(interface);
    }
    next.cameras.insert(next.cameras.end(), cameras.begin(), cameras.end());
}

Registry::Interface Registry::FindInterface(std::size_t transport, const Transport::InterfaceRecord& record) {
    Interface& interface = m_interfaces[{transport, record.id}];
    if (!interface) {
        interface = std::make_shared<InterfaceImpl>(m_services[transport], record);
    }
    return interface;
}

Registry::Camera Registry::FindCamera(std::size_t transport, const DeviceView& view) {
    Camera& camera = m_cameras[{transport, view.record.id}];
    if (!camera) {
        camera = std::make_shared<CameraImpl>(m_services[transport], view);
        MutexLock lock(m_mutex);
        m_everyCamera.push_back(camera);
    }
    return camera;
}

DeviceView Registry::ViewOf(std::size_t transport, const Transport::DeviceRecord& record,
                            const Transport::InterfaceRecord& interface) {
    DeviceView view;
    view.record = record;
    view.number = m_numbers.NumberFor(std::to_string(transport) + "/" + record.id, record);
    view.wrongSubnet = IsOnWrongSubnet(record, interface);
    view.linkSpeedMbps = interface.linkSpeedMbps;
    return view;
}

void Registry::Publish(const State& present, const std::vector<Camera>& lost, const State& next,
                       bool complete) {
    MutexLock lock(m_mutex);
    m_present = next;
    const bool tell = m_listed || m_complete;
    m_complete = m_complete || complete;
    if (!tell) {
        return;
    }
    const auto wasThere = [&present, &lost](const Camera& camera) {
        return Contains(present.cameras, camera) && !Contains(lost, camera);
    };
    for (const Camera& camera : present.cameras) {
        if (Contains(lost, camera) || !Contains(next.cameras, camera)) {
            m_events.Post([this, event = ++m_eventNumber, number = camera->GetDeviceNumber()] {
                m_devices.Call(event, [number](InterfaceEventHandler& h) { h.OnDeviceRemoval(number); });
            });
        }
    }
    for (const Interface& interface : present.interfaces) {
        if (!Contains(next.interfaces, interface)) {
            m_events.Post([this, event = ++m_eventNumber, id = interface->GetInterfaceID()] {
                m_removals.Call(event, [&id](InterfaceRemovalEventHandler& h) { h.OnInterfaceRemoval(id); });
            });
        }
    }
    for (const Interface& interface : next.interfaces) {
        if (!Contains(present.interfaces, interface)) {
            m_events.Post([this, event = ++m_eventNumber, id = interface->GetInterfaceID()] {
                m_arrivals.Call(event, [&id](InterfaceArrivalEventHandler& h) { h.OnInterfaceArrival(id); });
            });
        }
    }
    for (const Camera& camera : next.cameras) {
        if (!wasThere(camera)) {
            m_events.Post([this, event = ++m_eventNumber, number = camera->GetDeviceNumber()] {
                m_devices.Call(event, [number](InterfaceEventHandler& h) { h.OnDeviceArrival(number); });
            });
        }
    }
}

std::vector<InterfacePtr> Registry::Interfaces() {
    std::vector<InterfacePtr> handles;
    MutexLock lock(m_mutex);
    m_listed = true;
    for (const Interface& interface : m_present.interfaces) {
        handles.emplace_back(interface);
    }
    return handles;
}

std::vector<CameraPtr> Registry::Cameras() {
    std::vector<CameraPtr> handles;
    MutexLock lock(m_mutex);
    m_listed = true;
    for (const Camera& camera : m_present.cameras) {
        handles.emplace_back(camera);
    }
    return handles;
}

void Registry::AddSystemHandler(EventHandler& handler) {
    auto* arrival = dynamic_cast<InterfaceArrivalEventHandler*>(&handler);
    auto* removal = dynamic_cast<InterfaceRemovalEventHandler*>(&handler);
    if (!arrival && !removal) {
        throw Exception(Error::InvalidParameter,
                        "an event handler of the system must be an InterfaceArrivalEventHandler or an "
                        "InterfaceRemovalEventHandler");
    }
    MutexLock lock(m_mutex);
    if ((arrival && !m_arrivals.Add(*arrival, m_eventNumber)) ||
        (removal && !m_removals.Add(*removal, m_eventNumber))) {
        throw AlreadyRegistered();
    }
}

void Registry::RemoveSystemHandler(const EventHandler& handler) {
    m_arrivals.Remove(handler);
    m_removals.Remove(handler);
}

void Registry::AddDeviceHandler(EventHandler& handler) {
    auto* devices = dynamic_cast<InterfaceEventHandler*>(&handler);
    if (!devices) {
        throw Exception(Error::InvalidParameter,
                        "an event handler of interfaces must be an InterfaceEventHandler");
    }
    MutexLock lock(m_mutex);
    if (!m_devices.Add(*devices, m_eventNumber)) {
        throw AlreadyRegistered();
    }
}

void Registry::RemoveDeviceHandler(const EventHandler& handler) {
    m_devices.Remove(handler);
}

void Registry::Poll(std::int64_t elapsedMs) {
    std::vector<Camera> cameras;
    {
        MutexLock lock(m_mutex);
        cameras = m_present.cameras;
    }
    for (const Camera& camera : cameras) {
        camera->Poll(elapsedMs);
    }
}

void Registry::Shutdown() {
    std::vector<Camera> cameras;
    {
        MutexLock lock(m_mutex);
        m_present = {};
        cameras = m_everyCamera;
    }
    for (const Camera& camera : cameras) {
        camera->Shutdown();
    }
    for (const auto& [key, interface] : m_interfaces) {
        interface->Shutdown();
    }
}

std::size_t Registry::CountHandles() const {
    std::size_t count = 0;
    for (const auto& [key, interface] : m_interfaces) {
        count += static_cast<std::size_t>(interface.use_count()) - 1;
    }
    for (const auto& [key, camera] : m_cameras) {
        count += static_cast<std::size_t>(camera.use_count()) - 2; // here and in m_everyCamera
    }
    return count;
}

} // namespace Norvane::Core
