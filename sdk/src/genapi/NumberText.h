#pragma once

#include "genapi/Text.h"
#include "norvane/genapi/Enums.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Numbers as a node's ToString and FromString show them, by its representation.
namespace Norvane::GenApi {

ERepresentation ParseRepresentation(std::string_view text, ERepresentation otherwise);

/// Decimal; "0x..." for HexNumber, dotted for IPV4Address, with colons for MACAddress.
std::string FormatInteger(std::int64_t value, ERepresentation representation);
/// Takes what FormatInteger gives, and plain numbers in any representation.
std::optional<std::int64_t> ParseIntegerText(std::string_view text, ERepresentation representation);

/// Numbers separated by semicolons, commas or blanks; what is no number is left out.
template <class T, class Parse>
std::vector<T> ParseList(std::string_view text, Parse&& parse) {
    std::vector<T> values;
    while (!text.empty()) {
        const auto end = text.find_first_of(";, \t\r\n");
        if (const auto value = parse(text.substr(0, end))) {
            values.push_back(*value);
        }
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return values;
}

} // namespace Norvane::GenApi
