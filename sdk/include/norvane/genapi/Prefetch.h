#pragma once

#include "norvane/genapi/INodeMap.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace Norvane::GenApi {

/// Reads what a list of all features shows, the access modes and values of everything below "Root", into the
/// caches of node maps, on a thread of the library. A list that is filled afterwards asks the device only for
/// what is not cachable. Others may use the maps meanwhile; they wait for one register at most.
class Prefetch {
public:
    /// The maps must outlive this object. `done` is called by the library's thread at the end, unless the
    /// object is destroyed before; null for nothing.
    Prefetch(std::vector<INodeMap*> maps, std::function<void()> done);
    /// Stops after the register that is being read.
    ~Prefetch();
    Prefetch(const Prefetch&) = delete;
    Prefetch& operator=(const Prefetch&) = delete;

    /// Waits for the end, at most so long. @return whether it has come; `done` may still be running.
    bool WaitFor(std::chrono::milliseconds longest) const;

private:
    struct Work;
    std::unique_ptr<Work> m_work;
};

} // namespace Norvane::GenApi
