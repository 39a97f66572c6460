#include "core/CameraFeatures.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/PixelFormat.h"
#include "norvane/genapi/GenApi.h"

#include <optional>

namespace Norvane::Core {
namespace {

template <class Node>
auto ReadValue(GenApi::INodeMap& map, const char* name)
    -> std::optional<decltype(std::declval<Node&>().GetValue())> {
    try {
        const GenApi::CPointer<Node> node = map.GetNode(name);
        if (GenApi::IsReadable(node.Get())) {
            return node->GetValue();
        }
    } catch (const Exception& error) {
        Log(LogLevel::Debug, std::string(name) + " is passed over: " + error.what());
    }
    return std::nullopt;
}

const PixelFormatInfo* CurrentFormat(GenApi::INodeMap& map) {
    try {
        const GenApi::CEnumerationPtr node = map.GetNode("PixelFormat");
        if (GenApi::IsReadable(node.Get())) {
            return FindPixelFormatByPfnc(static_cast<std::uint32_t>(node->GetIntValue()));
        }
    } catch (const Exception& error) {
        Log(LogLevel::Debug, std::string("PixelFormat is passed over: ") + error.what());
    }
    return nullptr;
}

} // namespace

std::uint64_t PayloadSize(GenApi::INodeMap& map) {
    if (const auto size = ReadValue<GenApi::IInteger>(map, "PayloadSize"); size && *size > 0) {
        return static_cast<std::uint64_t>(*size);
    }
    const auto width = ReadValue<GenApi::IInteger>(map, "Width");
    const auto height = ReadValue<GenApi::IInteger>(map, "Height");
    const PixelFormatInfo* format = CurrentFormat(map);
    if (!width || !height || !format || *width <= 0 || *height <= 0) {
        return 0;
    }
    return PixelFormatImageSize(format->format, static_cast<std::uint64_t>(*width),
                                static_cast<std::uint64_t>(*height));
}

double ImagesPerSecond(GenApi::INodeMap& map) {
    if (const auto rate = ReadValue<GenApi::IFloat>(map, "AcquisitionResultingFrameRate")) {
        return *rate;
    }
    return ReadValue<GenApi::IFloat>(map, "AcquisitionFrameRate").value_or(0.0);
}

void LockStreamFeatures(GenApi::INodeMap& map, bool locked) {
    try {
        const GenApi::CIntegerPtr node = map.GetNode("TLParamsLocked");
        if (GenApi::IsWritable(node.Get())) {
            node->SetValue(locked ? 1 : 0);
        }
    } catch (const Exception& error) {
        Log(LogLevel::Debug, std::string("TLParamsLocked is passed over: ") + error.what());
    }
}

void StartCamera(GenApi::INodeMap& map) {
    const GenApi::CCommandPtr node = map.GetNode("AcquisitionStart");
    if (GenApi::IsWritable(node.Get())) {
        node->Execute();
    }
}

void StopCamera(GenApi::INodeMap& map, const std::string& cameraName) {
    try {
        const GenApi::CCommandPtr node = map.GetNode("AcquisitionStop");
        if (GenApi::IsWritable(node.Get())) {
            node->Execute();
        }
    } catch (const Exception& error) {
        Log(LogLevel::Debug, cameraName + ": AcquisitionStop failed: " + error.what());
    }
}

} // namespace Norvane::Core
