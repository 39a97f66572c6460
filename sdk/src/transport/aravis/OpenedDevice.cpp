#include "transport/aravis/OpenedDevice.h"

#include "norvane/Log.h"

#include <chrono>
#include <thread>

namespace Norvane::Transport {
namespace {

void OnControlLost(ArvDevice*, gpointer life) {
    (*static_cast<std::shared_ptr<DeviceLife>*>(life))->MarkLost("the camera no longer lets us control it");
}

void DeleteLife(gpointer life, GClosure*) {
    delete static_cast<std::shared_ptr<DeviceLife>*>(life);
}

} // namespace

OpenedDevice::OpenedDevice(GObjectPtr<ArvDevice> device, std::shared_ptr<DeviceLife> life)
    : m_device(std::move(device)),
      m_handler(g_signal_connect_data(m_device.get(), "control-lost", G_CALLBACK(OnControlLost),
                                      new std::shared_ptr<DeviceLife>(std::move(life)), &DeleteLife,
                                      GConnectFlags(0))) {}

OpenedDevice::~OpenedDevice() {
    g_signal_handler_disconnect(m_device.get(), m_handler); // a signal without handler holds nothing
    const auto* references = &G_OBJECT(m_device.get())->ref_count;
    for (int i = 0; i < 3000 && g_atomic_int_get(references) > 1; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (g_atomic_int_get(references) > 1) {
        Log(LogLevel::Error, "A camera's connection could not be closed; it ends with the program");
        static_cast<void>(m_device.release());
    }
}

} // namespace Norvane::Transport
