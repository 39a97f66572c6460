#pragma once

/// Moves this process into a network namespace of its own with loopback up, so that no broadcast of a test
/// leaves the machine and no camera outside enters it. False when the system does not allow that.
bool EnterPrivateNetwork();

/// Runs a shell command in the caller's network; true when it succeeds.
bool Shell(const char* command);
