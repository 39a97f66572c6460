#pragma once

#include "transport/emulator/FileStore.h"
#include "transport/emulator/RegisterBank.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace Norvane::Transport::Emulator {

/// What an emulated camera keeps while it is unplugged, for as long as the program runs.
struct Flash {
    static constexpr std::size_t kUserSets = 3; ///< the first is the factory's and stays empty

    std::array<std::optional<RegisterBank::Snapshot>, kUserSets> userSets;
    std::size_t startSet = 0;
    /// The address that the camera takes at power-up, in host order.
    struct PersistentIp {
        bool enabled = false;
        std::uint32_t address = 0, netmask = 0, gateway = 0;
    } persistentIp;
    FileStore::Files files; ///< those written to flash
};

} // namespace Norvane::Transport::Emulator
