#include "video/FfmpegError.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace Norvane::Video {

namespace {

void WriteLogLine(void*, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_ERROR) {
        return;
    }
    std::array<char, 1024> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    std::string line = text.data();
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    Log(LogLevel::Warning, "Video: " + line);
}

} // namespace

void CheckFfmpeg(int result, const std::string& what) {
    if (result < 0) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> reason{};
        av_strerror(result, reason.data(), reason.size());
        throw Exception(result == AVERROR(ENOMEM) ? Error::OutOfMemory : Error::Io,
                        what + ": " + reason.data());
    }
}

void RouteFfmpegLog() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(WriteLogLine); });
}

} // namespace Norvane::Video
