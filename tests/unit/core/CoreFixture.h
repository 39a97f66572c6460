#pragma once

#include "FakeTransport.h"
#include "core/SystemImpl.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/genapi/GenApi.h"

#include <gmock/gmock.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Norvane::Test {

/// The error code that `action` throws, Success when it throws nothing.
template <class Action>
Error ErrorOf(Action&& action) {
    try {
        action();
    } catch (const Exception& error) {
        return error.GetError();
    }
    return Error::Success;
}

inline std::string TextOf(GenApi::INodeMap& map, const char* node) {
    const GenApi::CValuePtr value = map.GetNode(node);
    return value->ToString().str();
}

inline std::int64_t NumberOf(GenApi::INodeMap& map, const char* node) {
    const GenApi::CIntegerPtr value = map.GetNode(node);
    return value->GetValue();
}

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

/// A system over one scripted transport with one GigE Vision interface, "eth0".
class CoreFixture : public ::testing::Test {
protected:
    void Start() {
        std::vector<std::unique_ptr<Transport::ITransport>> transports;
        transports.push_back(MakeTransport(m_world));
        m_system = std::make_unique<Core::SystemImpl>(std::move(transports));
    }

    /// Starts with one camera, number 7, and gives it.
    CameraPtr StartWithCamera() {
        m_world->AddInterface("eth0");
        m_fake = m_world->AddCamera("cam", "eth0", "7");
        Start();
        return m_system->GetCameras(false).GetByIndex(0);
    }

    std::shared_ptr<FakeWorld> m_world = std::make_shared<FakeWorld>();
    std::shared_ptr<FakeCamera> m_fake;
    std::unique_ptr<ISystem> m_system;
};

} // namespace Norvane::Test
