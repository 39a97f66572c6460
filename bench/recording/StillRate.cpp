#include "Child.h"
#include "Recorder.h"
#include "SceneImages.h"
#include "Sections.h"

#include <QEventLoop>
#include <QString>
#include <QThread>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

namespace {

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

bool WritePlainly(const SceneImages& scene, const std::string& folder, int images) {
    for (int i = 0; i < images; ++i) {
        const std::string name = folder + "/" + std::to_string(i) + ".raw";
        const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        const auto& pixels = scene.Pixels(i);
        const bool good =
            file >= 0 && write(file, pixels.data(), pixels.size()) == static_cast<ssize_t>(pixels.size());
        if (file < 0 || close(file) != 0 || !good) {
            return false;
        }
    }
    return true;
}

/// The recorder in a thread of its own, as in a display; the images come from this one.
bool WriteStreamed(const SceneImages& scene, const std::string& folder, int images) {
    Recorder recorder;
    QObject::connect(&recorder, &Recorder::streamImageReady, &recorder, &Recorder::WriteStreamed,
                     Qt::QueuedConnection);
    recorder.ChangeSettings([&](RecordingSettings& settings) {
        settings.folder = QString::fromStdString(folder);
        settings.mode = STREAMING;
        settings.imageFormat = RAW;
    });
    QThread worker;
    recorder.moveToThread(&worker);
    QEventLoop loop;
    QObject::connect(&recorder, &Recorder::doneRecording, &loop, &QEventLoop::quit);
    unsigned int saved = 0;
    QObject::connect(&recorder, &Recorder::savedFramesUpdated, &loop,
                     [&saved](unsigned int count) { saved = count; });
    worker.start();
    recorder.Start(0);
    for (int i = 0; i < images; ++i) {
        recorder.TakeImage(scene.Image(i));
    }
    recorder.Stop();
    loop.exec();
    worker.quit();
    worker.wait();
    return saved == static_cast<unsigned int>(images);
}

} // namespace

bool MeasureStills(const std::string& folder, int images, int pairs) {
    const SceneImages scene("BayerRG8", 2448, 2048, 10, 30);
    const std::string target = folder + "/stills";
    std::vector<double> plain;
    std::vector<double> ours;
    std::vector<double> ratio;
    for (int pair = 0; pair < pairs; ++pair) {
        for (const bool ownTurn : {pair % 2 == 0, pair % 2 != 0}) {
            std::filesystem::create_directory(target);
            const auto start = std::chrono::steady_clock::now();
            const bool good =
                ownTurn ? WriteStreamed(scene, target, images) : WritePlainly(scene, target, images);
            (ownTurn ? ours : plain).push_back(images / Seconds(start));
            // By another process: the system hands memory first to the processor that gave it back, and of
            // the two only the plain loop writes where this thread runs.
            RunChild([&] { std::filesystem::remove_all(target); });
            if (!good) {
                std::printf("raw stills: a run failed\n");
                return false;
            }
        }
        ratio.push_back(ours.back() / plain.back());
    }
    std::printf("raw stills of 2448 x 2048, 8 bit: %.0f a second, a plain loop %.0f; ratio %.2f\n",
                Median(ours), Median(plain), Median(ratio));
    return true;
}
