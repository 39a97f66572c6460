#pragma once

#include "norvane/BasePtr.h"
#include "norvane/EventHandlers.h"
#include "norvane/Image.h"
#include "norvane/genapi/INodeMap.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Norvane {

/// Waits without limit.
constexpr std::uint64_t EVENT_TIMEOUT_INFINITE = 0xFFFFFFFFFFFFFFFFULL;

/// What every camera of any transport offers. Calls may come from any thread.
class ICameraBase {
public:
    virtual ~ICameraBase() = default;

    /// False once the camera has left its interface; a camera that comes back is valid again.
    virtual bool IsValid() const = 0;
    /// Whether the camera is open, between Init() and DeInit().
    virtual bool IsInitialized() const = 0;
    /// Opens the camera, with control where nobody else holds it, else for reading only. Waits for a camera
    /// that does not answer at most a second; opening then goes on in the background.
    /// @throws Exception (Timeout, NotAvailable, Io) when it is not open at the end.
    virtual void Init() = 0;
    /// Ends acquisition and closes the camera; node maps stay usable for reading what is cached, and the next
    /// Init() finds them again. Waits for a camera that does not answer at most a second. No error.
    virtual void DeInit() = 0;
    /// Whether acquisition runs, between BeginAcquisition() and EndAcquisition() or the loss of the camera.
    virtual bool IsStreaming() const = 0;
    /// RW, RO when another program holds the camera, NA while it is not open.
    virtual GenApi::EAccessMode GetAccessMode() const = 0;

    /// The camera's own features, root category "Root".
    /// @throws Exception (NotInitialized) before the first Init().
    virtual GenApi::INodeMap& GetNodeMap() = 0;
    /// Discovery-level information ("DeviceModelName", "DeviceSerialNumber", ...), readable without Init().
    /// The booleans "GevDeviceIsWrongSubnet" and "DeviceIsUnusable" mark a camera that cannot be worked with.
    virtual GenApi::INodeMap& GetTLDeviceNodeMap() = 0;
    /// Stream buffer handling and statistics, readable without Init().
    virtual GenApi::INodeMap& GetTLStreamNodeMap() = 0;

    /// The number that stands for this camera, see InterfaceEventHandler.
    virtual std::uint64_t GetDeviceNumber() const = 0;
    /// Text that identifies the device across restarts, for example "Altrona-DWS-50S5C-21034567".
    virtual std::string GetUniqueID() const = 0;

    /// Opens the stream and starts acquisition.
    /// @throws Exception (NotInitialized, ResourceInUse when streaming already, AccessDenied, Io).
    virtual void BeginAcquisition() = 0;
    /// Wakes whoever waits in GetNextImage. Returns after the last call of an image handler, except when it
    /// is called by one.
    /// @throws Exception (NotInitialized) when the camera is not streaming.
    virtual void EndAcquisition() = 0;
    /// The next image of a streaming camera that has no image handler.
    /// @throws Exception (Timeout), (Abort) when acquisition ends or the camera is lost meanwhile,
    ///         (NotInitialized) when the camera is not streaming, (ResourceInUse) when an image handler gets
    ///         the images, (InvalidId) for a stream that does not exist.
    virtual ImagePtr GetNextImage(std::uint64_t timeoutMs = EVENT_TIMEOUT_INFINITE,
                                  std::uint64_t streamIndex = 0) = 0;

    /// The handler stays registered when the stream ends or the camera is lost, until it is unregistered.
    /// @throws Exception (InvalidParameter) when the handler is no ImageEventHandler or registered already.
    virtual void RegisterEventHandler(EventHandler& handler) = 0;
    /// Returns after the handler's last call, except when it is called by the handler itself. A handler that
    /// is not registered is passed over.
    virtual void UnregisterEventHandler(EventHandler& handler) = 0;
};

/// What handles to cameras are dereferenced to.
class Camera : public ICameraBase {};

/// A handle to a camera, which stays the same object while it is unplugged. To be dropped before the system.
using CameraPtr = BasePtr<Camera, ICameraBase>;

/// A picture of the cameras at one moment. Holds handles, so it must be gone before the system goes.
class CameraList {
public:
    /// An empty list.
    CameraList() = default;
    /// For the library.
    explicit CameraList(std::vector<CameraPtr> cameras) : m_cameras(std::move(cameras)) {}

    /// How many cameras there are.
    unsigned int GetSize() const noexcept { return static_cast<unsigned int>(m_cameras.size()); }
    /// @throws Exception (InvalidParameter) when the index is not below GetSize().
    CameraPtr GetByIndex(unsigned int index) const;
    /// Drops the handles.
    void Clear() noexcept { m_cameras.clear(); }

private:
    std::vector<CameraPtr> m_cameras;
};

} // namespace Norvane
