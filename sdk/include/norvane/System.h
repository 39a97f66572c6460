#pragma once

#include "norvane/BasePtr.h"
#include "norvane/Camera.h"
#include "norvane/EventHandlers.h"
#include "norvane/Interface.h"

namespace Norvane {

/// Shown as "major.minor.type.build".
struct LibraryVersion {
    unsigned int major; ///< first number
    unsigned int minor; ///< second
    unsigned int type;  ///< third, corrections
    unsigned int build; ///< of the same sources
};

/// The process-wide camera system: discovery, interfaces and cameras. It starts with the first handle and is
/// released with the last; lists, cameras and interfaces must be dropped before. All calls may come from any
/// thread and none waits for the network, except that the very first list waits for the first scan, at
/// most 1.5 s.
class ISystem {
public:
    virtual ~ISystem() = default;

    /// Of the library that runs.
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
    /// Returns after the handler's last call, except when it is called by the handler itself.
    virtual void UnregisterEventHandler(EventHandler& handler) = 0;

    /// Registers for camera arrival and removal on every interface, present and coming.
    virtual void RegisterInterfaceEventHandler(EventHandler& handler, bool updateInterfaces = true) = 0;
    /// Likewise.
    virtual void UnregisterInterfaceEventHandler(EventHandler& handler) = 0;
};

using SystemPtr = BasePtr<ISystem, ISystem>;

/// The way to the camera system.
class System {
public:
    /// Starts the system or shares the one that runs.
    /// @throws Exception when the library cannot start.
    static SystemPtr GetInstance();
};

} // namespace Norvane
