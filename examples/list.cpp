// Lists the interfaces of this machine and the cameras on them.

#include "norvane/Norvane.h"

#include <cstdio>

namespace {

/// A text that the transport layer knows of a camera; no connection to the camera is needed.
std::string text(Norvane::GenApi::INodeMap& map, const char* name) {
    const Norvane::GenApi::CStringPtr node = map.GetNode(name);
    return IsReadable(node) ? node->GetValue().str() : "-";
}

} // namespace

int main() {
    try {
        // Lists, cameras and interfaces must be gone before the system; the order of declarations sees to it.
        const Norvane::SystemPtr system = Norvane::System::GetInstance();
        const Norvane::InterfaceList interfaces = system->GetInterfaces();
        for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
            const Norvane::InterfacePtr interface = interfaces.GetByIndex(i);
            std::printf("%s\n", interface->GetInterfaceID().c_str());
            const Norvane::CameraList cameras = interface->GetCameras(false);
            for (unsigned int j = 0; j < cameras.GetSize(); ++j) {
                Norvane::GenApi::INodeMap& map = cameras.GetByIndex(j)->GetTLDeviceNodeMap();
                std::printf("  %s  %s %s\n", text(map, "DeviceSerialNumber").c_str(),
                            text(map, "DeviceVendorName").c_str(), text(map, "DeviceModelName").c_str());
            }
        }
    } catch (const Norvane::Exception& error) {
        std::fprintf(stderr, "list: %s\n", error.what());
        return 1;
    }
}
