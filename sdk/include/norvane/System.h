#pragma once

#include "norvane/BasePtr.h"
#include "norvane/Camera.h"
#include "norvane/EventHandlers.h"
#include "norvane/Interface.h"

namespace Norvane {

struct LibraryVersion {
    unsigned int major, minor, type, build;
};

/// The process-wide camera system: discovery, interfaces and cameras. It starts with the first handle and is
/// released with the last; lists, cameras and interfaces must be dropped before. All calls may come from any
/// thread and none waits for the network, except that the very first list waits for the first scan, at
/// most 1.5 s.
class ISystem {
public:
    virtual ~ISystem() = default;

    virtual LibraryVersion GetLibraryVersion() const = 0;

    /// The interfaces of the latest finished scan. With `update`, a newer scan is asked for in the background
    /// and the answer still comes at once.
    virtual InterfaceList GetInterfaces(bool update = true) = 0;
    /// Cameras of all interfaces, likewise.
    virtual CameraList GetCameras(bool update = true) = 0;

    /// Registers for interface arrival and removal (an InterfaceArrivalEventHandler, an
    /// InterfaceRemovalEventHandler, or both in one object). What is there already does not arrive.
    /// @throws Exception (InvalidParameter) when the handler is neither, or registered already.
    virtual void RegisterEventHandler(EventHandler& handler) = 0;
    virtual void UnregisterEventHandler(EventHandler& handler) = 0;

    /// Registers for camera arrival and removal on every interface, present and coming.
    virtual void RegisterInterfaceEventHandler(EventHandler& handler, bool updateInterfaces = true) = 0;
    virtual void UnregisterInterfaceEventHandler(EventHandler& handler) = 0;
};

using SystemPtr = BasePtr<ISystem, ISystem>;

class System {
public:
    /// @throws Exception when the library cannot start.
    static SystemPtr GetInstance();
};

} // namespace Norvane
