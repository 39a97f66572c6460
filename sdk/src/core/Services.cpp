#include "core/Services.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"

namespace Norvane::Core {

void StartForceIp(const Services& services, const std::string& deviceId,
                  const std::shared_ptr<std::atomic<int>>& running) {
    if (!services.transport || !services.tasks) {
        return;
    }
    ++*running;
    const bool started = services.tasks->Run([services, deviceId, running] {
        try {
            services.transport->ForceIp(deviceId);
        } catch (const Exception& error) {
            Log(LogLevel::Warning, "no address could be given to " + deviceId + ": " + error.what());
        }
        --*running;
        services.rescan();
    });
    if (!started) {
        --*running;
    }
}

} // namespace Norvane::Core
