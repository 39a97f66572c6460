#pragma once

#include "norvane/genapi/INodeMap.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace Norvane::GenApi {

/// The bytes behind a node map: a camera's registers, a chunk, or a test's array. Read and Write
/// are called with the node map's lock held, by whichever thread uses a node, and must not call back into the
/// node map. GetAccessMode is part of every operation, so it may be called by several threads at once and
/// answers without waiting for the device.
class IPort {
public:
    virtual ~IPort() = default;

    /// RW, RO, WO; NA while the device is closed.
    virtual EAccessMode GetAccessMode() const = 0;
    /// Reads `length` bytes at `address`. @throws Exception (Io, Timeout, InvalidAddress).
    virtual void Read(void* buffer, std::int64_t address, std::int64_t length) = 0;
    /// Writes `length` bytes at `address`. @throws Exception (Io, Timeout, InvalidAddress, AccessDenied).
    virtual void Write(const void* buffer, std::int64_t address, std::int64_t length) = 0;
};

/// What NodeMapOptions::cacheAudit counts. May serve several maps and be looked at by any thread.
struct CacheAudit {
    std::atomic<std::uint64_t> reads = 0;       ///< cached values that were read again
    std::atomic<std::uint64_t> differences = 0; ///< of those, how many differed from the cache
};

/// What a node map is told beside its description and port.
struct NodeMapOptions {
    /// Stands in log lines and errors, and is INodeMap::GetDeviceName().
    std::string deviceName;
    /// Ports beside the main one, by the name of the description's Port node. A Port node of another name
    /// that is not found here is the main port, except one with a ChunkID, which is not available.
    std::map<std::string, std::shared_ptr<IPort>> ports;
    /// Called after an operation on the map has marked nodes as changed and its callbacks have run; null for
    /// none.
    std::function<void()> onChanged;
    /// Re-reads the port whenever a cached value is used, counts differences and writes a log line for each,
    /// except of what is polled because it moves by itself; for tests, and for cameras whose description is
    /// in doubt. Null for none; must outlive the map.
    CacheAudit* cacheAudit = nullptr;
};

/// Builds a node map from a camera description file (GenApi schema 1.0 or 1.1; XML text, or a zip archive
/// that holds it). A broken element costs its own node and one log line. The map keeps the port.
/// @throws Exception (GenApiLogical) when the text is no description at all; says where it breaks.
std::shared_ptr<INodeMap> CreateNodeMap(std::string_view description, std::shared_ptr<IPort> port,
                                        const NodeMapOptions& options = {});

/// The bytes of one chunk, which belong to somebody else.
struct ChunkView {
    const std::uint8_t* data = nullptr; ///< null only when there are no bytes
    std::size_t size = 0;               ///< bytes
};
/// Attaches one image's chunk data to the chunk ports of a map: each chunk's bytes by its ID. Ports whose ID
/// is missing become not available. The bytes must live until the next call; an empty map detaches.
void AttachChunks(INodeMap& map, const std::map<std::uint64_t, ChunkView>& chunksById);

/// A port over an array of bytes, filled with zeros at addresses never written. For `describe` and tests.
std::shared_ptr<IPort> CreateMemoryPort();

} // namespace Norvane::GenApi
