#include "Child.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>

namespace {

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

} // namespace

Run RunChild(const std::function<void()>& work) {
    std::fflush(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        try {
            work();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            _exit(1);
        }
        _exit(0);
    }
    Run run;
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.processorSeconds = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
    run.peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1024;
    run.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

Run RunCommand(const std::vector<std::string>& command) {
    return RunChild([&] {
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        execvp(arguments.front(), arguments.data());
        std::perror(arguments.front());
        _exit(127);
    });
}
