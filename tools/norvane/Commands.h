#pragma once

#include "Arguments.h"
#include "Failure.h"

#include "norvane/Exception.h"

#include <string>

/// What a command that did its work hands to the shell.
struct CommandResult {
    std::string output; ///< for standard output
    ExitCode exitCode = kSuccess;
};

/// Carries out one command line.
/// @throws Failure, or Norvane::Exception for what the library refuses.
CommandResult runCommand(const Arguments& arguments);

/// The exit code that stands for a refusal of the library's.
int exitCodeOf(const Norvane::Exception& error);
