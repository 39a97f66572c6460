#pragma once

#include <string>

/// A description of `features` features as a camera's: registers, bit fields, converters, selectors, locks
/// and enumerations in turn, in categories of fifty, with the usual texts. A hundred features depend on the
/// register "Hub".
std::string GeneratedDescription(int features);
