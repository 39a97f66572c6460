// Uses the viewer for as long as it is told, with cameras that make trouble, and tells whether memory,
// threads, open files and the time that the user interface stands still stay level. `./dev soak` starts it.
#include "LogHandler.h"
#include "Session.h"
#include "StartUp.h"
#include "norsimplegui_qt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

/// Ends the program with an error when memory is lost; null in a build without the leak checker.
extern "C" void __lsan_do_leak_check() __attribute__((weak));

#if defined(__SANITIZE_ADDRESS__)
/// Memory that was freed is kept aside for a while; little enough not to pass for memory in use.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=16";
}
#endif

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr Build kBuild{20'000.0, true};
#elif defined(__SANITIZE_ADDRESS__)
constexpr Build kBuild{20'000.0};
#else
constexpr Build kBuild{3'000.0};
#endif

struct Options {
    double minutes = 2.0;
    unsigned int seed = 0;
    QString csv;
};

Options parse(const QApplication& application) {
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{"minutes", "How long.", "minutes", "2"},
                       {"seed", "The dice; another one each time unless it is given.", "number"},
                       {"csv", "Where all samples are written.", "file", "soak.csv"}});
    parser.process(application);
    Options options;
    options.minutes = parser.value("minutes").toDouble();
    options.seed = parser.isSet("seed") ? parser.value("seed").toUInt()
                                        : static_cast<unsigned int>(QDateTime::currentMSecsSinceEpoch());
    options.csv = QDir().absoluteFilePath(parser.value("csv"));
    return options;
}

Session::Plan planFor(double minutes) {
    const double seconds = 60.0 * minutes;
    // Eight rests at least, so that a quarter has two.
    return {seconds, std::clamp(seconds / 240.0, 0.5, 5.0), std::clamp(seconds / 9.0, 5.0, 60.0)};
}

void writeHeader(std::ostream& out) {
    out << "seconds,at_rest,resident_mb,heap_mb,threads,files,stall_ms,stalled_by,displays,streams,actions\n";
}

void write(std::ostream& out, const Sample& sample, const char* stalledBy) {
    char line[256];
    std::snprintf(line, sizeof line, "%.1f,%d,%.1f,%.2f,%d,%d,%.0f,%s,%d,%d,%d\n", sample.seconds,
                  sample.isAtRest ? 1 : 0, sample.holding.residentMb, sample.holding.heapMb,
                  sample.holding.threads, sample.holding.files, sample.stallMs, stalledBy, sample.displays,
                  sample.streams, sample.actions);
    out << line << std::flush;
}

void printRests(const std::vector<Sample>& samples) {
    std::cout << "\nAt rest, all closed and unplugged:\n  second  resident MB  heap MB  threads  files  "
                 "actions so far\n";
    std::vector<Sample> rests;
    std::copy_if(samples.begin(), samples.end(), std::back_inserter(rests),
                 [](const Sample& s) { return s.isAtRest; });
    const std::size_t step = std::max<std::size_t>(1, rests.size() / 12);
    for (std::size_t i = 0; i < rests.size(); i += step) {
        const Sample& s = rests[i];
        std::printf("  %6.0f  %11.1f  %7.2f  %7d  %5d  %14d\n", s.seconds, s.holding.residentMb,
                    s.holding.heapMb, s.holding.threads, s.holding.files, s.actions);
    }
    std::fflush(stdout);
}

void printStalls(const std::vector<Sample>& samples) {
    std::vector<double> stalls;
    double resident = 0.0;
    int threads = 0;
    int files = 0;
    for (const Sample& sample : samples) {
        stalls.push_back(sample.stallMs);
        resident = std::max(resident, sample.holding.residentMb);
        threads = std::max(threads, sample.holding.threads);
        files = std::max(files, sample.holding.files);
    }
    std::sort(stalls.begin(), stalls.end());
    std::printf("\nMost at any time: %.1f MB resident, %d threads, %d files\n"
                "Longest stall of the user interface: %.0f ms; median of the longest per sample: %.0f ms\n",
                resident, threads, files, stalls.empty() ? 0.0 : stalls.back(),
                stalls.empty() ? 0.0 : stalls[stalls.size() / 2]);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    returnLargeMemory();
    qInstallMessageHandler(loggingOutput);
    Norvane::SetLogSink(forwardLibraryLog);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    // The desktop's own dialogs cannot be worked by a program.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qunsetenv("XDG_CONFIG_HOME");
    QApplication application(argc, argv);
    // Windows come and go here; the time ends the run.
    QApplication::setQuitOnLastWindowClosed(false);
    initTavorinResources();
    const Options options = parse(application);
    QDir::setCurrent(home.path());
    QDir(home.path()).mkdir("recordings");

    std::cout << "Seed " << options.seed << ", " << options.minutes << " minutes, samples in "
              << options.csv.toStdString() << std::endl;
    std::ofstream csv(options.csv.toStdString());
    writeHeader(csv);
    Random random(options.seed);
    CameraStock stock(home.filePath("cameras.ini").toStdString(), random);
    std::vector<std::string> faults;
    {
        const Norvane::SystemPtr system = obtainSystem();
        NorSimpleGUI_QT window(nullptr);
        window.Initialize();
        window.resize(1300, 850);
        window.show();
        Session session(window, stock, random, home.filePath("recordings"), planFor(options.minutes),
                        [&](const Sample& sample, const char* stalledBy) { write(csv, sample, stalledBy); });
        session.Start();
        QApplication::exec();
        window.close();

        for (auto it = session.Counts().begin(); it != session.Counts().end(); ++it) {
            std::cout << "  " << it.value() << " x " << it.key().toStdString() << '\n';
        }
        printRests(session.Samples());
        printStalls(session.Samples());
        faults = FaultsOf(session.Samples(), kBuild);
        faults.insert(faults.end(), session.Faults().begin(), session.Faults().end());
    }
    for (const std::string& fault : faults) {
        std::cout << "NOT LEVEL: " << fault << '\n';
    }
    std::cout << (faults.empty() ? "Level." : "") << std::endl;
    // Checked now, because the graphics driver goes with the application, and what it leaves behind can then
    // no longer be told from a loss.
    if (__lsan_do_leak_check) {
        __lsan_do_leak_check();
    }
    return faults.empty() ? 0 : 1;
}
