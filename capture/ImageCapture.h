#pragma once

#include "CameraDevice.h"
#include "FrameRateCalculator.h"
#include "Recorder.h"
#include "RecordingTypes.h"
#include "norvane/Camera.h"
#include "norvane/EventHandlers.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <mutex>

/// The acquisition worker of one image display, living on a thread of its own. It starts and stops the
/// camera's stream, keeps the newest image for the renderer to pull, tells the status line about every image,
/// measures frame rates, and feeds the recorder.
///
/// Called by three threads: the user interface (continuous start and stop, settings, getRawImagePtr), the
/// worker's own (single capture, queued hand-overs), and the camera's dispatch thread (OnImageEvent). The
/// locks here are the standard library's, which a thread sanitizer can follow into.
class ImageCapture : public QObject, public Norvane::ImageEventHandler {
    Q_OBJECT

public:
    explicit ImageCapture(QObject* parent = nullptr);
    ~ImageCapture() override;

    void setCamera(Norvane::CameraPtr camera);
    void updatePresetParameters() const;

    /// Hands the newest image out, once; null when none has come since.
    /// @param wait  whether to wait for the camera's thread or to give up after a millisecond.
    Norvane::ImagePtr getRawImagePtr(bool wait);
    /// Received images a second.
    double getFrameRate() const { return m_frameRate.GetFrameRate(); }
    /// Images a second by the camera's own clock and frame count.
    double getCameraLeaderFrameRate() const { return m_leaderFrameRate; }
    bool getDisplayIncomplete() const { return m_displayIncomplete; }

    bool ShouldSkipImage() { return m_recorder.ShouldSkipImage(); }
    bool IsDoneGrabbingFramesToBuffer() const { return m_recorder.IsDoneGrabbingFramesToBuffer(); }
    bool IsDoneRecording() const { return m_recorder.IsDoneRecording(); }

    void UpdateCameraLeaderFrameRate(Norvane::ImagePtr const& image);
    void SendImageStatsToImageDisplay(Norvane::ImagePtr const& image);

    /// On the camera's thread, for every image.
    void OnImageEvent(Norvane::ImagePtr image) override;

    /// Ends acquisition for good, also a single capture that still waits for its image, and stops a
    /// recording: from now on the worker's thread comes to rest, so that its owner can wait for it.
    void close();
    /// Has the worker's thread write what the recording still holds, which may take minutes, and emit
    /// recordingFinished(). After close(); returns at once.
    void finishRecording();

public slots:
    void OnStartContinuousCapture();
    void OnStopContinuousCapture();
    void OnStartSingleCapture();
    void OnStreamImageReady(Norvane::ImagePtr const& image);
    void OnBufferedImageReady();
    void OnStartRecording();
    void OnStopRecording();
    void OnTimeoutStopVideoCapture();
    void OnDisplayIncomplete(bool on);

    void OnUpdateRecordType(RecordType type);
    void OnUpdateImageFormat(RecordImFormat format);
    void OnUpdateVideoFileFormat(RecordVideoFileType type);
    void OnUpdateFilePath(QString path);
    void OnUpdateSaveMode(RecordSaveOption option);
    void OnUpdateSaveOptions(unsigned int framesToGrab, unsigned int everyN, unsigned int runFrames,
                             unsigned int stopTimeMs, unsigned int intervalMs, unsigned int runMs);
    void OnUpdateRecordMode(RecordMode mode);
    void OnUpdateSaveAsBinary(bool on);
    void OnUpdatePNGOptions(Norvane::PNGOption option);
    void OnUpdateBMPOption(Norvane::BMPOption option);
    void OnUpdateJPEGOption(Norvane::JPEGOption option);
    void OnUpdateJPEG2Option(Norvane::JPG2Option option);
    void OnUpdateTIFFOption(Norvane::TIFFOption option);
    void OnUpdateH264Bitrate(int bitsPerSecond);
    void OnUpdateMJPEGQuality(int quality);
    void OnUpdateVideoFrameRate(double framesPerSecond);
    void OnUseCameraFrameRate();
    void OnUpdateVideoFileSizeLimit(int megabytes);

signals:
    /// finishRecording() has been done.
    void recordingFinished();
    void updateSingleImageDisplay(Norvane::ImagePtr image);
    /// A single capture is over, with or without an image.
    void singleCaptureFinished();
    void streamImageReady(Norvane::ImagePtr const& image);
    void bufferedImageReady();
    void imageInfoUSB(int width, int height, int pixelFormat, int bitsPerPixel, QString frameId,
                      QString timeStamp, QString corruptImages, QString bufferUnderrun);
    void imageInfoGEV(int width, int height, int pixelFormat, int bitsPerPixel, QString frameId,
                      QString timeStamp, QString totalPackets, QString missedPackets, QString resendRequests,
                      QString resendPackets, QString corruptImages, QString bufferUnderrun);
    void grabbedFramesUpdated(unsigned int grabbed);
    void savedFramesUpdated(unsigned int saved);
    void bufferedFramesUpdated(unsigned int buffered, unsigned int remaining);
    void remainingBufferedFramesUpdated(unsigned int remaining);
    void disableRecord();
    void doneRecording();
    void updateStatusText(QString text);
    void updateStopRecord(QString text, bool enabled);
    void frameRateChanged(double framesPerSecond);

private:
    std::shared_ptr<const CameraDevice> Device() const;
    void ForwardRecorderSignals();
    Norvane::ImagePtr WaitForSingleImage(const Norvane::CameraPtr& camera);

    mutable std::mutex m_deviceLock;
    std::shared_ptr<const CameraDevice> m_device;

    std::atomic<bool> m_acquiring = false;
    std::mutex m_cameraLock; // orders start against stop
    bool m_isRegistered = false;
    std::timed_mutex m_latestImageLock;
    Norvane::ImagePtr m_latestImage; // null once the renderer has taken it

    std::mutex m_singleLock; // a single capture begins either before close() looks or not at all
    bool m_isClosed = false;
    bool m_singleIsPending = false;

    std::atomic<double> m_leaderFrameRate = 0.0;
    std::uint64_t m_previousTimeStamp = 0; // ns; these two belong to whichever thread brings images
    std::uint64_t m_previousFrameId = 0;
    FrameRateCalculator m_frameRate{10};
    std::atomic<bool> m_displayIncomplete = true;

    Recorder m_recorder;
};
