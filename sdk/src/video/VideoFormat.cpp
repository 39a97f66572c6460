#include "video/VideoFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace Norvane::Video {

AVRational ExactRate(double framesPerSecond) {
    const std::int64_t denominator = framesPerSecond < 1.0 ? 1'000'000 : 1000;
    // Limited before it is rounded: a rate may be larger than any integer. A frame of more than a day, in the
    // 10 000 and more ticks a second of an MP4, is longer than the container can say.
    constexpr double kSlowest = 1e-5;
    const std::int64_t numerator =
        std::llround(std::min<double>(std::max(framesPerSecond, kSlowest) * static_cast<double>(denominator),
                                      std::numeric_limits<int>::max()));
    const std::int64_t divisor = std::gcd(numerator, denominator);
    return {static_cast<int>(numerator / divisor), static_cast<int>(denominator / divisor)};
}

} // namespace Norvane::Video
