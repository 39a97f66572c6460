// Any bytes as a file of emulated cameras.
#include "transport/emulator/Settings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace Norvane::Transport::Emulator;

namespace {

void Demand(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<Problem> problems;
    const Settings settings = Settings::Read(text, "/nowhere", problems);
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    for (const Problem& problem : problems) {
        Demand(problem.line >= 0 && problem.line <= lines && !problem.text.empty());
        // It goes to the log as one line.
        Demand(problem.text.find('\n') == std::string::npos && IsUtf8(problem.text));
    }
    for (const CameraSettings& camera : settings.cameras) {
        Demand(std::any_of(
            settings.interfaces.begin(), settings.interfaces.end(),
            [&](const InterfaceSettings& interface) { return interface.id == camera.interfaceId; }));
        Demand(camera.width > 0 && camera.height > 0 && camera.frameRate > 0.0 && camera.loss >= 0.0 &&
               camera.loss <= 1.0 && camera.fileBufferSize > 0);
    }
    return 0;
}
