#include "check/MachineChecks.h"

#include <map>

Findings checkProcessors(const Machine& machine) {
    std::map<std::string, int> governors;
    for (const std::string& name : machine.entries("sys/devices/system/cpu")) {
        if (const auto governor =
                machine.text("sys/devices/system/cpu/" + name + "/cpufreq/scaling_governor")) {
            ++governors[*governor];
        }
    }
    Findings findings;
    for (const auto& [governor, count] : governors) {
        if (governor != "performance") {
            findings.push_back(
                {Weight::Advice, "processor",
                 std::to_string(count) + " processor(s) slow down when idle (governor " + governor +
                     "): they may wake too late for a burst of packets.",
                 "echo performance | sudo tee /sys/devices/system/cpu/cpu*/cpufreq/scaling_governor"});
        }
    }
    if (findings.empty()) {
        findings.push_back({Weight::Good,
                            "processor",
                            governors.empty() ? "The processors' speed is not governed from here."
                                              : "The processors keep their speed.",
                            {}});
    }
    return findings;
}
