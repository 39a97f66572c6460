#pragma once

#include "norvane/Camera.h"

#include <cstdint>
#include <string>

struct SnapResult {
    std::size_t width = 0;
    std::size_t height = 0;
    std::string pixelFormat; ///< as the camera sent it
    std::uint64_t frameId = 0;
};

/// Takes one complete image of an open camera and writes it in the format of the file name's extension.
/// @throws Failure when the camera is held by another program or delivers nothing whole in time;
///         Norvane::Exception for whatever else fails.
SnapResult snap(Norvane::ICameraBase& camera, const std::string& fileName, std::int64_t timeoutMs);
