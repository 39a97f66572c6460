#include "Verdict.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace {

struct Limit {
    std::string what;
    std::function<double(const Sample&)> value;
    /// The last quarter's median may be this share and this much more than the second's.
    double share;
    double slack;
};

/// Actions under which a run is mostly warming up: pools and caches fill when the dice first choose what
/// needs them.
constexpr int kShortRun = 5000;
constexpr double kShortRunSlack = 4.0;
/// Nothing more in a long run; two in a short one, where a thread or a file that is opened once and kept,
/// like the firmware dialog's, may come at any time.
constexpr double kNoneMore = 0.5;

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

const std::string kResidentMemory = "resident memory, MB";

const std::vector<Limit> kRestLimits{
    {kResidentMemory, [](const Sample& s) { return s.holding.residentMb; }, 0.05, 16.0},
    {"heap in use, MB", [](const Sample& s) { return s.holding.heapMb; }, 0.02, 4.0},
    {"threads", [](const Sample& s) { return s.holding.threads; }, 0.0, kNoneMore},
    {"open files", [](const Sample& s) { return s.holding.files; }, 0.0, kNoneMore},
};
const std::vector<Limit> kBusyLimits{
    {kResidentMemory, [](const Sample& s) { return s.holding.residentMb; }, 0.5, 50.0},
    {"threads", [](const Sample& s) { return s.holding.threads; }, 0.5, 10.0},
    {"open files", [](const Sample& s) { return s.holding.files; }, 0.5, 10.0},
    {"longest stall of the user interface, ms", [](const Sample& s) { return s.stallMs; }, 1.0, 100.0},
};

void judge(const char* when, const std::vector<Sample>& samples, const std::vector<Limit>& limits,
           const Build& build, std::vector<std::string>& faults) {
    const std::size_t quarter = samples.size() / 4;
    if (quarter == 0) {
        faults.push_back(std::string("too few samples ") + when + " to judge by");
        return;
    }
    const double slackShare = samples.back().actions < kShortRun ? kShortRunSlack : 1.0;
    for (const Limit& limit : limits) {
        if (build.keepsNotesOnMemory && limit.what == kResidentMemory) {
            continue;
        }
        const auto medianOf = [&](std::size_t first, std::size_t last) {
            std::vector<double> values;
            std::transform(samples.begin() + static_cast<std::ptrdiff_t>(first),
                           samples.begin() + static_cast<std::ptrdiff_t>(last), std::back_inserter(values),
                           limit.value);
            return median(std::move(values));
        };
        const double second = medianOf(quarter, 2 * quarter);
        const double last = medianOf(samples.size() - quarter, samples.size());
        if (last > second * (1.0 + limit.share) + limit.slack * slackShare) {
            std::ostringstream fault;
            fault << limit.what << ' ' << when << ": " << second << " in the second quarter, " << last
                  << " in the last";
            faults.push_back(fault.str());
        }
    }
}

} // namespace

std::vector<std::string> FaultsOf(const std::vector<Sample>& samples, const Build& build) {
    std::vector<std::string> faults;
    for (const bool atRest : {true, false}) {
        std::vector<Sample> kind;
        std::copy_if(samples.begin(), samples.end(), std::back_inserter(kind),
                     [&](const Sample& sample) { return sample.isAtRest == atRest; });
        judge(atRest ? "at rest" : "in use", kind, atRest ? kRestLimits : kBusyLimits, build, faults);
    }
    double longest = 0.0;
    for (const Sample& sample : samples) {
        longest = std::max(longest, sample.stallMs);
    }
    if (longest > build.longestStallMs) {
        std::ostringstream fault;
        fault << "the user interface stood still for " << longest << " ms; more than " << build.longestStallMs
              << " is a hang";
        faults.push_back(fault.str());
    }
    return faults;
}
