#pragma once

#include <string>

namespace Norvane::Video {

/// Throws an Exception (Io) that says what was tried and why FFmpeg refused, when `result` is one of its
/// negative error codes.
void CheckFfmpeg(int result, const std::string& what);

/// Sends FFmpeg's own messages to the library's log, errors only. Any number of calls, any thread.
void RouteFfmpegLog();

} // namespace Norvane::Video
