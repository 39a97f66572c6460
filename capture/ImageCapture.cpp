#include "ImageCapture.h"

#include "Guarded.h"

#include <QtDebug>

#include <chrono>
#include <utility>

using Norvane::CameraPtr;
using Norvane::ImagePtr;

namespace {

/// How long a thread that must not wait may wait. A moment of the wall clock, because the thread sanitizer
/// does not see locks that are timed by the other one.
std::chrono::system_clock::time_point soon() {
    return std::chrono::system_clock::now() + std::chrono::milliseconds(1);
}

} // namespace

ImageCapture::ImageCapture(QObject* parent)
    : QObject(parent), m_device(std::make_shared<CameraDevice>(CameraPtr())), m_recorder(this) {
    ForwardRecorderSignals();
}

ImageCapture::~ImageCapture() = default;

void ImageCapture::ForwardRecorderSignals() {
    const auto forward = [this](auto from, auto to) {
        connect(&m_recorder, from, this, to, Qt::DirectConnection);
    };
    forward(&Recorder::grabbedFramesUpdated, &ImageCapture::grabbedFramesUpdated);
    forward(&Recorder::savedFramesUpdated, &ImageCapture::savedFramesUpdated);
    forward(&Recorder::bufferedFramesUpdated, &ImageCapture::bufferedFramesUpdated);
    forward(&Recorder::remainingBufferedFramesUpdated, &ImageCapture::remainingBufferedFramesUpdated);
    forward(&Recorder::streamImageReady, &ImageCapture::streamImageReady);
    forward(&Recorder::bufferedImageReady, &ImageCapture::bufferedImageReady);
    forward(&Recorder::disableRecord, &ImageCapture::disableRecord);
    forward(&Recorder::doneRecording, &ImageCapture::doneRecording);
    forward(&Recorder::updateStatusText, &ImageCapture::updateStatusText);
    forward(&Recorder::updateStopRecord, &ImageCapture::updateStopRecord);
}

void ImageCapture::setCamera(CameraPtr camera) {
    auto device = std::make_shared<CameraDevice>(std::move(camera));
    {
        const std::lock_guard lock(m_deviceLock);
        m_device = std::move(device);
    }
    updatePresetParameters();
}

void ImageCapture::updatePresetParameters() const {
    Device()->UseManualBufferCount();
}

std::shared_ptr<const CameraDevice> ImageCapture::Device() const {
    const std::lock_guard lock(m_deviceLock);
    return m_device;
}

ImagePtr ImageCapture::getRawImagePtr(bool wait) {
    std::unique_lock lock(m_latestImageLock, std::defer_lock);
    if (wait) {
        lock.lock();
    } else if (!lock.try_lock_until(soon())) {
        return {};
    }
    return std::exchange(m_latestImage, ImagePtr());
}

void ImageCapture::OnStartContinuousCapture() {
    {
        const std::lock_guard lock(m_latestImageLock);
        m_latestImage = nullptr;
    }
    m_acquiring = true;
    const auto device = Device();
    const CameraPtr& camera = device->Camera();
    const std::lock_guard lock(m_cameraLock);
    guarded("Starting acquisition", [&] {
        if (!camera->IsInitialized() || camera->IsStreaming()) {
            return;
        }
        if (!m_isRegistered) {
            camera->RegisterEventHandler(*this);
            m_isRegistered = true;
        }
        try {
            camera->BeginAcquisition();
        } catch (const Norvane::Exception&) {
            // A handler left behind would take the image that a single capture waits for.
            m_isRegistered = false;
            camera->UnregisterEventHandler(*this);
            throw;
        }
    });
}

void ImageCapture::OnStopContinuousCapture() {
    m_acquiring = false;
    const auto device = Device();
    const CameraPtr& camera = device->Camera();
    const std::lock_guard lock(m_cameraLock);
    guarded("Stopping acquisition", [&] {
        if (camera->IsStreaming()) {
            camera->EndAcquisition();
        }
    });
    // Also when the stream ended by itself, as it does with a camera that is unplugged.
    if (std::exchange(m_isRegistered, false)) {
        guarded("Leaving the stream", [&] { camera->UnregisterEventHandler(*this); });
    }
}

void ImageCapture::OnStartSingleCapture() {
    const auto device = Device();
    const CameraPtr& camera = device->Camera();
    guarded("Single capture", [&] {
        {
            const std::lock_guard lock(m_singleLock);
            if (m_isClosed) {
                return;
            }
            camera->BeginAcquisition();
            m_singleIsPending = true;
        }
        const ImagePtr copy = WaitForSingleImage(camera);
        if (copy.IsValid()) {
            emit updateSingleImageDisplay(copy);
            SendImageStatsToImageDisplay(copy);
        }
    });
    emit singleCaptureFinished();
}

ImagePtr ImageCapture::WaitForSingleImage(const CameraPtr& camera) {
    ImagePtr copy;
    guarded("Waiting for a single image", [&] {
        const ImagePtr image = camera->GetNextImage(Norvane::EVENT_TIMEOUT_INFINITE, 0);
        ImagePtr own = Norvane::Image::Create();
        own->DeepCopy(image);
        image->Release();
        copy = own;
    });
    const std::lock_guard lock(m_singleLock);
    m_singleIsPending = false;
    guarded("Ending a single capture", [&] {
        if (camera->IsStreaming()) {
            camera->EndAcquisition();
        }
    });
    return copy;
}

void ImageCapture::close() {
    bool singleIsPending = false;
    {
        const std::lock_guard lock(m_singleLock);
        m_isClosed = true;
        singleIsPending = m_singleIsPending;
    }
    // What this worker did not begin is another's: the camera may have been opened anew since.
    if (m_acquiring) {
        OnStopContinuousCapture();
    }
    if (singleIsPending) {
        const auto device = Device();
        guarded("Abandoning a single capture", [&] {
            if (device->Camera()->IsStreaming()) {
                device->Camera()->EndAcquisition();
            }
        });
    }
    if (m_recorder.IsRecording()) {
        m_recorder.Stop();
    }
}

void ImageCapture::finishRecording() {
    // Behind the images that the thread was told of.
    const auto finish = [this] {
        m_recorder.End();
        emit recordingFinished();
    };
    QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
}

void ImageCapture::OnImageEvent(ImagePtr image) {
    guarded("Handling an image", [&] {
        m_frameRate.UpdateFrameRate();
        if (image->IsIncomplete() && !m_displayIncomplete) {
            const int status = image->GetImageStatus();
            image->Release();
            qInfo("Image received with incomplete status %d. Please see the \"Image Status\" section of this "
                  "article: %s",
                  status, TAVORIN_IMAGE_STATUS_URL);
            return;
        }
        if (std::unique_lock lock(m_latestImageLock, soon()); lock.owns_lock()) {
            m_latestImage = image;
        } // else this one is not shown, but it may well be recorded: the last handle to it gives it back
        UpdateCameraLeaderFrameRate(image);
        m_recorder.TakeImage(image);
        SendImageStatsToImageDisplay(image);
    });
}

void ImageCapture::UpdateCameraLeaderFrameRate(ImagePtr const& image) {
    if (image->IsIncomplete()) {
        return;
    }
    const std::uint64_t timeStamp = image->GetTimeStamp();
    const std::uint64_t frameId = image->GetFrameID();
    if (frameId > m_previousFrameId && m_previousTimeStamp != 0 && m_previousFrameId != 0 &&
        m_previousTimeStamp < timeStamp) {
        m_leaderFrameRate = static_cast<double>(frameId - m_previousFrameId) * 1e9 /
                            static_cast<double>(timeStamp - m_previousTimeStamp);
    }
    m_previousTimeStamp = timeStamp;
    m_previousFrameId = frameId;
}

void ImageCapture::SendImageStatsToImageDisplay(ImagePtr const& image) {
    const auto device = Device();
    const auto width = static_cast<int>(image->GetWidth());
    const auto height = static_cast<int>(image->GetHeight());
    const int pixelFormat = image->GetPixelFormat();
    const auto bitsPerPixel = static_cast<int>(image->GetBitsPerPixel());
    const QString frameId = QString::number(image->GetFrameID());
    const QString timeStamp = QString::number(image->GetTimeStamp());
    const QString corruptImages = device->CorruptImages();
    const QString bufferUnderrun = device->BufferUnderrun();
    if (device->IsUsb()) {
        emit imageInfoUSB(width, height, pixelFormat, bitsPerPixel, frameId, timeStamp, corruptImages,
                          bufferUnderrun);
    } else {
        emit imageInfoGEV(width, height, pixelFormat, bitsPerPixel, frameId, timeStamp,
                          device->TotalPackets(), device->MissedPackets(), device->ResendRequests(),
                          device->ResendPackets(), corruptImages, bufferUnderrun);
    }
}

void ImageCapture::OnDisplayIncomplete(bool on) {
    m_displayIncomplete = on;
}

void ImageCapture::OnStartRecording() {
    m_recorder.Start(Device()->AcquisitionFrameRate());
}

void ImageCapture::OnStopRecording() {
    m_recorder.Stop();
}

void ImageCapture::OnTimeoutStopVideoCapture() {
    m_recorder.TimeOut();
}

void ImageCapture::OnStreamImageReady(ImagePtr const& image) {
    m_recorder.WriteStreamed(image);
}

void ImageCapture::OnBufferedImageReady() {
    m_recorder.Drain();
}

void ImageCapture::OnUseCameraFrameRate() {
    const double rate = Device()->AcquisitionFrameRate();
    if (rate > 0.0) {
        OnUpdateVideoFrameRate(rate);
        emit frameRateChanged(rate);
    }
}

void ImageCapture::OnUpdateRecordType(RecordType type) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.type = type; });
}

void ImageCapture::OnUpdateImageFormat(RecordImFormat format) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.imageFormat = format; });
}

void ImageCapture::OnUpdateVideoFileFormat(RecordVideoFileType type) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.videoType = type; });
}

void ImageCapture::OnUpdateFilePath(QString path) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.folder = path; });
}

void ImageCapture::OnUpdateSaveMode(RecordSaveOption option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.saveOption = option; });
}

void ImageCapture::OnUpdateSaveOptions(unsigned int framesToGrab, unsigned int everyN, unsigned int runFrames,
                                       unsigned int stopTimeMs, unsigned int intervalMs, unsigned int runMs) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) {
        settings.framesToGrab = framesToGrab;
        settings.everyN = everyN;
        settings.framesToKeep = everyN == 0 ? 0 : runFrames / everyN;
        settings.stopTimeMs = stopTimeMs;
        settings.intervalMs = intervalMs;
        settings.runMs = runMs;
    });
}

void ImageCapture::OnUpdateRecordMode(RecordMode mode) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.mode = mode; });
}

void ImageCapture::OnUpdateSaveAsBinary(bool on) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) {
        settings.saveAsBinary = on;
        settings.pgm.binaryFile = on;
        settings.ppm.binaryFile = on;
    });
}

void ImageCapture::OnUpdatePNGOptions(Norvane::PNGOption option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.png = option; });
}

void ImageCapture::OnUpdateBMPOption(Norvane::BMPOption option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.bmp = option; });
}

void ImageCapture::OnUpdateJPEGOption(Norvane::JPEGOption option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.jpeg = option; });
}

void ImageCapture::OnUpdateJPEG2Option(Norvane::JPG2Option option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.jpeg2000 = option; });
}

void ImageCapture::OnUpdateTIFFOption(Norvane::TIFFOption option) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.tiff = option; });
}

void ImageCapture::OnUpdateH264Bitrate(int bitsPerSecond) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.h264Bitrate = bitsPerSecond; });
}

void ImageCapture::OnUpdateMJPEGQuality(int quality) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.mjpegQuality = quality; });
}

void ImageCapture::OnUpdateVideoFrameRate(double framesPerSecond) {
    m_recorder.ChangeSettings(
        [&](RecordingSettings& settings) { settings.videoFrameRate = framesPerSecond; });
}

void ImageCapture::OnUpdateVideoFileSizeLimit(int megabytes) {
    m_recorder.ChangeSettings([&](RecordingSettings& settings) { settings.fileSplitSizeMb = megabytes; });
}
