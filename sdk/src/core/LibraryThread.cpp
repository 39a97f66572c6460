#include "core/LibraryThread.h"

#include "norvane/Log.h"

#include <pthread.h>
#include <string>
#include <utility>

namespace Norvane::Core {
namespace {

thread_local bool t_ofLibrary = false;

} // namespace

std::thread StartThread(const char* name, std::function<void()> body) {
    return std::thread([name, body = std::move(body)] {
        t_ofLibrary = true;
        pthread_setname_np(pthread_self(), name);
        try {
            body();
        } catch (const std::exception& error) {
            Log(LogLevel::Error, std::string("thread ") + name + " ended: " + error.what());
        }
    });
}

bool OnLibraryThread() noexcept {
    return t_ofLibrary;
}

} // namespace Norvane::Core
