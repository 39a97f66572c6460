#include "Arguments.h"
#include "Commands.h"
#include "Failure.h"

#include "norvane/Log.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::atomic<bool> verbose = false;

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

void logLine(Norvane::LogLevel level, const char* message) {
    if (level >= Norvane::LogLevel::Warning || verbose) {
        std::fprintf(stderr, "norvane: %s\n", oneLine(message).c_str());
    }
}

int report(int exitCode, const char* message) {
    std::fprintf(stderr, "norvane: %s\n", oneLine(message).c_str());
    return exitCode;
}

} // namespace

int main(int argc, char** argv) {
    Norvane::SetLogSink(&logLine);
    try {
        const Arguments arguments = parseArguments(std::vector<std::string>(argv + 1, argv + argc));
        verbose = arguments.verbose;
        const auto [output, exitCode] = runCommand(arguments);
        const bool written = std::fwrite(output.data(), 1, output.size(), stdout) == output.size();
        if (!written || std::fflush(stdout) != 0) {
            return report(kFailed, "cannot write the output");
        }
        return exitCode;
    } catch (const Failure& failure) {
        return report(failure.exitCode(), failure.what());
    } catch (const Norvane::Exception& error) {
        return report(exitCodeOf(error), error.what());
    } catch (const std::exception& error) {
        return report(kFailed, error.what());
    }
}
