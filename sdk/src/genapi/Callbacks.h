#pragma once

#include "base/Mutex.h"
#include "norvane/genapi/Callback.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace Norvane::GenApi {

class Node;

/// One callback of one node, however often it was registered.
struct Listener {
    Node* node;
    NodeCallback function;
    ECallbackType type;
    // Guarded by the registry of all handles.
    std::int64_t registrations = 0;
    CallbackHandleType handle = 0;
};

/// The callbacks of one node map and the changes that wait for them. Everything but the run outside the lock
/// is called with the map's lock held.
class CallbackList {
public:
    using ListenerPtr = std::shared_ptr<Listener>;

    ListenerPtr Add(Node& node, NodeCallback function, ECallbackType type);

    bool Any() const { return !m_listeners.empty(); }

    void AddChanged(Node& node);
    bool ChangesPending() const { return m_anyChanged; }
    void Enter() { ++m_depth; }
    void Leave() { --m_depth; }
    bool IsOutermost() const { return m_depth == 1; }

    /// Calls the inside callbacks of all changed nodes and of those that change meanwhile; collects the
    /// outside ones. Swallows (and logs) what callbacks throw.
    void RunInside();
    /// Hands over the outside callbacks that are due.
    std::vector<ListenerPtr> TakeOutside();
    /// Runs them, without the lock.
    static void RunOutside(const std::vector<ListenerPtr>& due);

private:
    std::unordered_map<Node*, std::vector<ListenerPtr>> m_listeners;
    std::vector<Node*> m_changed;
    std::vector<ListenerPtr> m_outside;
    int m_depth = 0;
    bool m_anyChanged = false;
};

} // namespace Norvane::GenApi
