// Takes images from the first camera that can be opened, and saves the complete ones.
// Usage: grab [COUNT [FOLDER]]

#include "norvane/Norvane.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void grab(Norvane::ICameraBase& camera, int count, const std::string& folder) {
    camera.BeginAcquisition();
    for (int saved = 0; saved < count;) {
        constexpr std::uint64_t kTimeoutMs = 5000;
        // The handle lends a buffer of the stream; letting it go hands the buffer back.
        const Norvane::ImagePtr image = camera.GetNextImage(kTimeoutMs);
        if (image->IsIncomplete()) {
            std::printf("image %llu lost packets\n", static_cast<unsigned long long>(image->GetFrameID()));
            continue;
        }
        const std::string name = folder + "/image" + std::to_string(++saved) + ".png";
        // PNG knows no colour mosaics and no packed pixels, so the image is turned into one that every viewer
        // shows.
        image->Convert(Norvane::PixelFormat_BGR8)->Save(name.c_str());
        std::printf("%s\n", name.c_str());
    }
    camera.EndAcquisition();
}

} // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 3;
    const std::string folder = argc > 2 ? argv[2] : ".";
    try {
        const Norvane::SystemPtr system = Norvane::System::GetInstance();
        const Norvane::CameraList cameras = system->GetCameras();
        if (cameras.GetSize() == 0) {
            std::fprintf(stderr, "grab: there is no camera\n");
            return 1;
        }
        const Norvane::CameraPtr camera = cameras.GetByIndex(0);
        camera->Init();
        grab(*camera, count, folder);
        camera->DeInit();
    } catch (const Norvane::Exception& error) {
        std::fprintf(stderr, "grab: %s\n", error.what());
        return 1;
    }
}
