#pragma once

#include "core/Tasks.h"
#include "transport/Transport.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace Norvane::Core {

/// What a camera or an interface needs of the system it belongs to.
struct Services {
    std::shared_ptr<Transport::ITransport> transport;
    std::shared_ptr<Tasks> tasks;
    std::function<void()> rescan; ///< asks for a newer picture; returns at once
};

/// Gives a camera an address in the background; `running` counts the attempts that go on.
void StartForceIp(const Services& services, const std::string& deviceId,
                  const std::shared_ptr<std::atomic<int>>& running);

} // namespace Norvane::Core
