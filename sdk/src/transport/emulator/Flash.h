#pragma once

#include "transport/emulator/FileStore.h"
#include "transport/emulator/RegisterBank.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>

namespace Norvane::Transport::Emulator {

/// What an emulated camera keeps while it is unplugged, for as long as the program runs.
struct Flash {
    static constexpr std::size_t kUserSets = 3; ///< the first is the factory's and stays empty

    std::array<std::optional<RegisterBank::Snapshot>, kUserSets> userSets;
    std::size_t startSet = 0;
    FileStore::Files files; ///< those written to flash
};

} // namespace Norvane::Transport::Emulator
