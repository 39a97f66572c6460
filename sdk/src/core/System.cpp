#include "norvane/System.h"

#include "base/Mutex.h"
#include "core/LibraryThread.h"
#include "core/SystemImpl.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Norvane {
namespace {

/// The one system of the process. A new one is made only after the former one is gone, so that two never
/// share the transports' sockets and files.
struct Singleton {
    Mutex mutex;
    ConditionVariable changed;
    std::weak_ptr<ISystem> system GUARDED_BY(mutex);
    bool exists GUARDED_BY(mutex) = false;
};

Singleton& TheSingleton() {
    // Never destroyed: a handle in a static object may be dropped after this file's statics.
    static auto* singleton = new Singleton;
    return *singleton;
}

void Destroy(const ISystem* system) {
    delete system;
    Singleton& singleton = TheSingleton();
    {
        MutexLock lock(singleton.mutex);
        singleton.exists = false;
    }
    singleton.changed.notify_all();
}

void Release(const ISystem* system) {
    if (Core::OnLibraryThread()) {
        // The last handle was dropped by an event handler, on a thread that the system's end waits for.
        std::thread(Destroy, system).detach();
    } else {
        Destroy(system);
    }
}

std::unique_ptr<Core::SystemImpl> MakeSystem() {
    using Create = std::unique_ptr<Transport::ITransport> (*)();
    std::vector<std::unique_ptr<Transport::ITransport>> transports;
    std::string reasons;
    for (const Create create : {&Transport::CreateAravisTransport, &Transport::CreateEmulatorTransport}) {
        try {
            transports.push_back(create());
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("a way of reaching cameras cannot be used: ") + error.what());
            reasons += std::string(reasons.empty() ? "" : "; ") + error.what();
        }
    }
    if (transports.empty()) {
        throw Exception(Error::NotAvailable, "the camera library cannot reach any camera: " + reasons);
    }
    return std::make_unique<Core::SystemImpl>(std::move(transports));
}

} // namespace

SystemPtr System::GetInstance() {
    Singleton& singleton = TheSingleton();
    MutexLock lock(singleton.mutex);
    for (;;) {
        if (std::shared_ptr<ISystem> system = singleton.system.lock()) {
            return SystemPtr(std::move(system));
        }
        if (!singleton.exists) {
            break;
        }
        singleton.changed.wait(lock);
    }
    std::shared_ptr<ISystem> system(MakeSystem().release(), &Release);
    singleton.system = system;
    singleton.exists = true;
    return SystemPtr(std::move(system));
}

} // namespace Norvane
