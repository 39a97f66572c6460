#include "transport/emulator/ToneSettings.h"

#include <algorithm>
#include <cmath>

namespace Norvane::Transport::Emulator {

ToneCurves MakeToneCurves(const ToneSettings& settings) {
    ToneCurves curves;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        auto& curve = curves.rgb[channel];
        for (std::size_t i = 0; i < curve.size(); ++i) {
            const double light = static_cast<double>(i) / static_cast<double>(curve.size() - 1);
            double value = std::clamp(light * settings.gain[channel] + settings.black, 0.0, 1.0);
            if (settings.gamma != 1.0) {
                value = std::pow(value, settings.gamma);
            }
            if (!settings.lut.empty()) {
                const auto index = static_cast<std::size_t>(
                    std::lround(value * static_cast<double>(settings.lut.size() - 1)));
                value = settings.lut[index] / 65535.0;
            }
            curve[i] = static_cast<std::uint16_t>(std::lround(value * 65535.0));
        }
    }
    return curves;
}

} // namespace Norvane::Transport::Emulator
