#include "ImageCapture.h"
#include "Sections.h"

#include "norvane/Norvane.h"

#include <QEventLoop>
#include <QString>
#include <QThread>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/// Points the library at one emulated camera of 2448 x 2048 pixels.
void DescribeCamera(const std::string& folder, int imagesPerSecond) {
    const std::string path = folder + "/camera.ini";
    std::ofstream(path) << "[interface USB-0]\ntype = U3V\n[camera 1]\ninterface = USB-0\nwidth = 2448\n"
                           "height = 2048\npixel-format = BayerRG8\nframe-rate = "
                        << imagesPerSecond << '\n';
    setenv("NORVANE_EMULATOR", path.c_str(), 1);
}

/// What the camera's thread saw and what the recorder told.
struct Account {
    std::atomic<std::uint64_t> lastId = 0;
    std::atomic<std::uint64_t> missed = 0; // images between those that came
    std::atomic<unsigned int> grabbed = 0;
    std::atomic<unsigned int> known = 0; // grabbed, when the image before came
    std::atomic<unsigned int> buffered = 0;
    std::atomic<unsigned int> saved = 0;
};

void Watch(ImageCapture& capture, Account& account) {
    QObject::connect(
        &capture, &ImageCapture::imageInfoUSB, &capture,
        [&account](int, int, int, int, const QString& frameId, const QString&, const QString&,
                   const QString&) {
            const std::uint64_t id = frameId.toULongLong();
            const std::uint64_t last = account.lastId.exchange(id);
            // The stream goes on while the run is saved; what is lost then is nobody's.
            const bool isOfTheRun = account.grabbed != account.known.exchange(account.grabbed);
            if (isOfTheRun && account.grabbed > 1 && id > last + 1) {
                account.missed += id - last - 1;
            }
        },
        Qt::DirectConnection);
    QObject::connect(
        &capture, &ImageCapture::grabbedFramesUpdated, &capture,
        [&account](unsigned int count) { account.grabbed = count; }, Qt::DirectConnection);
    QObject::connect(
        &capture, &ImageCapture::bufferedFramesUpdated, &capture,
        [&account](unsigned int count, unsigned int) { account.buffered = count; }, Qt::DirectConnection);
    QObject::connect(
        &capture, &ImageCapture::savedFramesUpdated, &capture,
        [&account](unsigned int count) { account.saved = count; }, Qt::DirectConnection);
}

/// One run, written meanwhile and after as the recorder does. @returns the seconds that grabbing took
double Record(const Norvane::CameraPtr& camera, RecordType type, const std::string& folder, int images,
              Account& account) {
    const std::string target = folder + "/live";
    std::filesystem::create_directory(target);

    double grabbingSeconds = 0;
    {
        QThread worker;
        ImageCapture capture;
        capture.setCamera(camera);
        Watch(capture, account);
        QObject::connect(&capture, &ImageCapture::bufferedImageReady, &capture,
                         &ImageCapture::OnBufferedImageReady);
        QEventLoop loop;
        const auto start = std::chrono::steady_clock::now();
        QObject::connect(&capture, &ImageCapture::disableRecord, &loop, [&] {
            if (grabbingSeconds == 0) {
                grabbingSeconds =
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            }
            capture.OnStopRecording();
        });
        QObject::connect(&capture, &ImageCapture::doneRecording, &loop, &QEventLoop::quit);
        capture.OnUpdateFilePath(QString::fromStdString(target));
        capture.OnUpdateRecordType(type);
        capture.OnUpdateImageFormat(RAW);
        capture.OnUpdateSaveOptions(static_cast<unsigned int>(images), 0, 0, 0, 0, 0);
        capture.moveToThread(&worker);
        worker.start();
        capture.OnStartRecording();
        capture.OnStartContinuousCapture();
        loop.exec();
        capture.close();
        worker.quit();
        worker.wait();
    }
    std::filesystem::remove_all(target);
    return grabbingSeconds;
}

} // namespace

bool MeasureLiveBuffer(const std::string& folder, int images, int imagesPerSecond) {
    DescribeCamera(folder, imagesPerSecond);
    const Norvane::SystemPtr system = Norvane::System::GetInstance();
    const Norvane::CameraPtr camera = system->GetCameras().GetByIndex(0);
    camera->Init();
    for (const RecordType type : {RECORD_IMAGES, RECORD_VIDEO}) {
        Account account;
        const double seconds = Record(camera, type, folder, images, account);
        std::printf("buffered run at %d images of 2448 x 2048 a second into %s: %u grabbed in %.2f s, %u "
                    "buffered, %u saved, %llu missing between frame IDs\n",
                    imagesPerSecond, type == RECORD_VIDEO ? "an uncompressed video" : "raw files",
                    account.grabbed.load(), seconds, account.buffered.load(), account.saved.load(),
                    static_cast<unsigned long long>(account.missed.load()));
    }
    camera->DeInit();
    return true;
}
