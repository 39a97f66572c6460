#pragma once

#include "Meter.h"

#include <string>
#include <vector>

/// One line of a run's record.
struct Sample {
    double seconds = 0.0;
    bool isAtRest = false; ///< all displays closed, all cameras unplugged
    Holding holding;
    double stallMs = 0.0; ///< the longest since the sample before
    int displays = 0;
    int streams = 0;
    int actions = 0; ///< so far
};

/// Judges whether a run stayed level: the medians of its second quarter, when everything has been used once,
/// beside those of its last quarter. At rest nothing may be left of what was opened in between, so the limits
/// are narrow there; while the viewer is used, what is open at the time differs by chance. In runs under ten
/// minutes the limits on memory and stalls are four times as wide: they show crashes, hangs, threads and
/// files left behind, and large leaks; a small one takes a longer run.
///
/// @param longestStallMs  the user interface counts as hung beyond.
/// @returns one line per fault; none when the run stayed level.
std::vector<std::string> FaultsOf(const std::vector<Sample>& samples, double longestStallMs);
