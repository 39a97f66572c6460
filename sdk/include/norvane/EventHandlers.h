#pragma once

#include "norvane/Image.h"

#include <cstdint>
#include <string>

namespace Norvane {

/// Base of everything that can be registered for events. The library calls handlers on threads of its own
/// and holds no lock of its own meanwhile; it never owns a handler. Unregistering returns after the last
/// call.
class EventHandler {
public:
    virtual ~EventHandler() = default;
};

/// Told of interfaces that appear on the host, see ISystem::RegisterEventHandler.
class InterfaceArrivalEventHandler : public virtual EventHandler {
public:
    /// `interfaceId` is IInterface::GetInterfaceID().
    virtual void OnInterfaceArrival(std::string interfaceId) = 0;
};

/// Told of interfaces that leave the host.
class InterfaceRemovalEventHandler : public virtual EventHandler {
public:
    /// `interfaceId` is what IInterface::GetInterfaceID() was.
    virtual void OnInterfaceRemoval(std::string interfaceId) = 0;
};

/// Arrival and removal of cameras, by the number that stands for a camera everywhere in the library: its
/// serial number where that is a number of 32 bits, else a stable number made from its identity.
class InterfaceEventHandler : public virtual EventHandler {
public:
    /// The camera stands in lists already.
    virtual void OnDeviceArrival(std::uint64_t serialNumber) = 0;
    /// The camera stands in lists no more; handles to it stay good, and IsValid() of them says false.
    virtual void OnDeviceRemoval(std::uint64_t serialNumber) = 0;
};

/// Images of a streaming camera, one call per image, in order, on that camera's dispatch thread. A slow
/// handler costs frames, which the stream counts as under-runs.
class ImageEventHandler : public virtual EventHandler {
public:
    /// The stream's buffer is free again when the last handle to `image` is dropped.
    virtual void OnImageEvent(ImagePtr image) = 0;
};

} // namespace Norvane
