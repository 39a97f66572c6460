#pragma once

#include <stdexcept>
#include <string>

/// What the program answers to the shell.
enum ExitCode {
    kSuccess = 0,
    kFailed = 1,     ///< the camera, a file or the system refused
    kUsage = 2,      ///< the command line makes no sense
    kNoDevice = 3,   ///< no such camera or interface
    kNoFeature = 4,  ///< no such feature
    kNotAllowed = 5, ///< the feature cannot be read, written or executed now, or does not take the value
    kLimited = 6,    ///< check found something that limits cameras
};

/// Ends a command. The text becomes one line on standard error.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& message)
        : std::runtime_error(message), m_exitCode(exitCode) {}
    ExitCode exitCode() const noexcept { return m_exitCode; }

private:
    ExitCode m_exitCode;
};
