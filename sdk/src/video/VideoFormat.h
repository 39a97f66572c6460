#pragma once

extern "C" {
#include <libavutil/rational.h>
}

namespace Norvane::Video {

enum class Codec { Uncompressed, MotionJpeg, H264 };

/// What one video is to be; set when it is opened.
struct VideoFormat {
    Codec codec = Codec::Uncompressed;
    int width = 0; ///< pixels
    int height = 0;
    AVRational frameRate{30, 1}; ///< frames per second
    int quality = 75;            ///< Motion JPEG, 1 to 100
    int bitrate = 0;             ///< H.264, bits per second
};

/// A frame rate as the exact fraction that was meant: thousandths of a hertz, and finer below 1 Hz.
/// The nearest that every container can say for a rate beyond its limits, 1e-5 Hz and 2.1 MHz.
AVRational ExactRate(double framesPerSecond);

} // namespace Norvane::Video
