#pragma once

#include <algorithm>
#include <string>
#include <vector>

// The parts of this benchmark. Each works below `folder`, removes what it wrote, prints its figures, and
// answers whether it could measure them.

/// Videos of 1920 x 1080 colour frames: ours beside the ffmpeg command.
bool MeasureVideos(const std::string& folder, int frames, int pairs);
/// What the camera's thread pays for an image that is buffered, beside a copy of the frame.
bool MeasureBufferCost(const std::string& folder, int images);
/// A buffered run at the pace of a fast camera: what was grabbed, kept and missed.
bool MeasureLiveBuffer(const std::string& folder, int images, int imagesPerSecond);
/// Raw stills written as they come, beside a plain loop that writes a file per frame.
bool MeasureStills(const std::string& folder, int images, int pairs);

inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}
