#pragma once

#include "Subnet.h"

#include "norvane/System.h"

#include <optional>
#include <string>
#include <vector>

/// What the transport layer says of one camera, without opening it.
struct CameraSummary {
    std::string number; ///< the library's
    std::string serial; ///< the device's own text
    std::string model;
    std::string vendor;
    std::string userName;
    std::string access; ///< GenTL's name of the access status
    std::string type;
    std::string address; ///< empty for a camera that has none
    bool wrongSubnet = false;
    bool usable = true;
};

/// What the transport layer says of one interface and the cameras on it.
struct InterfaceSummary {
    std::string id;
    std::string name;
    std::string type;
    std::optional<Subnet> subnet; ///< of a network adapter
    bool usable = false;
    std::vector<CameraSummary> cameras;
};

/// Waits until cameras that answer late are found, too.
std::vector<InterfaceSummary> summarizeInterfaces(Norvane::ISystem& system);

/// Waits a moment for a camera that has not answered yet.
/// @param serial the library's number or the device's own text.
/// @throws Failure (kNoDevice).
Norvane::CameraPtr findCamera(Norvane::ISystem& system, const std::string& serial);

/// @param id the interface's identifier, or its display name where only one has it.
/// @throws Failure (kNoDevice).
Norvane::InterfacePtr findInterface(Norvane::ISystem& system, const std::string& id);

/// A node's value as text; empty when there is none to read.
std::string textOf(Norvane::GenApi::INodeMap& map, const char* name);
