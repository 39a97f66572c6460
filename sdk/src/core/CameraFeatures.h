#pragma once

#include "norvane/genapi/INodeMap.h"

#include <cstdint>
#include <string>

/// The few features of a camera that acquisition itself uses (SFNC 2.7). Each may be missing or not
/// available: such a camera streams all the same. Any thread.
namespace Norvane::Core {

/// Bytes of one image: "PayloadSize", else from width, height and pixel format, else 0.
std::uint64_t PayloadSize(GenApi::INodeMap& map);
/// "AcquisitionResultingFrameRate", else "AcquisitionFrameRate", else 0.
double ImagesPerSecond(GenApi::INodeMap& map);

/// Sets "TLParamsLocked", which makes the features that change the image size read-only.
void LockStreamFeatures(GenApi::INodeMap& map, bool locked);
/// Executes "AcquisitionStart". @throws Exception when the camera refuses.
void StartCamera(GenApi::INodeMap& map);
/// Executes "AcquisitionStop"; a failure is one debug line, because the stream is closed anyway.
void StopCamera(GenApi::INodeMap& map, const std::string& cameraName);

} // namespace Norvane::Core
