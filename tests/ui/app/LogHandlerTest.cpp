#include "LogHandler.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

constexpr char kLogFile[] = "Tavorin_QT_log";

class LogHandlerTest : public testing::Test {
protected:
    LogHandlerTest() { QDir::setCurrent(m_folder.path()); }
    ~LogHandlerTest() override { QDir::setCurrent(m_before); }

    static QStringList Lines() {
        QFile file(kLogFile);
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
        lines.removeLast();
        return lines;
    }

    QString m_before = QDir::currentPath();
    QTemporaryDir m_folder;
};

TEST_F(LogHandlerTest, EachLevelHasItsLineInTheFileAndOnStandardError) {
    struct Case {
        QtMsgType type;
        const char* level;
        const char* echoWithoutNames;
    };
    for (const Case& c : {Case{QtDebugMsg, "Debug", "Debug:  (:0, m)\n"},
                          Case{QtInfoMsg, "Info", "Info: (null) ((null):0, m)\n"},
                          Case{QtWarningMsg, "Warning", "Warning:  (:0, m)\n"},
                          Case{QtCriticalMsg, "Critical", "Critical: (null) ((null):0, m)\n"}}) {
        SCOPED_TRACE(c.level);
        QFile::remove(kLogFile);
        testing::internal::CaptureStderr();
        loggingOutput(c.type, QMessageLogContext("file.cpp", 42, "function()", "category"), "text");
        loggingOutput(c.type, QMessageLogContext(), "m");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  std::string(c.level) + ": file.cpp (function():42, text)\n" + c.echoWithoutNames);
        EXPECT_EQ(Lines(), (QStringList{QString(c.level) + ": file.cpp: function(): 42: text",
                                        QString(c.level) + ": : : 0: m"}));
    }
}

TEST_F(LogHandlerTest, MarkersInAnyTextAreKept) {
    testing::internal::CaptureStderr();
    loggingOutput(QtDebugMsg, QMessageLogContext("%4", 1, "%3", ""), "100%1 of %4 %s");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Debug: %4 (%3:1, 100%1 of %4 %s)\n");
    EXPECT_EQ(Lines(), QStringList{"Debug: %4: %3: 1: 100%1 of %4 %s"});
}

TEST_F(LogHandlerTest, FatalIsEchoedAndNotWritten) {
    EXPECT_DEATH(loggingOutput(QtFatalMsg, QMessageLogContext("f", 7, "g", ""), "end"),
                 "^Fatal: f \\(g:7, end\\)");
    EXPECT_FALSE(QFile::exists(kLogFile));
}

TEST_F(LogHandlerTest, LogThatCannotBeWrittenStillEchoes) {
    ASSERT_TRUE(QDir().mkdir(kLogFile));
    testing::internal::CaptureStderr();
    loggingOutput(QtWarningMsg, QMessageLogContext(), "still here");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning:  (:0, still here)\n");
}

TEST_F(LogHandlerTest, LinesOfManyThreadsStayWhole) {
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i) {
                loggingOutput(QtDebugMsg, QMessageLogContext(), QString(100, QChar('a' + t)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    testing::internal::GetCapturedStderr();
    const QStringList lines = Lines();
    EXPECT_EQ(lines.size(), 800);
    for (const QString& line : lines) {
        const QString text = line.mid(QString("Debug: : : 0: ").size());
        EXPECT_EQ(text, QString(100, text[0]));
    }
}

TEST_F(LogHandlerTest, LibraryLinesArriveUnderTheirLevel) {
    qInstallMessageHandler(loggingOutput);
    testing::internal::CaptureStderr();
    Norvane::SetLogSink(forwardLibraryLog);
    Norvane::Log(Norvane::LogLevel::Debug, "50% d");
    Norvane::Log(Norvane::LogLevel::Info, "i");
    Norvane::Log(Norvane::LogLevel::Warning, "w");
    Norvane::Log(Norvane::LogLevel::Error, "e");
    Norvane::SetLogSink(nullptr);
    qInstallMessageHandler(nullptr);
    testing::internal::GetCapturedStderr();
    const QStringList lines = Lines();
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith("Debug: ") && lines[0].endsWith(": 50% d"));
    EXPECT_TRUE(lines[1].startsWith("Info: "));
    EXPECT_TRUE(lines[2].startsWith("Warning: "));
    EXPECT_TRUE(lines[3].startsWith("Critical: "));
}

} // namespace
