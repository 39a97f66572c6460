#pragma once

#include "EmulatorFixture.h"
#include "GatedTransport.h"
#include "core/SystemImpl.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Norvane::Test {

/// Remembers events as text, in order.
class EventRecorder : public InterfaceArrivalEventHandler,
                      public InterfaceRemovalEventHandler,
                      public InterfaceEventHandler {
public:
    void OnInterfaceArrival(std::string id) override { Add("+" + id); }
    void OnInterfaceRemoval(std::string id) override { Add("-" + id); }
    void OnDeviceArrival(std::uint64_t number) override { Add("+" + std::to_string(number)); }
    void OnDeviceRemoval(std::uint64_t number) override { Add("-" + std::to_string(number)); }

    std::vector<std::string> Events() const {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

private:
    void Add(std::string event) {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(std::move(event));
    }

    mutable std::mutex m_mutex;
    std::vector<std::string> m_events;
};

/// A system of its own over emulated cameras, which a test can hold at the transport's gates.
class CoreFixture : public EmulatorFixture {
protected:
    void Start() {
        std::vector<std::unique_ptr<Transport::ITransport>> transports;
        transports.push_back(std::make_unique<GatedTransport>(m_gates));
        m_system = SystemPtr(std::make_shared<Core::SystemImpl>(std::move(transports)));
    }

    /// Starts with one camera, number 7, and gives it.
    CameraPtr StartWithCamera() {
        AddInterface();
        AddCamera("7", "width=64\nheight=64\nframe-rate=1000");
        Start();
        return m_system->GetCameras(false).GetByIndex(0);
    }

    std::shared_ptr<Gates> m_gates = std::make_shared<Gates>();
};

} // namespace Norvane::Test
