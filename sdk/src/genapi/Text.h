#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers and words as description files and node texts write them. Blanks and line breaks around a text
/// never count: makers' tools pad freely.
namespace Norvane::GenApi {

std::string_view Trim(std::string_view text) noexcept;

/// Decimal with an optional sign, or hexadecimal with "0x". A hexadecimal number of 64 bits keeps its bits,
/// so 0xFFFFFFFFFFFFFFFF is -1. Nothing else may follow.
std::optional<std::int64_t> ParseInteger(std::string_view text) noexcept;

/// An xs:float ("INF", "-INF", "NaN" included) or whatever ParseInteger takes.
std::optional<double> ParseFloat(std::string_view text) noexcept;

/// Hexadecimal digits without a prefix ("0x" is tolerated), as EventID and ChunkID use them.
std::optional<std::uint64_t> ParseHex(std::string_view text) noexcept;

/// The shortest text that reads back as the same number; numbers that a 32-bit float holds are written as
/// one.
std::string FormatShortest(double value);

std::string FormatHex(std::uint64_t value);

} // namespace Norvane::GenApi
