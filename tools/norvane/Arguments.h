#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class MapKind { Any, Device, TransportLayer, Stream, Interface };

/// A command line, taken apart. Options may stand anywhere; after "--" everything is an operand. A single
/// dash starts an option only as "-h", so that a value may be negative.
struct Arguments {
    std::string command; ///< empty when none was given
    std::vector<std::string> operands;
    MapKind map = MapKind::Any;
    bool json = false;
    bool help = false;
    bool version = false;
    bool verbose = false;
    std::int64_t timeoutMs = 5000;
};

/// @throws Failure (kUsage) for an unknown option or an option without its value.
Arguments parseArguments(const std::vector<std::string>& words);

/// The help of one command, or of the program for an empty or unknown name.
std::string helpText(std::string_view command);
