#pragma once

#include "transport/Transport.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace Norvane::Core {

/// A serial text that is a plain decimal number in 1..2147483647; nothing for every other text.
std::optional<std::uint64_t> NumberOfSerial(std::string_view serial);

/// Text that identifies a device across restarts: vendor, model and serial joined by hyphens.
std::string UniqueIdOf(const Transport::DeviceRecord& record);

/// Gives each camera the number that stands for it everywhere in the system: its own serial number where that
/// is a number in range, else a hash of vendor, model and serial, the same in every run. A number that
/// another device of this run has is stepped over. Owned by the registry, used by the discovery thread only.
class DeviceNumbers {
public:
    /// `key` tells devices apart; the same key always gets the same number.
    std::uint64_t NumberFor(const std::string& key, const Transport::DeviceRecord& record);

private:
    std::map<std::string, std::uint64_t> m_byKey;
    std::set<std::uint64_t> m_taken;
};

} // namespace Norvane::Core
