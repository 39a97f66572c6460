/// Receiving from Aravis's simulated network camera over loopback, beside Aravis's own test tool: pairs of
/// runs, one after the other against the same camera, each in a process of its own whose processor time is
/// counted from start to end. Prints the medians.
///
/// bench_stream_receive [SECONDS [PAIRS]]

#include "Receiver.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <sched.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* kCamera = "/usr/bin/arv-fake-gv-camera-0.8";
constexpr const char* kTool = "/usr/bin/arv-camera-test-0.8";

struct Run {
    Received received;
    double processorSeconds = 0;
    bool valid = false;
};

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

pid_t Start(const std::function<void()>& child) {
    std::fflush(nullptr);
    const pid_t process = ::fork();
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        child();
        std::fflush(nullptr);
        ::_exit(0);
    }
    return process;
}

void Execute(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    ::execv(arguments.front(), arguments.data());
    ::_exit(127);
}

/// Runs a child that writes to standard output; returns what it wrote and what it cost.
std::string Measure(const std::function<void()>& child, Run& run) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return {};
    }
    const pid_t process = Start([&] {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        child();
    });
    ::close(ends[1]);
    std::string output;
    std::array<char, 4096> block;
    for (ssize_t size = 0; (size = ::read(ends[0], block.data(), block.size())) > 0;) {
        output.append(block.data(), static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    int status = 0;
    rusage usage{};
    ::wait4(process, &status, 0, &usage);
    run.processorSeconds = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
    run.valid = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return output;
}

std::uint64_t Find(const std::string& output, const std::string& name) {
    const auto place = output.find(name);
    const auto sign = place == std::string::npos ? place : output.find('=', place);
    return sign == std::string::npos ? 0 : std::strtoull(output.c_str() + sign + 1, nullptr, 10);
}

Run RunTool(const Load& load, int seconds) {
    Run run;
    const std::string output = Measure(
        [&] {
            Execute({kTool, "--duration=" + std::to_string(seconds), "-i", std::to_string(load.packetSize),
                     "-f", std::to_string(load.frameRate), "-w", std::to_string(load.size), "-h",
                     std::to_string(load.size)});
        },
        run);
    run.received.complete = Find(output, "n_completed_buffers");
    run.received.failures = Find(output, "n_failures") + Find(output, "n_underruns");
    return run;
}

Run RunLibrary(const Load& load, int seconds) {
    Run run;
    const std::string output = Measure(
        [&] {
            try {
                const Received received = Receive(load, seconds);
                std::printf("complete = %llu\nfailures = %llu\n",
                            static_cast<unsigned long long>(received.complete),
                            static_cast<unsigned long long>(received.failures));
            } catch (const std::exception& error) {
                std::fprintf(stderr, "%s\n", error.what());
                ::_exit(1);
            }
        },
        run);
    run.received.complete = Find(output, "complete");
    run.received.failures = Find(output, "failures");
    return run;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

bool MeasureLoad(const Load& load, int seconds, int pairs) {
    std::vector<double> received;
    std::vector<double> cost;
    std::vector<double> toolImages;
    std::vector<double> images;
    std::vector<double> toolSeconds;
    std::vector<double> ownSeconds;
    std::uint64_t failures = 0;
    std::uint64_t toolFailures = 0;
    for (int pair = 0; pair < pairs; ++pair) {
        Run tool;
        Run own;
        // Who goes first changes, so that neither profits from the other's warm caches.
        for (const bool ownTurn : {pair % 2 == 0, pair % 2 != 0}) {
            (ownTurn ? own : tool) = ownTurn ? RunLibrary(load, seconds) : RunTool(load, seconds);
        }
        if (!tool.valid || !own.valid || tool.received.complete == 0) {
            std::printf("%u x %u: a run failed\n", load.size, load.size);
            return false;
        }
        toolImages.push_back(static_cast<double>(tool.received.complete));
        images.push_back(static_cast<double>(own.received.complete));
        toolSeconds.push_back(tool.processorSeconds);
        ownSeconds.push_back(own.processorSeconds);
        received.push_back(images.back() / toolImages.back());
        cost.push_back(own.processorSeconds / tool.processorSeconds);
        failures += own.received.failures;
        toolFailures += tool.received.failures;
    }
    std::printf("%4u x %4u %4u/s %6u B | %8.0f %8.0f %7.1f %% | %8llu %8llu | %7.3f %7.3f %6.2f\n", load.size,
                load.size, load.frameRate, load.packetSize, Median(toolImages), Median(images),
                100 * Median(received), static_cast<unsigned long long>(toolFailures),
                static_cast<unsigned long long>(failures), Median(toolSeconds), Median(ownSeconds),
                Median(cost));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
    const int pairs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    if (::access(kCamera, X_OK) != 0 || ::access(kTool, X_OK) != 0) {
        std::fprintf(stderr, "bench_stream_receive: install the package aravis-tools-cli\n");
        return 1;
    }
    // A network of its own, so that no other camera is found and no broadcast leaves.
    const int spaces = ::geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWNET | CLONE_NEWUSER;
    if (::unshare(spaces) != 0 || std::system("ip link set lo up") != 0) {
        std::fprintf(stderr,
                     "bench_stream_receive: no network namespace of its own, so it runs in this one\n");
    }
    const pid_t camera = Start([] { Execute({kCamera, "-i", "127.0.0.1"}); });
    ::usleep(500000);

    std::printf("%d pairs of runs of %d s, medians; processor time of the whole process\n", pairs, seconds);
    std::printf("%-27s | %8s %8s %9s | %8s %8s | %7s %7s %6s\n", "load", "images:", "ours", "share",
                "failures:", "ours", "cpu s:", "ours", "ratio");
    bool good = true;
    for (const Load& load : {Load{2048, 40, 8972}, Load{512, 500, 8972}, Load{2048, 25, 1400}}) {
        good = MeasureLoad(load, seconds, pairs) && good;
    }
    ::kill(camera, SIGKILL);
    ::waitpid(camera, nullptr, 0);
    return good ? 0 : 1;
}
