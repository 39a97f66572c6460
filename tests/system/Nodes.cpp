#include "Nodes.h"

#include <chrono>
#include <thread>

namespace Norvane::Test {

using namespace std::chrono_literals;

bool Eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

std::string TextOf(GenApi::INodeMap& map, const char* node) {
    const GenApi::CValuePtr value = map.GetNode(node);
    return value->ToString().str();
}

std::int64_t NumberOf(GenApi::INodeMap& map, const char* node) {
    if (const GenApi::CEnumerationPtr enumeration = map.GetNode(node)) {
        return enumeration->GetIntValue();
    }
    const GenApi::CIntegerPtr value = map.GetNode(node);
    return value->GetValue();
}

void SetText(GenApi::INodeMap& map, const char* node, const std::string& text) {
    const GenApi::CValuePtr value = map.GetNode(node);
    value->FromString(text);
}

} // namespace Norvane::Test
