#include "core/ChunkReader.h"

#include "imaging/ChunkValues.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/genapi/GenApi.h"

#include <cstring>
#include <memory>
#include <utility>

namespace Norvane::Core {
namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr std::size_t kBoxSize = 16;
/// Values of chunks are small; a larger chunk is the image itself, which some cameras send as one.
constexpr std::size_t kLargestChunk = 1U << 20U;

std::uint16_t U16(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8U));
}

std::int16_t I16(const std::uint8_t* bytes) {
    return static_cast<std::int16_t>(U16(bytes));
}

float F32(const std::uint8_t* bytes) {
    const std::uint32_t bits = U16(bytes) | (static_cast<std::uint32_t>(U16(bytes + 2)) << 16U);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

InferenceBoundingBoxResult ParseBoundingBoxes(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < kHeaderSize || U16(bytes.data()) != 1) {
        throw Exception(Error::InvalidBuffer, "the list of bounding boxes is not of version 1");
    }
    const std::size_t count = U16(bytes.data() + 2);
    if (bytes.size() < kHeaderSize + count * kBoxSize) {
        throw Exception(Error::InvalidBuffer, "the list of bounding boxes announces " +
                                                  std::to_string(count) + " boxes but has only " +
                                                  std::to_string(bytes.size()) + " bytes");
    }
    std::vector<InferenceBoundingBox> boxes(count);
    const std::uint8_t* in = bytes.data() + kHeaderSize;
    for (InferenceBoundingBox& box : boxes) {
        box.boxType = static_cast<InferenceBoundingBox::BoxType>(U16(in));
        box.classId = I16(in + 2);
        box.confidence = F32(in + 4);
        box.topLeftX = I16(in + 8);
        box.topLeftY = I16(in + 10);
        box.bottomRightX = I16(in + 12);
        box.bottomRightY = I16(in + 14);
        in += kBoxSize;
    }
    return InferenceBoundingBoxResult(std::move(boxes));
}

ChunkReader::ChunkReader(std::string cameraName, GenApi::INodeMap& map)
    : m_cameraName(std::move(cameraName)), m_map(map) {}

ChunkReader::~ChunkReader() {
    if (m_attached) {
        try {
            GenApi::AttachChunks(m_map, {});
        } catch (const Exception& error) {
            Log(LogLevel::Debug, m_cameraName + ": chunks cannot be detached: " + error.what());
        }
    }
}

ChunkData ChunkReader::Read(const Transport::Frame& frame) {
    if (frame.chunks.empty()) {
        return {};
    }
    auto values = std::make_shared<ChunkData::Values>();
    try {
        Attach(frame);
    } catch (const Exception& error) {
        Complain("chunk area", error.what());
        return ChunkData(std::move(values));
    }
    ReadNode<GenApi::IInteger>("ChunkFrameID", values->frameId);
    ReadNode<GenApi::IInteger>("ChunkTimestamp", values->timestampNs);
    ReadNode<GenApi::IFloat>("ChunkExposureTime", values->exposureTimeUs);
    ReadNode<GenApi::IFloat>("ChunkGain", values->gainDb);
    ReadNode<GenApi::IInteger>("ChunkInferenceResult", values->inferenceResult);
    ReadNode<GenApi::IFloat>("ChunkInferenceConfidence", values->inferenceConfidence);
    ReadBoxes(*values);
    return ChunkData(std::move(values));
}

void ChunkReader::Attach(const Transport::Frame& frame) {
    m_formerBytes = std::move(m_bytes);
    m_bytes.clear();
    std::map<std::uint64_t, GenApi::ChunkView> views;
    for (const auto& [id, chunk] : frame.chunks) {
        if (chunk.data && chunk.data != frame.data && chunk.size <= kLargestChunk) {
            std::vector<std::uint8_t>& copy = m_bytes[id];
            copy.assign(chunk.data, chunk.data + chunk.size);
            views[id] = {copy.data(), copy.size()};
        }
    }
    m_attached = true;
    GenApi::AttachChunks(m_map, views);
}

void ChunkReader::Complain(std::string_view node, const std::string& reason) {
    if (!m_complained) {
        m_complained = true;
        Log(LogLevel::Warning, m_cameraName + ": the chunk data of an image cannot be read (" +
                                   std::string(node) + ": " + reason +
                                   "); further images of this stream are not reported");
    }
}

template <class Node, class Value>
void ChunkReader::ReadNode(const char* name, Value& value) {
    const GenApi::CPointer<Node> node = m_map.GetNode(name);
    try {
        if (GenApi::IsReadable(node.Get())) {
            value = node->GetValue();
        }
    } catch (const Exception& error) {
        Complain(name, error.what());
    }
}

void ChunkReader::ReadBoxes(ChunkData::Values& values) {
    static constexpr const char* kNode = "ChunkInferenceBoundingBoxResult";
    const GenApi::CRegisterPtr node = m_map.GetNode(kNode);
    try {
        if (GenApi::IsReadable(node.Get())) {
            std::vector<std::uint8_t> bytes(static_cast<std::size_t>(node->GetLength()));
            node->Get(bytes.data(), static_cast<std::int64_t>(bytes.size()));
            values.boundingBoxes = ParseBoundingBoxes(bytes);
        }
    } catch (const Exception& error) {
        Complain(kNode, error.what());
    }
}

} // namespace Norvane::Core
