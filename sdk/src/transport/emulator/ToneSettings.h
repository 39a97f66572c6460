#pragma once

#include "transport/emulator/PixelWriters.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Norvane::Transport::Emulator {

/// What turns light into samples.
struct ToneSettings {
    std::array<double, 3> gain{1.0, 1.0,
                               1.0}; ///< of red, green and blue: exposure, gain and white balance multiplied
    double black = 0.0;              ///< share of full scale that is added
    double gamma = 1.0;
    std::vector<std::uint16_t>
        lut; ///< the user's table over the whole range, 16-bit values; empty when it is off

    bool operator==(const ToneSettings&) const = default;
};

ToneCurves MakeToneCurves(const ToneSettings& settings);

} // namespace Norvane::Transport::Emulator
