#include "norvane/Log.h"

#include <atomic>
#include <cstdio>

namespace Norvane {
namespace {

void WriteToStandardError(LogLevel level, const char* message) {
    static constexpr const char* kNames[] = {"debug", "info", "warning", "error"};
    if (level != LogLevel::Debug) {
        std::fprintf(stderr, "norvane %s: %s\n", kNames[static_cast<int>(level)], message);
    }
}

std::atomic<LogSink> g_sink{&WriteToStandardError};

} // namespace

void SetLogSink(LogSink sink) {
    g_sink = sink ? sink : &WriteToStandardError;
}

void Log(LogLevel level, const std::string& message) {
    g_sink.load()(level, message.c_str());
}

} // namespace Norvane
