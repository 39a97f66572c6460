#pragma once

#include "Clock.h"
#include "RecordingBuffer.h"
#include "RecordingMemory.h"
#include "RecordingRules.h"
#include "RecordingTypes.h"
#include "VideoWriter.h"
#include "WriteBehind.h"
#include "WriteQueue.h"

#include <QObject>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

/// Writes the images of one camera to the disk, as stills or as a video, buffered or one by one. Part of the
/// acquisition worker and living in its thread.
///
/// Three threads meet here. The user interface changes settings, starts and stops. The camera's thread brings
/// images (TakeImage) and waits for neither the disk nor the user. The worker's thread has them written
/// (Drain, WriteStreamed), one after the other on Qt's pool. Every image that was taken before Stop() is
/// written, except that a second stop abandons what is still in the buffer.
class Recorder : public QObject {
    Q_OBJECT

public:
    explicit Recorder(QObject* parent = nullptr, const Clock& clock = Clock::Monotonic());
    /// Writes what is still in the buffer.
    ~Recorder() override;

    RecordingSettings Settings() const;
    void ChangeSettings(const std::function<void(RecordingSettings&)>& change);

    /// @param cameraFrameRate  frames per second, 0 when the camera does not tell.
    void Start(double cameraFrameRate);
    void Stop();
    /// The run's time is over.
    void TimeOut();
    bool IsRecording() const { return m_recording; }
    /// By the worker's thread, once no more images come: writes what is left and finishes the files.
    void End();

    /// By the camera's thread, for every image.
    void TakeImage(const Norvane::ImagePtr& image);
    /// By the worker's thread, for every image that `streamImageReady` announced.
    void WriteStreamed(const Norvane::ImagePtr& image);
    /// By the worker's thread, after `bufferedImageReady`.
    void Drain();

    bool ShouldSkipImage();
    bool IsDoneGrabbingFramesToBuffer() const;
    bool IsDoneRecording() const;

signals:
    void grabbedFramesUpdated(unsigned int grabbed);
    void savedFramesUpdated(unsigned int saved);
    void bufferedFramesUpdated(unsigned int buffered, unsigned int remaining);
    void remainingBufferedFramesUpdated(unsigned int remaining);
    void streamImageReady(Norvane::ImagePtr const& image);
    void bufferedImageReady();
    void disableRecord();
    void doneRecording();
    void updateStatusText(QString text);
    void updateStopRecord(QString text, bool enabled);

private:
    /// What TakeImage did with one image; signals follow once its lock is left.
    struct Outcome {
        bool isBuffered = false;
        bool announceDrain = false;
        bool isDone = false;
    };
    Outcome Buffer(const Norvane::ImagePtr& image, const RecordingSettings& settings);
    Outcome Stream(const Norvane::ImagePtr& image, const RecordingSettings& settings);
    void StartTimer(unsigned int milliseconds);
    void Finish();
    /// These two by a pool thread, one image at a time.
    void WriteBuffered(const Norvane::ImagePtr& image);
    void Write(const Norvane::ImagePtr& image);
    void NoteFailure(const char* what);
    void NoteMissedImages(std::uint64_t frameId);

    mutable std::mutex m_settingsLock;
    RecordingSettings m_settings;

    /// Held by the camera's thread while it takes one image, so that a run starts and stops between images.
    mutable std::mutex m_takeLock;
    RecordingRules m_rules;

    RecordingMemory m_memory;
    std::timed_mutex m_drainLock;
    RecordingBuffer m_buffer;
    // These two are used by the writes, and by the worker's thread while there are none.
    VideoWriter m_video;
    WriteBehind m_behind; // of a buffered run; one that streams has no buffer but the system's

    std::atomic<bool> m_recording = false;
    std::atomic<bool> m_runIsOpen = false; // images of the run may still be on their way to the disk
    std::atomic<bool> m_drainIsPending = false;
    std::atomic<bool> m_stopRequestedWhileSaving = false;
    std::atomic<bool> m_abortSaving = false;
    std::atomic<bool> m_timedOut = false;
    std::atomic<unsigned int> m_run = 0;

    std::atomic<unsigned int> m_grabbed = 0;
    std::atomic<unsigned int> m_saved = 0;
    std::atomic<unsigned int> m_buffered = 0;
    std::atomic<unsigned int> m_remaining = 0;
    /// Streamed images in memory of our own that wait for the disk.
    std::shared_ptr<std::atomic<unsigned int>> m_convertedInFlight =
        std::make_shared<std::atomic<unsigned int>>(0U);
    std::atomic<unsigned int> m_failures = 0;
    std::uint64_t m_lastFrameId = 0; // of the run, 0 before its first image; guarded by m_takeLock
    std::atomic<std::uint64_t> m_missed = 0;

    WriteQueue m_writes; // last: its end waits for a write that uses the others
};
