#pragma once

#include <string>

namespace Norvane {

enum class LogLevel { Debug, Info, Warning, Error };

/// Receives the library's log lines, from any thread and possibly from several at once; must not call
/// back into the library.
using LogSink = void (*)(LogLevel level, const char* message);

/// Replaces the receiver of log lines; null restores the default, which writes to standard error.
/// May be called on any thread, before or after the system exists.
void SetLogSink(LogSink sink);

/// Hands one line to the current receiver.
void Log(LogLevel level, const std::string& message);

} // namespace Norvane
