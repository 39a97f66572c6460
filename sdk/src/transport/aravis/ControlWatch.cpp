#include "transport/aravis/ControlWatch.h"

#include "norvane/Log.h"

#include <chrono>
#include <thread>
#include <utility>

namespace Norvane::Transport {
namespace {

constexpr const char* kSignal = "control-lost";
constexpr const char* kWatch = "norvane-control-watch";
constexpr const char* kShareOfWatch = "norvane-control-watch-share";

void DeleteShare(gpointer share) {
    delete static_cast<std::shared_ptr<ControlWatch>*>(share);
}

/// Lets go once nobody else holds the device any more; a thread that has told of lost control does so at
/// once, and tells no second time.
void LetGoLast(GObjectPtr<ArvDevice> device) {
    const auto* references = &G_OBJECT(device.get())->ref_count;
    for (int i = 0; i < 3000 && g_atomic_int_get(references) > 1; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (g_atomic_int_get(references) > 1) {
        Log(LogLevel::Error, "A camera's connection could not be closed; it ends with the program");
        static_cast<void>(device.release());
    }
}

} // namespace

void ControlWatch::Attach(std::shared_ptr<ControlWatch> watch, ArvDevice* device) {
    // Aravis has no default handler of its own, and GLib's stand-in looks into a device that is gone.
    static const bool isHeard = [] {
        g_signal_override_class_closure(
            g_signal_lookup(kSignal, ARV_TYPE_DEVICE), ARV_TYPE_DEVICE,
            g_cclosure_new(G_CALLBACK(&ControlWatch::OnControlLost), nullptr, nullptr));
        return true;
    }();
    static_cast<void>(isHeard);
    // The share is not for the heartbeat thread, which is older than it.
    g_object_set_data(G_OBJECT(device), kWatch, watch.get());
    g_object_set_data_full(G_OBJECT(device), kShareOfWatch, new std::shared_ptr(std::move(watch)),
                           &DeleteShare);
}

void ControlWatch::OnControlLost(ArvDevice* device) {
    if (!device) {
        return; // GLib is closing it, and waits for this thread to end
    }
    if (auto* watch = static_cast<ControlWatch*>(g_object_get_data(G_OBJECT(device), kWatch))) {
        watch->MarkLost(device);
    }
}

void ControlWatch::MarkLost(ArvDevice* device) {
    bool mayBeLast = false;
    {
        const MutexLock lock(m_mutex);
        m_life->MarkLost("the camera no longer lets us control it");
        mayBeLast = !std::exchange(m_hasTold, true) && m_isClosing;
    }
    if (mayBeLast) {
        GObjectPtr<ArvDevice> held(static_cast<ArvDevice*>(g_object_ref(device)));
        std::thread([last = std::move(held)]() mutable { LetGoLast(std::move(last)); }).detach();
    }
}

void ControlWatch::Close(GObjectPtr<ArvDevice> device) {
    bool hasTold = false;
    {
        const MutexLock lock(m_mutex);
        m_isClosing = true;
        hasTold = m_hasTold;
    }
    if (hasTold) {
        LetGoLast(std::move(device));
    }
}

} // namespace Norvane::Transport
