#pragma once

#include "norvane/genapi/INode.h"

#include <cstdint>

namespace Norvane::GenApi {

/// What it throws is logged and goes no further.
using NodeCallback = void (*)(INode* node);
/// Never 0 for a registered callback.
using CallbackHandleType = std::int64_t;

/// Calls `function` whenever the node's value, range or access mode may have changed: once per change, on the
/// thread that caused it, inside or after the node map's lock. The same function registered again for the
/// same node and type is still called once per change and keeps its handle, which then stands for as many
/// registrations.
/// @throws Exception (GenApiLogical) for a null node.
CallbackHandleType Register(INode* node, NodeCallback function, ECallbackType type = cbPostInsideLock);

/// Ends one registration; false for a handle that is not registered. A call that runs on another thread is
/// waited for, except from within a callback, which might be what that thread waits for.
bool Deregister(CallbackHandleType handle);

} // namespace Norvane::GenApi
