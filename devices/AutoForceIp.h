#pragma once

#include "norvane/Camera.h"
#include "norvane/Interface.h"

/// Giving cameras on a wrong subnet a valid address. User-interface thread; a library error ends the sequence
/// and leaves a debug line.

/// Whether the transport of an interface or a camera has addresses at all.
bool HasIpAddresses(const Norvane::InterfacePtr& interface);
bool HasIpAddresses(const Norvane::CameraPtr& camera);

/// Forces an address on every camera of the interface, one after the other.
void AutoForceIp(const Norvane::InterfacePtr& interface);
/// Forces an address on one camera.
void AutoForceIp(const Norvane::CameraPtr& camera);
