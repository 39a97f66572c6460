#include "core/Version.h"

namespace Norvane::Core {

LibraryVersion CurrentLibraryVersion() noexcept {
    return {NORVANE_VERSION_MAJOR, NORVANE_VERSION_MINOR, NORVANE_VERSION_PATCH, NORVANE_VERSION_BUILD};
}

std::string LibraryVersionText() {
    const LibraryVersion version = CurrentLibraryVersion();
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
           std::to_string(version.type) + "." + std::to_string(version.build);
}

} // namespace Norvane::Core
