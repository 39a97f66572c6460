#pragma once

#include <functional>
#include <thread>

namespace Norvane::Core {

/// Starts a thread of the library. `name` shows in debuggers (15 characters at most); an exception that
/// leaves `body` becomes one log line.
std::thread StartThread(const char* name, std::function<void()> body);

/// True on a thread that StartThread made: such a thread must not wait for the system's end.
bool OnLibraryThread() noexcept;

} // namespace Norvane::Core
