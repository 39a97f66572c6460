#pragma once

#include "norvane/System.h"

#include <string>

namespace Norvane::Core {

LibraryVersion CurrentLibraryVersion() noexcept;
/// For example "1.0.0.12".
std::string LibraryVersionText();

} // namespace Norvane::Core
