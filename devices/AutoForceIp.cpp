#include "AutoForceIp.h"

#include "Guarded.h"
#include "NodeReading.h"

#include "norvane/genapi/GenApi.h"

using namespace Norvane::GenApi;

namespace {

const QString kGigEVision = QStringLiteral("GigEVision");

void executeForceIp(INodeMap& map) {
    const CCommandPtr command(map.GetNode("GevDeviceAutoForceIP"));
    if (IsWritable(command.Get())) {
        command->Execute(true);
    }
}

} // namespace

bool HasIpAddresses(const Norvane::InterfacePtr& interface) {
    bool answer = false;
    guarded("reading an interface's transport",
            [&] { answer = NodeReading::Text(interface->GetTLNodeMap(), "InterfaceType") == kGigEVision; });
    return answer;
}

bool HasIpAddresses(const Norvane::CameraPtr& camera) {
    bool answer = false;
    guarded("reading a camera's transport",
            [&] { answer = NodeReading::Text(camera->GetTLDeviceNodeMap(), "DeviceType") == kGigEVision; });
    return answer;
}

void AutoForceIp(const Norvane::InterfacePtr& interface) {
    guarded("forcing addresses on an interface's cameras", [&] {
        const unsigned int count = interface->GetCameras(true).GetSize();
        INodeMap& map = interface->GetTLNodeMap();
        const CIntegerPtr selector(map.GetNode("DeviceSelector"));
        for (unsigned int index = 0; index < count; ++index) {
            if (!IsWritable(selector.Get())) {
                return;
            }
            selector->SetValue(index, true);
            executeForceIp(map);
        }
    });
}

void AutoForceIp(const Norvane::CameraPtr& camera) {
    guarded("forcing an address on a camera", [&] { executeForceIp(camera->GetTLDeviceNodeMap()); });
}
