#include "genapi/Callbacks.h"

#include "genapi/NodeMap.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Norvane::GenApi {

namespace {

/// Callbacks that change nodes cause further calls; two that answer each other's changes never come to an
/// end.
constexpr int kMaxRounds = 8;

/// How deep this thread is in callbacks: one that deregisters cannot wait for itself.
thread_local int t_inCallback = 0;

struct InCallback {
    InCallback() { ++t_inCallback; }
    ~InCallback() { --t_inCallback; }
};

void Call(const Listener& listener) {
    const InCallback inside;
    try {
        listener.function(listener.node);
    } catch (const std::exception& error) {
        Log(LogLevel::Error, "The callback of " + listener.node->Name() + " failed: " + error.what());
    }
}

/// All handles of the process, and the calls that run.
class Registry {
public:
    /// One more registration of a listener; the first one gives it its handle.
    CallbackHandleType Add(const CallbackList::ListenerPtr& listener) {
        const MutexLock lock(m_mutex);
        if (++listener->registrations == 1) {
            listener->handle = ++m_last;
            m_listeners.emplace(m_last, listener);
        }
        return listener->handle;
    }

    /// One registration less; with the last one the handle ends. Null when there was none.
    CallbackList::ListenerPtr Remove(CallbackHandleType handle) {
        const MutexLock lock(m_mutex);
        const auto found = m_listeners.find(handle);
        if (found == m_listeners.end()) {
            return nullptr;
        }
        auto listener = found->second;
        if (--listener->registrations == 0) {
            m_listeners.erase(found);
        }
        return listener;
    }

    void DropEnded(std::vector<CallbackList::ListenerPtr>& listeners) {
        const MutexLock lock(m_mutex);
        std::erase_if(listeners, [](const auto& listener) { return listener->registrations == 0; });
    }

    bool Begin(Listener* listener) {
        const MutexLock lock(m_mutex);
        if (listener->registrations == 0) {
            return false;
        }
        m_running.push_back(listener);
        return true;
    }
    void End(Listener* listener) {
        const MutexLock lock(m_mutex);
        m_running.erase(std::find(m_running.begin(), m_running.end(), listener));
        m_ended.notify_all();
    }
    void WaitFor(Listener* listener) {
        MutexLock lock(m_mutex);
        while (std::find(m_running.begin(), m_running.end(), listener) != m_running.end()) {
            m_ended.wait(lock);
        }
    }

private:
    Mutex m_mutex;
    ConditionVariable m_ended;
    std::map<CallbackHandleType, CallbackList::ListenerPtr> m_listeners GUARDED_BY(m_mutex);
    std::vector<Listener*> m_running GUARDED_BY(m_mutex);
    CallbackHandleType m_last GUARDED_BY(m_mutex) = 0;
};

Registry& TheRegistry() {
    static auto* registry = new Registry; // outlives node maps that are released during exit
    return *registry;
}

void CallUnlessEnded(Listener& listener) {
    if (TheRegistry().Begin(&listener)) {
        Call(listener);
        TheRegistry().End(&listener);
    }
}

} // namespace

CallbackList::ListenerPtr CallbackList::Add(Node& node, NodeCallback function, ECallbackType type) {
    auto& listeners = m_listeners[&node];
    const auto same = std::find_if(listeners.begin(), listeners.end(), [&](const ListenerPtr& listener) {
        return listener->function == function && listener->type == type;
    });
    node.m_hasListeners = true;
    return same != listeners.end()
               ? *same
               : listeners.emplace_back(std::make_shared<Listener>(Listener{&node, function, type}));
}

void CallbackList::AddChanged(Node& node) {
    m_anyChanged = true;
    if (node.m_hasListeners && !node.m_changePending) {
        node.m_changePending = true;
        m_changed.push_back(&node);
    }
}

void CallbackList::RunInside() {
    for (int round = 0; !m_changed.empty(); ++round) {
        auto changed = std::move(m_changed);
        m_changed.clear();
        for (Node* node : changed) {
            node->m_changePending = false;
        }
        if (round == kMaxRounds) {
            Log(LogLevel::Error,
                "The callbacks of " + changed.front()->Name() +
                    " and other nodes keep changing one another; the last changes are not reported");
            break;
        }
        for (Node* node : changed) {
            const auto found = m_listeners.find(node);
            if (found == m_listeners.end()) {
                continue;
            }
            TheRegistry().DropEnded(found->second);
            node->m_hasListeners = !found->second.empty();
            const auto listeners = found->second; // a callback may register and deregister
            for (const auto& listener : listeners) {
                if (listener->type == cbPostInsideLock) {
                    CallUnlessEnded(*listener);
                } else if (std::find(m_outside.begin(), m_outside.end(), listener) == m_outside.end()) {
                    m_outside.push_back(listener);
                }
            }
        }
    }
    m_anyChanged = false;
}

std::vector<CallbackList::ListenerPtr> CallbackList::TakeOutside() {
    return std::exchange(m_outside, {});
}

void CallbackList::RunOutside(const std::vector<ListenerPtr>& due) {
    for (const auto& listener : due) {
        CallUnlessEnded(*listener);
    }
}

CallbackHandleType Register(INode* node, NodeCallback function, ECallbackType type) {
    auto* const inner = dynamic_cast<Node*>(node);
    if (!inner || !function) {
        throw NullPointerError();
    }
    auto& map = inner->Map();
    const Operation operation(map);
    return TheRegistry().Add(map.Callbacks().Add(*inner, function, type));
}

bool Deregister(CallbackHandleType handle) {
    // Without the map's lock, which somebody may hold who waits for the device: the map lets the listener go
    // when it would call it next.
    const auto listener = TheRegistry().Remove(handle);
    if (listener && t_inCallback == 0) {
        TheRegistry().WaitFor(listener.get());
    }
    return listener != nullptr;
}

} // namespace Norvane::GenApi
