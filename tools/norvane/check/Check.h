#pragma once

#include "check/Finding.h"

#include <string>

/// Looks at this machine and the cameras that the library finds.
/// @throws Norvane::Exception when the library cannot start.
Findings checkMachine();

bool limits(const Findings& findings);

/// A line per finding, below it what mends it, and a line that sums up.
std::string checkAsText(const Findings& findings);
/// {"limited": bool, "findings": [{"topic", "weight": good|advice|limiting, "text", "remedy"}]}
std::string checkAsJson(const Findings& findings);
