// Changes the exposure time of the first camera and hears of the change by a callback.
// Usage: feature [MICROSECONDS]

#include "norvane/Norvane.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace Norvane::GenApi;

namespace {

/// Called on the thread that caused the change, whoever that is: another program's writes come here too.
void tell(INode* node) {
    const CFloatPtr value = node;
    if (IsReadable(value)) {
        std::printf("%s is now %g %s\n", node->GetName().c_str(), value->GetValue(),
                    value->GetUnit().c_str());
    }
}

void change(INodeMap& map, double wanted) {
    const CEnumerationPtr automatic = map.GetNode("ExposureAuto");
    if (IsWritable(automatic)) {
        automatic->FromString("Off"); // else the camera would change the value back
    }
    const CFloatPtr exposure = map.GetNode("ExposureTime");
    if (!IsWritable(exposure)) {
        std::printf("the exposure time cannot be written now\n");
        return;
    }
    const CallbackHandleType callback = Register(exposure->GetNode(), &tell);
    exposure->SetValue(std::clamp(wanted, exposure->GetMin(), exposure->GetMax()));
    Deregister(callback);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Norvane::SystemPtr system = Norvane::System::GetInstance();
        const Norvane::CameraList cameras = system->GetCameras();
        if (cameras.GetSize() == 0) {
            std::fprintf(stderr, "feature: there is no camera\n");
            return 1;
        }
        const Norvane::CameraPtr camera = cameras.GetByIndex(0);
        camera->Init();
        change(camera->GetNodeMap(), argc > 1 ? std::atof(argv[1]) : 5000);
        camera->DeInit();
    } catch (const Norvane::Exception& error) {
        std::fprintf(stderr, "feature: %s\n", error.what());
        return 1;
    }
}
