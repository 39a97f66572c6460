// A camera of 1280 x 1024 pixels at 60 images a second streams into the window: how soon the user-interface
// thread answers meanwhile, how many images are painted, and whether the status line's rates agree with
// counters kept beside it.

#include "norvane/Norvane.h"
#include "wGLImageDisplay.h"
#include "wImageDisplay.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QMap>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

constexpr int kSettleMs = 4000;
constexpr int kMeasureMs = 10000;
constexpr auto kQuestionInterval = std::chrono::milliseconds(5);

class Counter : public Norvane::ImageEventHandler {
public:
    void OnImageEvent(Norvane::ImagePtr) override { ++images; }
    std::atomic<int> images{0};
};

/// Asks the user-interface thread every few milliseconds and notes how long each answer took.
class Questions {
public:
    explicit Questions(QObject& target)
        : m_thread([this, &target] {
              while (!m_stop) {
                  const auto asked = std::chrono::steady_clock::now();
                  QMetaObject::invokeMethod(
                      &target,
                      [this, asked] {
                          const std::chrono::duration<double, std::milli> took =
                              std::chrono::steady_clock::now() - asked;
                          m_answersMs.push_back(took.count());
                      },
                      Qt::QueuedConnection);
                  std::this_thread::sleep_for(kQuestionInterval);
              }
          }) {}

    std::vector<double> Stop() {
        m_stop = true;
        m_thread.join();
        QApplication::processEvents();
        std::sort(m_answersMs.begin(), m_answersMs.end());
        return m_answersMs;
    }

private:
    std::vector<double> m_answersMs; // the user-interface thread's
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

void Spend(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The rates that the status line showed, averaged over its messages: one message tells of ten images only.
class ShownRates {
public:
    explicit ShownRates(QStatusBar& bar) {
        QObject::connect(&bar, &QStatusBar::messageChanged, &bar, [this](const QString& line) {
            if (m_counting) {
                ++m_messages;
                for (const char* name : kNames) {
                    m_sums[name] += RateIn(line, name);
                }
            }
        });
    }

    static constexpr const char* kNames[] = {"Camera", "Received", "Processed", "Display"};
    void Count(bool on) { m_counting = on; }
    double Mean(const char* name) const { return m_sums.value(name) / std::max(m_messages, 1); }

private:
    static double RateIn(const QString& line, const char* name) {
        const QRegularExpression pattern(
            QString::fromLatin1("%1 FPS: ([0-9.]+) Hz").arg(QLatin1String(name)));
        return pattern.match(line).captured(1).toDouble();
    }

    QMap<QByteArray, double> m_sums;
    int m_messages = 0;
    bool m_counting = false;
};

void Row(const char* name, double shown, int counted, double seconds) {
    const double outside = counted / seconds;
    std::printf("%-10s status line %7.2f Hz   counted outside %7.2f Hz   ratio %.3f\n", name, shown, outside,
                outside > 0 ? shown / outside : 0.0);
}

Norvane::InterfacePtr FirstInterfaceWithCamera(const Norvane::SystemPtr& system) {
    const Norvane::InterfaceList interfaces = system->GetInterfaces();
    for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
        if (interfaces.GetByIndex(i)->GetCameras().GetSize() > 0) {
            return interfaces.GetByIndex(i);
        }
    }
    return {};
}

int Measure(const Norvane::SystemPtr& system) {
    const Norvane::InterfacePtr interface = FirstInterfaceWithCamera(system);
    if (!interface) {
        std::fprintf(stderr, "the emulated camera was not found\n");
        return 1;
    }
    const Norvane::CameraPtr camera = interface->GetCameras().GetByIndex(0);
    QMainWindow window;
    window.resize(1024, 800);
    auto* display = new wImageDisplay(interface, camera, &window);
    window.addDockWidget(Qt::RightDockWidgetArea, display);
    window.show();
    display->toggleReceivedFPSStatusBar(true);
    display->toggleDisplayedFPSStatusBar(true);
    auto* view = display->findChild<wGLImageDisplay*>();
    int painted = 0;
    QObject::connect(view, &QOpenGLWidget::frameSwapped, [&painted] { ++painted; });
    Counter received;
    camera->RegisterEventHandler(received);
    display->OnStartStream();
    Spend(kSettleMs);

    ShownRates shown(*display->findChild<QStatusBar*>());
    shown.Count(true);
    const int receivedBefore = received.images;
    const int paintedBefore = painted;
    Questions questions(window);
    QElapsedTimer clock;
    clock.start();
    Spend(kMeasureMs);
    const double seconds = static_cast<double>(clock.elapsed()) / 1000;
    const int receivedMeanwhile = received.images - receivedBefore;
    const int paintedMeanwhile = painted - paintedBefore;
    const std::vector<double> answers = questions.Stop();
    shown.Count(false);

    const auto at = [&answers](double share) {
        return answers[static_cast<std::size_t>(share * static_cast<double>(answers.size() - 1))];
    };
    std::printf("1280 x 1024, 60 images a second, %.1f s, software GL\n", seconds);
    std::printf("answers of the user-interface thread: median %.2f ms, 99th percentile %.2f ms, longest %.2f "
                "ms (%zu asked)\n",
                at(0.5), at(0.99), answers.back(), answers.size());
    std::printf("painted %.1f images a second\n", paintedMeanwhile / seconds);
    Row("Camera", shown.Mean("Camera"), receivedMeanwhile, seconds);
    Row("Received", shown.Mean("Received"), receivedMeanwhile, seconds);
    Row("Processed", shown.Mean("Processed"), paintedMeanwhile, seconds);
    Row("Display", shown.Mean("Display"), paintedMeanwhile, seconds);

    display->OnStopStream();
    camera->UnregisterEventHandler(received);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("emulator.ini")));
    if (!file.open(QIODevice::WriteOnly)) {
        return 1;
    }
    file.write("[interface GigE-0]\ntype = GEV\naddress = 169.254.10.1\nnetmask = 255.255.0.0\n\n"
               "[camera 1]\ninterface = GigE-0\naddress = 169.254.10.20\nwidth = 1280\nheight = 1024\n"
               "pixel-format = BayerRG8\nframe-rate = 60\n");
    file.close();
    qputenv("NORVANE_EMULATOR", file.fileName().toUtf8());

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    const QApplication application(argc, argv);
    Q_INIT_RESOURCE(tavorin);
    return Measure(Norvane::System::GetInstance());
}
