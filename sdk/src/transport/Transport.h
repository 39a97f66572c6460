#pragma once

#include "norvane/Camera.h"
#include "norvane/ChunkData.h"
#include "norvane/PixelFormat.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The contracts between the library's core and a way of reaching cameras. A transport knows nothing of node
/// maps, serial numbers or other transports; the core knows nothing of protocols.
namespace Norvane::Transport {

enum class Technology { GigEVision, Usb3Vision };

/// One interface as a scan saw it.
struct InterfaceRecord {
    std::string id;          ///< unique and stable, UTF-8, for example "eth0" or "usb-0000:00:14.0"
    std::string displayName; ///< for people
    Technology technology = Technology::GigEVision;
    bool usable = true;              ///< whether cameras can be discovered on it
    std::uint32_t ipAddress = 0;     ///< host order, 0 for USB
    std::uint32_t subnetMask = 0;    ///< host order
    std::uint32_t gateway = 0;       ///< host order
    std::uint64_t macAddress = 0;    ///< bits 47..0
    std::uint64_t linkSpeedMbps = 0; ///< 0 when unknown

    bool operator==(const InterfaceRecord&) const = default;
};

enum class Access { ReadWrite, ReadOnly, None };

/// One camera as a scan saw it, read without opening it.
struct DeviceRecord {
    std::string id; ///< unique within the transport and stable, UTF-8
    std::string interfaceId;
    std::string vendor, model, serial, version, firmwareVersion, userName, manufacturerInfo;
    std::string
        speed; ///< SFNC DeviceCurrentSpeed wording: "HighSpeed", "SuperSpeed", ..., or Mbit/s for GigE
    Technology technology = Technology::GigEVision;
    Access access = Access::ReadWrite;
    bool unusable = false;       ///< the device itself says that it cannot be worked with
    std::uint32_t ipAddress = 0; ///< host order, 0 for USB
    std::uint32_t subnetMask = 0;
    std::uint32_t gateway = 0;
    std::uint64_t macAddress = 0;

    bool operator==(const DeviceRecord&) const = default;
};

/// What one scan found.
struct ScanResult {
    std::vector<InterfaceRecord> interfaces;
    std::vector<DeviceRecord> devices;
};

/// Counters of a stream since it was opened. All values are totals.
struct StreamStatistics {
    std::uint64_t deliveredImages = 0; ///< complete and incomplete
    std::uint64_t corruptImages = 0;   ///< incomplete
    std::uint64_t underruns = 0;       ///< images lost because no free buffer was there
    std::uint64_t totalPackets = 0;
    std::uint64_t missedPackets = 0;
    std::uint64_t resendRequests = 0;
    std::uint64_t resendPackets = 0; ///< packets that came by resend
};

/// One received image. The stream's buffer stays with it until the last owner drops it.
struct Frame {
    std::uint8_t* data = nullptr; ///< pixels
    std::size_t size = 0;         ///< bytes of pixels received, or of the whole buffer when rows are missing
    std::uint32_t pfncFormat = 0;
    std::uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0; ///< pixels
    std::uint32_t paddingX = 0;                                    ///< bytes at the end of each row
    std::uint64_t frameId = 0;
    std::uint64_t timestampNs = 0;
    ImageStatus status = IMAGE_NO_ERROR;
    /// The chunk area of the payload, by chunk ID; empty when the payload has none. Lives as the frame does.
    std::map<std::uint64_t, GenApi::ChunkView> chunks;
    std::shared_ptr<void> owner; ///< gives the buffer back to the stream when dropped
};

struct StreamSettings {
    std::uint32_t bufferCount = 10;
    std::uint64_t payloadSize = 0; ///< bytes of one buffer
    std::uint32_t resendTimeoutMs = 20;
    bool packetResend = true;
};

/// A stream of images that is running from its creation to its destruction. Owned by the core's camera.
class IStream {
public:
    virtual ~IStream() = default;

    /// Called by the camera's dispatch thread only: the oldest finished frame, or nothing after `timeoutMs`
    /// or once Wake() was called.
    virtual std::optional<Frame> Pop(std::uint32_t timeoutMs) = 0;
    /// Makes a waiting Pop return at once. Any thread.
    virtual void Wake() = 0;
    virtual StreamStatistics Statistics() const = 0; ///< any thread
};

/// An opened device: its register port, its description and its streams. Called under the node map's lock or
/// from the core; every call ends within a second even when the device stopped answering, and once the device
/// is known to be lost, calls fail at once.
class IDevice : public GenApi::IPort {
public:
    /// The description as the device stores it: XML text or a zip archive.
    virtual std::string Description() = 0;
    virtual Access CurrentAccess() const = 0;
    /// False once the device stopped answering or left.
    virtual bool IsAlive() const = 0;
    /// Prepares receiving: buffers allocated and touched, socket sized and bound. Does not start the camera.
    virtual std::unique_ptr<IStream> OpenStream(const StreamSettings& settings) = 0;
    /// Called once, on a thread of the transport, when the device is lost.
    virtual void SetLostHandler(std::function<void()> handler) = 0;
};

/// A way of reaching cameras. Owned by the system.
class ITransport {
public:
    virtual ~ITransport() = default;

    /// Looks at all interfaces side by side. Called on the discovery thread, about once a second; never
    /// touches an open device. Ends within a second. Does not throw: trouble becomes a log line.
    virtual ScanResult Scan() = 0;
    /// Asks for an earlier scan when something changed, for example the emulator's file. Set before the first
    /// Scan.
    virtual void SetChangeHandler(std::function<void()> handler) = 0;
    /// Opens a device of the latest scan. @throws Exception (InvalidId, AccessDenied, Io, Timeout).
    virtual std::shared_ptr<IDevice> Open(const std::string& deviceId) = 0;
    /// Gives one camera a valid address on its interface's network, by broadcast on the adapter that saw it.
    /// @throws Exception (NotImplemented) where the transport has no addresses, (Timeout, Io).
    virtual void ForceIp(const std::string& deviceId) = 0;
};

/// The transports of this build. Each is made once by the system.
std::unique_ptr<ITransport> CreateAravisTransport();
std::unique_ptr<ITransport> CreateEmulatorTransport();

} // namespace Norvane::Transport
