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

/// What the program was built for.
struct Build {
    double longestStallMs; ///< the user interface counts as hung beyond
    /// The thread sanitizer's notes on a page of memory outlive it, so that resident memory tells nothing;
    /// the heap in use is counted without them.
    bool keepsNotesOnMemory = false;
};

/// Judges whether a run stayed level: the medians of its second quarter, when everything has been used once,
/// beside those of its last quarter. At rest nothing may be left of what was opened in between, so the limits
/// are narrow there; while the viewer is used, what is open at the time differs by chance. In runs under 5000
/// actions, which take ten minutes or, under a sanitizer, half an hour, the limits on memory and stalls are
/// four times as wide: they show crashes, hangs, threads and files left behind, and large leaks; a small one
/// takes a longer run.
///
/// @returns one line per fault; none when the run stayed level.
std::vector<std::string> FaultsOf(const std::vector<Sample>& samples, const Build& build);
