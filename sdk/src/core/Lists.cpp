#include "norvane/Exception.h"
#include "norvane/Interface.h"

#include <string>

namespace Norvane {
namespace {

template <class Handle>
Handle At(const std::vector<Handle>& handles, unsigned int index, const char* list) {
    if (index >= handles.size()) {
        throw Exception(Error::InvalidParameter,
                        std::string(list) + " has " + std::to_string(handles.size()) +
                            " entries, so there is none at index " + std::to_string(index));
    }
    return handles[index];
}

} // namespace

CameraPtr CameraList::GetByIndex(unsigned int index) const {
    return At(m_cameras, index, "the camera list");
}

InterfacePtr InterfaceList::GetByIndex(unsigned int index) const {
    return At(m_interfaces, index, "the interface list");
}

} // namespace Norvane
