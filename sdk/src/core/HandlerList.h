#pragma once

#include "base/Mutex.h"
#include "norvane/EventHandlers.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace Norvane::Core {

/// The registered handlers of one kind. A handler is called with no lock held, and removing it waits for a
/// call that runs on another thread; a handler may remove itself, or any other, while it is called. Any
/// thread.
///
/// @tparam Handler  the interface that the calls use, derived from EventHandler.
template <class Handler>
class HandlerList {
public:
    /// Registers for the events numbered above `since`. False when the handler is registered already.
    bool Add(Handler& handler, std::uint64_t since = 0) EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        if (Find(handler) != m_entries.end()) {
            return false;
        }
        m_entries.push_back(std::make_shared<Entry>(Entry{&handler, since, true, {}}));
        return true;
    }

    /// Returns after the handler's last call. False when it is not registered.
    bool Remove(const EventHandler& handler) EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        const auto it = Find(handler);
        if (it == m_entries.end()) {
            return false;
        }
        const std::shared_ptr<Entry> entry = *it;
        m_entries.erase(it);
        entry->registered = false;
        const auto self = std::this_thread::get_id();
        while (std::any_of(entry->callers.begin(), entry->callers.end(),
                           [self](std::thread::id id) { return id != self; })) {
            m_left.wait(lock);
        }
        return true;
    }

    bool IsEmpty() const EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        return m_entries.empty();
    }

    /// Calls `call(handler)` for every handler that is registered for event number `event`.
    template <class Function>
    void Call(std::uint64_t event, Function&& call) EXCLUDES(m_mutex) {
        std::vector<std::shared_ptr<Entry>> entries;
        {
            MutexLock lock(m_mutex);
            entries = m_entries;
        }
        for (const std::shared_ptr<Entry>& entry : entries) {
            if (Enter(*entry, event)) {
                const Visit visit{*this, *entry};
                call(*entry->handler);
            }
        }
    }

private:
    struct Entry {
        Handler* handler;
        std::uint64_t since;
        bool registered;
        std::vector<std::thread::id> callers;
    };

    struct Visit {
        HandlerList& list;
        Entry& entry;
        ~Visit() { list.Leave(entry); }
    };

    typename std::vector<std::shared_ptr<Entry>>::iterator Find(const EventHandler& handler)
        REQUIRES(m_mutex) {
        return std::find_if(m_entries.begin(), m_entries.end(), [&handler](const auto& entry) {
            return static_cast<const EventHandler*>(entry->handler) == &handler;
        });
    }

    bool Enter(Entry& entry, std::uint64_t event) EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        if (!entry.registered || event <= entry.since) {
            return false;
        }
        entry.callers.push_back(std::this_thread::get_id());
        return true;
    }

    void Leave(Entry& entry) EXCLUDES(m_mutex) {
        {
            MutexLock lock(m_mutex);
            const auto self =
                std::find(entry.callers.begin(), entry.callers.end(), std::this_thread::get_id());
            entry.callers.erase(self);
        }
        m_left.notify_all();
    }

    mutable Mutex m_mutex;
    ConditionVariable m_left;
    std::vector<std::shared_ptr<Entry>> m_entries GUARDED_BY(m_mutex);
};

} // namespace Norvane::Core
