#include "Snap.h"

#include "Failure.h"

#include "norvane/genapi/GenApi.h"

#include <algorithm>
#include <chrono>

namespace {

std::string extensionOf(const std::string& fileName) {
    const std::size_t dot = fileName.find_last_of("./");
    std::string extension = dot == std::string::npos || fileName[dot] == '/' ? "" : fileName.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 'a' - 'A' : c);
    });
    return extension;
}

/// Ends acquisition however the work ends.
class Acquisition {
public:
    explicit Acquisition(Norvane::ICameraBase& camera) : m_camera(camera) { m_camera.BeginAcquisition(); }
    ~Acquisition() {
        try {
            m_camera.EndAcquisition();
        } catch (const Norvane::Exception&) {
            // The camera is gone; the image or its error has been told.
        }
    }
    Acquisition(const Acquisition&) = delete;
    Acquisition& operator=(const Acquisition&) = delete;

private:
    Norvane::ICameraBase& m_camera;
};

Norvane::ImagePtr completeImage(Norvane::ICameraBase& camera, std::int64_t timeoutMs) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    unsigned int incomplete = 0;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now())
                .count();
        try {
            Norvane::ImagePtr image =
                camera.GetNextImage(static_cast<std::uint64_t>(std::max<std::int64_t>(left, 0)));
            if (!image->IsIncomplete()) {
                return image;
            }
            ++incomplete;
        } catch (const Norvane::Exception& error) {
            if (error.GetError() != Norvane::Error::Timeout) {
                throw;
            }
            throw Failure(kFailed, incomplete ? "only incomplete images came (" + std::to_string(incomplete) +
                                                    "); check the link to the camera"
                                              : "no image came within " + std::to_string(timeoutMs) +
                                                    " ms; is the camera waiting for a trigger?");
        }
    }
}

} // namespace

SnapResult snap(Norvane::ICameraBase& camera, const std::string& fileName, std::int64_t timeoutMs) {
    if (camera.GetAccessMode() == Norvane::GenApi::RO) {
        throw Failure(kFailed, "another program controls the camera; close it there first");
    }
    Norvane::ImagePtr image;
    {
        const Acquisition acquisition(camera);
        const Norvane::ImagePtr fromStream = completeImage(camera, timeoutMs);
        image = Norvane::Image::Create();
        image->DeepCopy(fromStream);
    }
    SnapResult result{image->GetWidth(), image->GetHeight(), image->GetPixelFormatName(),
                      image->GetFrameID()};
    const std::string extension = extensionOf(fileName);
    const Norvane::PixelFormatInfo* info = Norvane::FindPixelFormat(image->GetPixelFormat());
    const bool mosaic = info && info->bayer != Norvane::BayerPhase::None;
    if (mosaic && extension != "raw" && extension != "pgm") {
        const bool deep =
            info->significantBits > 8 && extension != "jpg" && extension != "jpeg" && extension != "bmp";
        image =
            image->Convert(deep ? Norvane::PixelFormat_BGR16 : Norvane::PixelFormat_BGR8, Norvane::HQ_LINEAR);
    }
    image->Save(fileName.c_str());
    return result;
}
