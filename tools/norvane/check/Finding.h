#pragma once

#include <string>
#include <vector>

/// How much a finding matters to cameras.
enum class Weight {
    Good,    ///< as it should be
    Advice,  ///< works, but may cost images or comfort in some set-ups
    Limiting ///< keeps cameras from being found, opened or received at full speed
};

/// One thing seen on the machine.
struct Finding {
    Weight weight;
    std::string topic;  ///< the part of the machine: "network", "sockets", "usb", ...
    std::string text;   ///< what is so and what follows from it
    std::string remedy; ///< what mends it, a command where there is one; empty for Good
};

using Findings = std::vector<Finding>;
