#pragma once

#include "norvane/ChunkData.h"
#include "transport/Transport.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Norvane::Core {

/// Reads the values that a camera attached to its images, through the Chunk nodes of its node map. The bytes
/// are copied, so the nodes show the latest image's values while its buffer is filled again. One per stream,
/// used by that stream's dispatch thread; a chunk that cannot be read is left out, with one log line a
/// stream.
class ChunkReader {
public:
    ChunkReader(std::string cameraName, GenApi::INodeMap& map);
    /// Detaches the nodes.
    ~ChunkReader();
    ChunkReader(const ChunkReader&) = delete;
    ChunkReader& operator=(const ChunkReader&) = delete;

    /// Empty when the frame has no chunks.
    ChunkData Read(const Transport::Frame& frame);

private:
    void Attach(const Transport::Frame& frame);
    void Complain(std::string_view node, const std::string& reason);
    template <class Node, class Value>
    void ReadNode(const char* name, Value& value);
    void ReadBoxes(ChunkData::Values& values);

    const std::string m_cameraName;
    GenApi::INodeMap& m_map;
    std::map<std::uint64_t, std::vector<std::uint8_t>> m_bytes;
    std::map<std::uint64_t, std::vector<std::uint8_t>> m_formerBytes; ///< what the nodes read until then
    bool m_attached = false;
    bool m_complained = false;
};

/// Bounding boxes from the bytes of "ChunkInferenceBoundingBoxResult", all little endian: u16 version (1),
/// u16 count, then per box u16 type, i16 class, f32 confidence, i16 left, top, right, bottom. Bytes past the
/// last box are ignored. @throws Exception (InvalidBuffer) for another version and for fewer bytes than
/// boxes.
InferenceBoundingBoxResult ParseBoundingBoxes(const std::vector<std::uint8_t>& bytes);

} // namespace Norvane::Core
