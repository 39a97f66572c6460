#include "LogHandler.h"

#include <QDebug>
#include <QFile>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>

namespace {

void appendToLogFile(const QString& line) {
    QFile file(QStringLiteral("Tavorin_QT_log"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return;
    }
    QTextStream stream(&file);
    stream << line << Qt::endl;
}

} // namespace

void loggingOutput(QtMsgType type, const QMessageLogContext& context, const QString& msg) {
    const QByteArray localMessage = msg.toLocal8Bit();
    const char* file = context.file;
    const char* function = context.function;
    const auto logLine = [&](const char* level) {
        // One pass over the format, so that markers in the message are not taken for places of their own.
        return (QLatin1String(level) + QStringLiteral(": %1: %2: %3: %4"))
            .arg(QString::fromUtf8(file), QString::fromUtf8(function), QString::number(context.line), msg);
    };
    // A missing name is printed as the C library prints a null string, except where it is emptied below.
    const auto echo = [&](const char* level) {
        std::fprintf(stderr, "%s: %s (%s:%u, %s)\n", level, file, function,
                     static_cast<unsigned int>(context.line), localMessage.constData());
    };
    const auto emptyMissingNames = [&] {
        file = file ? file : "";
        function = function ? function : "";
    };

    QString line;
    switch (type) {
    case QtDebugMsg:
        emptyMissingNames();
        line = logLine("Debug");
        echo("Debug");
        break;
    case QtInfoMsg:
        line = logLine("Info");
        echo("Info");
        break;
    case QtWarningMsg:
        emptyMissingNames();
        line = logLine("Warning");
        echo("Warning");
        break;
    case QtCriticalMsg:
        line = logLine("Critical");
        echo("Critical");
        break;
    case QtFatalMsg:
        echo("Fatal");
        std::abort();
    }
    appendToLogFile(line);
}

void forwardLibraryLog(Norvane::LogLevel level, const char* message) {
    switch (level) {
    case Norvane::LogLevel::Debug:
        qDebug("%s", message);
        break;
    case Norvane::LogLevel::Info:
        qInfo("%s", message);
        break;
    case Norvane::LogLevel::Warning:
        qWarning("%s", message);
        break;
    case Norvane::LogLevel::Error:
        qCritical("%s", message);
        break;
    }
}
