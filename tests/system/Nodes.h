#pragma once

#include "norvane/genapi/GenApi.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Norvane::Test {

/// Waits until `condition()` holds; false after ten seconds, which is far longer than anything takes.
bool Eventually(const std::function<bool()>& condition);

// Nodes by name; a missing one or one of another kind throws, and so fails the test.
std::string TextOf(GenApi::INodeMap& map, const char* node); ///< of any kind of value
std::int64_t NumberOf(GenApi::INodeMap& map, const char* node);
void SetText(GenApi::INodeMap& map, const char* node, const std::string& text);

} // namespace Norvane::Test
