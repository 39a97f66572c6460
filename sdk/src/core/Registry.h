#pragma once

#include "base/Mutex.h"
#include "core/CameraImpl.h"
#include "core/Discovery.h"
#include "core/EventQueue.h"
#include "core/HandlerList.h"
#include "core/Identity.h"
#include "core/InterfaceImpl.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Norvane::Core {

/// All interfaces and cameras of the system by their stable identity, the lists of those present, and the
/// events that tell two pictures apart. An object that comes back is the one that left. Owned by the system;
/// Apply is called on the discovery thread, the rest on any thread.
class Registry {
public:
    /// @param services  by transport, in the order of the picture.
    Registry(std::vector<Services> services, EventQueue& events);

    /// Makes `picture` the present state and queues the events of what changed. Nothing that the program has
    /// not been told of by a list or an event counts as having arrived.
    void Apply(const Picture& picture) EXCLUDES(m_mutex);

    std::vector<InterfacePtr> Interfaces() EXCLUDES(m_mutex);
    std::vector<CameraPtr> Cameras() EXCLUDES(m_mutex);

    /// @throws Exception (InvalidParameter) for a handler of another kind, or registered already.
    void AddSystemHandler(EventHandler& handler) EXCLUDES(m_mutex);
    void RemoveSystemHandler(const EventHandler& handler);
    void AddDeviceHandler(EventHandler& handler) EXCLUDES(m_mutex);
    void RemoveDeviceHandler(const EventHandler& handler);

    /// Lets polling time pass in every open camera. Called by the poll thread.
    void Poll(std::int64_t elapsedMs) EXCLUDES(m_mutex);
    /// Ends every camera; after the last Apply.
    void Shutdown() EXCLUDES(m_mutex);
    /// Handles that the program still holds.
    std::size_t CountHandles() const EXCLUDES(m_mutex);

private:
    using Interface = std::shared_ptr<InterfaceImpl>;
    using Camera = std::shared_ptr<CameraImpl>;
    /// The transport's place, and the identity within it.
    using Key = std::pair<std::size_t, std::string>;

    struct State {
        std::vector<Interface> interfaces;
        std::vector<Camera> cameras;
    };

    /// Reads one transport's scan into `next`; `present` is the state that it replaces.
    void ApplyScan(std::size_t transport, const Scan& scan, const State& present, State& next);
    Interface FindInterface(std::size_t transport, const Transport::InterfaceRecord& record);
    Camera FindCamera(std::size_t transport, const DeviceView& view) EXCLUDES(m_mutex);
    DeviceView ViewOf(std::size_t transport, const Transport::DeviceRecord& record,
                      const Transport::InterfaceRecord& interface);
    void Publish(const State& present, const std::vector<Camera>& lost, const State& next, bool complete)
        EXCLUDES(m_mutex);

    const std::vector<Services> m_services;
    EventQueue& m_events;

    // The discovery thread's own.
    std::map<Key, Interface> m_interfaces;
    std::map<Key, Camera> m_cameras;
    DeviceNumbers m_numbers;

    mutable Mutex m_mutex;
    State m_present GUARDED_BY(m_mutex);
    std::vector<Camera> m_everyCamera GUARDED_BY(m_mutex);
    std::uint64_t m_eventNumber GUARDED_BY(m_mutex) = 0;
    bool m_listed GUARDED_BY(m_mutex) = false;   ///< the program has seen a list
    bool m_complete GUARDED_BY(m_mutex) = false; ///< every transport was scanned once

    HandlerList<InterfaceArrivalEventHandler> m_arrivals;
    HandlerList<InterfaceRemovalEventHandler> m_removals;
    HandlerList<InterfaceEventHandler> m_devices;
};

} // namespace Norvane::Core
