#pragma once

#include "norvane/BasePtr.h"
#include "norvane/Camera.h"
#include "norvane/genapi/INodeMap.h"

#include <string>
#include <vector>

namespace Norvane {

/// One host transport interface: a network adapter, a USB host controller, or one of the emulator's.
/// Calls may come from any thread; none waits for the network.
class IInterface {
public:
    virtual ~IInterface() = default;

    /// False once the interface has left the host.
    virtual bool IsValid() const = 0;
    /// Cameras of the latest finished scan; `update` as in ISystem::GetInterfaces.
    virtual CameraList GetCameras(bool update = true) = 0;
    /// Transport-layer interface map: "InterfaceID", "InterfaceDisplayName", "InterfaceType" and the like
    /// (GenTL SFNC 1.1). Lives until the system is released.
    virtual GenApi::INodeMap& GetTLNodeMap() = 0;
    /// Whether cameras can be discovered on it.
    virtual bool IsUsable() const = 0;
    /// UTF-8, the same text as the node "InterfaceID".
    virtual std::string GetInterfaceID() const = 0;
};

using InterfacePtr = BasePtr<IInterface, IInterface>;

/// A picture of the interfaces at one moment. Holds handles, so it must be cleared before the system goes.
class InterfaceList {
public:
    /// An empty list.
    InterfaceList() = default;
    /// For the library.
    explicit InterfaceList(std::vector<InterfacePtr> interfaces) : m_interfaces(std::move(interfaces)) {}

    /// How many interfaces there are.
    unsigned int GetSize() const noexcept { return static_cast<unsigned int>(m_interfaces.size()); }
    /// @throws Exception (InvalidParameter) when the index is not below GetSize().
    InterfacePtr GetByIndex(unsigned int index) const;
    /// Drops the handles.
    void Clear() noexcept { m_interfaces.clear(); }

private:
    std::vector<InterfacePtr> m_interfaces;
};

} // namespace Norvane
