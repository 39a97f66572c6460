#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"
#include "transport/emulator/InferenceResult.h"

#include <cstdio>
#include <cstring>

namespace Norvane::Transport::Emulator {
namespace {

/// The chunks that can be switched on, by ChunkSelector's value.
enum Chunk : std::size_t {
    ImageChunk = 0,
    FrameId = 1,
    TimestampChunk = 2,
    ExposureTime = 3,
    GainChunk = 4,
    InferenceResultChunk = 5,
    InferenceConfidence = 6,
    InferenceBoxes = 7,
    kChunks = 8
};

constexpr std::uint32_t kChunkIds[kChunks] = {
    ChunkLayout::kImageId, 0x1001, 0x1002, 0x1003, 0x1004, 0x2001, 0x2002, 0x2003};

std::vector<std::uint8_t> Word(std::uint64_t value, bool bigEndian) {
    std::vector<std::uint8_t> bytes(8);
    for (unsigned i = 0; i < 8; ++i) {
        bytes[i] = static_cast<std::uint8_t>(value >> 8 * (bigEndian ? 7 - i : i));
    }
    return bytes;
}

std::vector<std::uint8_t> Real(double value, bool bigEndian) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return Word(bits, bigEndian);
}

void AddChunkFeature(FeatureBuilder& f, const char* type, const char* name, Chunk chunk, std::uint32_t length,
                     const char* toolTip) {
    const std::string port = std::string(name) + "Port";
    char id[16];
    std::snprintf(id, sizeof id, "%X", kChunkIds[chunk]);
    f.Helper("Port", port).Add("Visibility", "Invisible").Add("ChunkID", id);
    XmlNode& node = f.Helper(type, name);
    node.Add("ToolTip", toolTip)
        .Add("DisplayName", SpacedName(name))
        .Add("Visibility", "Expert")
        .Add("Address", "0x0")
        .Add("Length", length)
        .Add("AccessMode", "RO")
        .Add("pPort", port)
        .Add("Cachable", "NoCache");
    if (node.Type() != "Register") {
        node.Add("Endianess", f.Bank().IsBigEndian() ? "BigEndian" : "LittleEndian");
    }
    f.List(name);
}

} // namespace

ChunkLayout::Chunks BuildChunks(const CameraModel& camera, const ImageSettings& image,
                                const Exposed& exposed) {
    const RegisterBank& bank = camera.Bank();
    const bool big = bank.IsBigEndian();
    const bool infers = camera.Camera().inference != Inference::None && bank.Int("InferenceEnable");
    const bool detects = bank.Int("InferenceNetworkTypeSelector") == 1;
    ChunkLayout::Chunks chunks;
    const auto add = [&](Chunk chunk, std::vector<std::uint8_t> bytes) {
        if (bank.Int("ChunkEnable", chunk)) {
            chunks.emplace_back(kChunkIds[chunk], std::move(bytes));
        }
    };
    add(FrameId, Word(exposed.frameId, big));
    add(TimestampChunk, Word(static_cast<std::uint64_t>(exposed.timestampNs), big));
    add(ExposureTime, Real(exposed.exposureUs, big));
    add(GainChunk, Real(static_cast<double>(bank.Int("GainTenths")) / 10.0, big));
    if (infers) {
        const InferenceResult result =
            Infer(image.geometry, exposed.seconds, bank.Real("InferenceConfidenceThreshold"),
                  static_cast<std::size_t>(bank.Int("InferenceBoundingBoxMaxCount")));
        if (detects) {
            add(InferenceBoxes, EncodeBoxes(result.boxes));
        } else {
            add(InferenceResultChunk, Word(static_cast<std::uint64_t>(result.classId), big));
            add(InferenceConfidence, Real(result.confidence, big));
        }
    }
    return chunks;
}

void ApplyInferenceChunks(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    const bool infers = camera.Camera().inference != Inference::None;
    for (const Chunk chunk : {InferenceResultChunk, InferenceConfidence, InferenceBoxes}) {
        bank.SetInt("ChunkEnable", infers, chunk);
    }
    bank.SetInt("ChunkModeActive", infers);
}

void AddChunkDataControl(FeatureBuilder& f, CameraModel&) {
    RegisterBank& bank = f.Bank();
    f.Category("ChunkDataControl", "What is sent along with each image.", "Root", "Expert");
    f.Boolean("ChunkModeActive", "Whether anything is sent along.").Expert().Locked().Stored();
    f.Enumeration("ChunkSelector", "Which item Chunk Enable sets.")
        .Expert()
        .Selects({"ChunkEnable"})
        .Entry("Image", ImageChunk)
        .Entry("FrameID", FrameId)
        .Entry("Timestamp", TimestampChunk)
        .Entry("ExposureTime", ExposureTime)
        .Entry("Gain", GainChunk)
        .Entry("InferenceResult", InferenceResultChunk, "InferencePresent")
        .Entry("InferenceConfidence", InferenceConfidence, "InferencePresent")
        .Entry("InferenceBoundingBoxResult", InferenceBoxes, "InferencePresent")
        .Initial(static_cast<int>(FrameId));
    f.Formula("ChunkEnableIsLocked", "(LOCKED > 0) || (SELECTOR = 0)",
              {{"LOCKED", "ParamsLocked"}, {"SELECTOR", "ChunkSelectorReg"}});
    f.Boolean("ChunkEnable", "Whether the selected item is sent along; the image always is.")
        .Expert()
        .Element("pIsLocked", "ChunkEnableIsLocked")
        .By("ChunkSelector", kChunks)
        .Stored()
        .OnWrite([&bank](std::size_t index) {
            if (index == ImageChunk && !bank.Int("ChunkEnable", ImageChunk)) {
                throw Exception(Error::InvalidParameter, "the image is always sent");
            }
        });
    bank.AddFlags("ChunkEnable", RegisterBank::Fixed);
    for (const Chunk chunk : {ImageChunk, FrameId, TimestampChunk}) {
        bank.SetInt("ChunkEnable", 1, chunk);
    }
    AddChunkFeature(f, "IntReg", "ChunkFrameID", FrameId, 8, "The image's number.");
    AddChunkFeature(f, "IntReg", "ChunkTimestamp", TimestampChunk, 8,
                    "The camera's clock at the exposure, in ns.");
    AddChunkFeature(f, "FloatReg", "ChunkExposureTime", ExposureTime, 8, "The image's exposure time in us.");
    AddChunkFeature(f, "FloatReg", "ChunkGain", GainChunk, 8, "The image's gain in dB.");
    AddChunkFeature(f, "IntReg", "ChunkInferenceResult", InferenceResultChunk, 8,
                    "The class that the network recognised.");
    AddChunkFeature(f, "FloatReg", "ChunkInferenceConfidence", InferenceConfidence, 8,
                    "How sure the network is, from 0 to 1.");
    AddChunkFeature(f, "Register", "ChunkInferenceBoundingBoxResult", InferenceBoxes, kBoxBytes,
                    "What the network found and where, little-endian: 16-bit version 1, 16-bit count, then "
                    "per box 16-bit type (0 "
                    "rectangle), 16-bit class, 32-bit float confidence and the 16-bit coordinates left, top, "
                    "right, bottom.");
}

} // namespace Norvane::Transport::Emulator
