#include "check/MachineChecks.h"

#include <algorithm>

Findings checkSockets(const Machine& machine) {
    const auto limit = machine.number("proc/sys/net/core/rmem_max");
    if (!limit) {
        return {{Weight::Advice, "sockets", "The limit for socket buffers cannot be read.",
                 "Look at net.core.rmem_max outside of the container"}};
    }
    // A quarter of a second of a full gigabit link, in which a receiving thread is certainly scheduled.
    constexpr std::int64_t kEnough = 33554432;
    const auto initial = machine.number("proc/sys/net/core/rmem_default").value_or(0);
    const std::string remedy = "echo net.core.rmem_max=" + std::to_string(std::max(kEnough, initial)) +
                               " | sudo tee /etc/sysctl.d/60-cameras.conf && "
                               "sudo sysctl -p /etc/sysctl.d/60-cameras.conf";
    const std::string bytes = std::to_string(*limit) + " bytes";
    Findings findings;
    if (*limit < kEnough) {
        findings.push_back(
            {Weight::Limiting, "sockets",
             "A socket may hold " + bytes + " (net.core.rmem_max): a busy processor loses packets.", remedy});
    } else {
        findings.push_back({Weight::Good, "sockets", "A socket may hold " + bytes + ".", {}});
    }
    if (initial > *limit) {
        findings.push_back({Weight::Advice, "sockets",
                            "net.core.rmem_default (" + std::to_string(initial) +
                                ") is above net.core.rmem_max: a program that asks for more gets less.",
                            remedy});
    }
    return findings;
}
