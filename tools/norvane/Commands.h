#pragma once

#include "Arguments.h"

#include "norvane/Exception.h"

#include <string>

/// Carries out one command line and gives what belongs on standard output.
/// @throws Failure, or Norvane::Exception for what the library refuses.
std::string runCommand(const Arguments& arguments);

/// The exit code that stands for a refusal of the library's.
int exitCodeOf(const Norvane::Exception& error);
