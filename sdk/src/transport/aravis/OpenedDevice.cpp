#include "transport/aravis/OpenedDevice.h"

namespace Norvane::Transport {

OpenedDevice::OpenedDevice(GObjectPtr<ArvDevice> device, std::shared_ptr<ControlWatch> watch)
    : m_device(std::move(device)), m_watch(std::move(watch)) {
    ControlWatch::Attach(m_watch, m_device.get());
}

OpenedDevice::~OpenedDevice() {
    m_watch->Close(std::move(m_device));
}

} // namespace Norvane::Transport
