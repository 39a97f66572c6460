#include "check/MachineChecks.h"

Findings checkSockets(const Machine& machine) {
    const auto limit = machine.number("proc/sys/net/core/rmem_max");
    if (!limit) {
        return {{Weight::Advice, "sockets", "The limit for socket buffers cannot be read.",
                 "Look at net.core.rmem_max outside of the container"}};
    }
    // A quarter of a second of a full gigabit link, in which a receiving thread is certainly scheduled.
    constexpr std::int64_t kEnough = 33554432;
    const std::string bytes = std::to_string(*limit) + " bytes";
    Findings findings;
    if (*limit < kEnough) {
        findings.push_back(
            {Weight::Limiting, "sockets",
             "A socket may hold " + bytes + " (net.core.rmem_max): a busy processor loses packets.",
             "sudo sysctl -w net.core.rmem_max=33554432, and the same line in a file of /etc/sysctl.d "
             "to keep it"});
    } else {
        findings.push_back({Weight::Good, "sockets", "A socket may hold " + bytes + ".", {}});
    }
    if (const auto initial = machine.number("proc/sys/net/core/rmem_default"); initial && *initial > *limit) {
        findings.push_back({Weight::Advice, "sockets",
                            "net.core.rmem_default (" + std::to_string(*initial) +
                                ") is above net.core.rmem_max: a program that asks for more gets less.",
                            "Set net.core.rmem_max to at least as much"});
    }
    return findings;
}
