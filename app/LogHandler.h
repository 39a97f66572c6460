#pragma once

#include "norvane/Log.h"

#include <QtGlobal>

/// The process-wide message handler: echoes each Qt message to standard error and appends it as one line to
/// "Tavorin_QT_log" in the working directory. A fatal message is echoed only and ends the process. Any
/// thread; takes no lock, so lines of different threads may come in either order. A log file that cannot be
/// written is ignored.
void loggingOutput(QtMsgType type, const QMessageLogContext& context, const QString& msg);

/// The camera library's log sink: hands its lines, which are UTF-8, to Qt's message handler under the
/// matching level. Any thread.
void forwardLibraryLog(Norvane::LogLevel level, const char* message);
