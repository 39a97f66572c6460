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

/// All handles of the process, and the calls that run outside a node map's lock.
class Registry {
public:
    struct Registration {
        std::weak_ptr<NodeMap> map;
        CallbackList::ListenerPtr listener;
    };

    /// One more registration of a listener; the first one gives it its handle.
    CallbackHandleType Add(const std::weak_ptr<NodeMap>& map, const CallbackList::ListenerPtr& listener) {
        const MutexLock lock(m_mutex);
        if (++listener->registrations == 1) {
            listener->handle = ++m_last;
            m_registrations.emplace(m_last, Registration{map, listener});
        }
        return listener->handle;
    }

    bool Find(CallbackHandleType handle, Registration& registration) {
        const MutexLock lock(m_mutex);
        const auto found = m_registrations.find(handle);
        if (found != m_registrations.end()) {
            registration = found->second;
        }
        return found != m_registrations.end();
    }

    /// One registration less; with the last one the handle ends. False when there was none.
    bool Remove(Listener& listener) {
        const MutexLock lock(m_mutex);
        if (listener.registrations == 0) {
            return false;
        }
        if (--listener.registrations == 0) {
            m_registrations.erase(listener.handle);
        }
        return true;
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
    std::map<CallbackHandleType, Registration> m_registrations GUARDED_BY(m_mutex);
    std::vector<Listener*> m_running GUARDED_BY(m_mutex);
    CallbackHandleType m_last GUARDED_BY(m_mutex) = 0;
};

Registry& TheRegistry() {
    static auto* registry = new Registry; // outlives node maps that are released during exit
    return *registry;
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

void CallbackList::Remove(const ListenerPtr& listener) {
    auto& listeners = m_listeners[listener->node];
    listeners.erase(std::remove(listeners.begin(), listeners.end(), listener), listeners.end());
    listener->node->m_hasListeners = !listeners.empty();
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
            const auto listeners = found->second; // a callback may register and deregister
            for (const auto& listener : listeners) {
                if (listener->registrations == 0) {
                    continue;
                }
                if (listener->type == cbPostInsideLock) {
                    Call(*listener);
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
        if (TheRegistry().Begin(listener.get())) {
            Call(*listener);
            TheRegistry().End(listener.get());
        }
    }
}

CallbackHandleType Register(INode* node, NodeCallback function, ECallbackType type) {
    auto* const inner = dynamic_cast<Node*>(node);
    if (!inner || !function) {
        throw NullPointerError();
    }
    auto& map = inner->Map();
    const Operation operation(map);
    return TheRegistry().Add(map.weak_from_this(), map.Callbacks().Add(*inner, function, type));
}

bool Deregister(CallbackHandleType handle) {
    Registry::Registration registration;
    if (!TheRegistry().Find(handle, registration)) {
        return false;
    }
    auto& listener = registration.listener;
    bool removed = false;
    if (const auto map = registration.map.lock()) {
        // Taking the lock waits for a call inside it.
        const Operation operation(*map);
        removed = TheRegistry().Remove(*listener);
        if (removed && listener->registrations == 0) {
            map->Callbacks().Remove(listener);
        }
    } else {
        removed = TheRegistry().Remove(*listener);
    }
    if (removed && t_inCallback == 0) {
        TheRegistry().WaitFor(listener.get());
    }
    return removed;
}

} // namespace Norvane::GenApi
