#pragma once

#include <functional>
#include <string>
#include <vector>

/// What one run in a process of its own took.
struct Run {
    double seconds = 0;          ///< from the fork to the end
    double processorSeconds = 0; ///< of all its threads
    double peakMegabytes = 0;    ///< resident
    bool succeeded = false;
};

Run RunChild(const std::function<void()>& work);
Run RunCommand(const std::vector<std::string>& command);
