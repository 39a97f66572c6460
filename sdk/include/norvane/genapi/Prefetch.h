#pragma once

#include "norvane/genapi/INodeMap.h"

#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Norvane::GenApi {

/// Reads what a list of all features shows, the access modes and values of everything below "Root", into the
/// caches of node maps, on a thread of the library. A list that is filled afterwards asks the device only for
/// what is not cachable. Others may use the maps meanwhile; they wait for one register at most.
///
/// Giving a reading up, by destroying the object, waits for no device: the thread ends by itself after the
/// register that it is reading. The system's end waits for it.
class Prefetch {
public:
    /// Starts reading.
    /// @param maps   of one camera; read one after the other.
    /// @param owner  keeps the maps alive; let go by the library's thread when it reads no longer.
    /// @param done   called by the library's thread at the end, null for nothing; never once the object is
    ///               destroyed, which waits for a call that has begun.
    Prefetch(std::vector<INodeMap*> maps, std::shared_ptr<const void> owner, std::function<void()> done);
    /// Gives the reading up where it goes on.
    ~Prefetch();
    Prefetch(const Prefetch&) = delete;
    Prefetch& operator=(const Prefetch&) = delete;

    /// Waits for the end, at most so long. @return whether it has come; `done` may still be running.
    bool WaitFor(std::chrono::milliseconds longest) const;

    /// Waits until no reading that was given up touches its maps any more. Not on the thread of a reading.
    static void AwaitGivenUp();

private:
    struct Work;
    std::shared_ptr<Work> m_work;
    std::thread m_thread;
};

} // namespace Norvane::GenApi
