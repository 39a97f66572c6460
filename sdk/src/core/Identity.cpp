#include "core/Identity.h"

#include <charconv>

namespace Norvane::Core {
namespace {

constexpr std::uint64_t kLargestNumber = 2147483647;

/// FNV-1a of 64 bits (Fowler, Noll, Vo), folded into 1..kLargestNumber.
std::uint64_t NumberOfText(std::string_view text) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }
    return hash % kLargestNumber + 1;
}

} // namespace

std::optional<std::uint64_t> NumberOfSerial(std::string_view serial) {
    std::uint64_t number = 0;
    const char* end = serial.data() + serial.size();
    const auto [rest, error] = std::from_chars(serial.data(), end, number);
    if (error != std::errc() || rest != end || number < 1 || number > kLargestNumber) {
        return std::nullopt;
    }
    return number;
}

std::string UniqueIdOf(const Transport::DeviceRecord& record) {
    return record.vendor + "-" + record.model + "-" + record.serial;
}

std::uint64_t DeviceNumbers::NumberFor(const std::string& key, const Transport::DeviceRecord& record) {
    const auto known = m_byKey.find(key);
    if (known != m_byKey.end()) {
        return known->second;
    }
    std::uint64_t number = NumberOfSerial(record.serial).value_or(0);
    if (number == 0 || m_taken.count(number) != 0) {
        // A line break cannot stand inside a field, so two devices never share the hashed text by accident.
        number = NumberOfText(record.vendor + "\n" + record.model + "\n" + record.serial);
        while (m_taken.count(number) != 0) {
            number = number % kLargestNumber + 1;
        }
    }
    m_taken.insert(number);
    m_byKey.emplace(key, number);
    return number;
}

} // namespace Norvane::Core
