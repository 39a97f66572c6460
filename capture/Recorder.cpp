#include "Recorder.h"

#include "Guarded.h"
#include "StillWriter.h"

#include <QTimer>
#include <QtDebug>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

/// Converted images that may wait for the disk in streaming mode, which promises to keep no buffer. Images in
/// the camera's format are limited by the stream's own buffers.
constexpr unsigned int kMaxConvertedInFlight = 16;

/// A handle to `image` that counts in `count` for as long as anyone holds it.
Norvane::ImagePtr counted(const Norvane::ImagePtr& image,
                          const std::shared_ptr<std::atomic<unsigned int>>& count) {
    ++*count;
    return Norvane::ImagePtr(
        std::shared_ptr<Norvane::IImage>(image.get(), [image, count](Norvane::IImage*) { --*count; }));
}

} // namespace

Recorder::Recorder(QObject* parent, const Clock& clock) : QObject(parent), m_rules(clock) {
    registerRecordingMetaTypes();
}

Recorder::~Recorder() {
    m_recording = false;
    Drain();
    m_writes.Wait();
    guarded("Closing the video", [this] { m_video.Close(); });
    if (m_runIsOpen) {
        m_memory.Release();
    }
}

void Recorder::End() {
    m_recording = false;
    Drain();
    if (m_runIsOpen) {
        Finish();
    }
}

RecordingSettings Recorder::Settings() const {
    const std::lock_guard lock(m_settingsLock);
    return m_settings;
}

void Recorder::ChangeSettings(const std::function<void(RecordingSettings&)>& change) {
    const std::lock_guard lock(m_settingsLock);
    change(m_settings);
}

void Recorder::Start(double cameraFrameRate) {
    const RecordingSettings settings = Settings();
    {
        const std::lock_guard lock(m_takeLock);
        ++m_run;
        m_drainIsPending = false;
        m_stopRequestedWhileSaving = false;
        m_abortSaving = false;
        m_timedOut = false;
        m_grabbed = 0;
        m_saved = 0;
        m_buffered = 0;
        m_remaining = 0;
        m_failures = 0;
        m_lastFrameId = 0;
        m_missed = 0;
        m_rules.Start(settings, cameraFrameRate);
        m_runIsOpen = true;
        m_recording = true;
    }
    if (settings.saveOption == SAVE_FOR_TIME && settings.stopTimeMs != 0) {
        StartTimer(settings.stopTimeMs);
    }
}

void Recorder::StartTimer(unsigned int milliseconds) {
    // The timer belongs to the caller's thread: the worker's is busy while it drains, and would fire late.
    auto* timer = new QTimer;
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    const unsigned int run = m_run;
    connect(
        timer, &QTimer::timeout, this,
        [this, run] {
            // After a stop by hand this would be the second one, which drops what is still in the buffer.
            if (run == m_run && m_recording) {
                TimeOut();
            }
        },
        Qt::DirectConnection);
    connect(timer, &QTimer::timeout, timer, &QObject::deleteLater);
    connect(this, &QObject::destroyed, timer, &QObject::deleteLater);
    timer->start(static_cast<int>(std::min<unsigned int>(milliseconds, 2147483647U)));
}

void Recorder::TimeOut() {
    m_timedOut = true;
    m_recording = false;
    emit disableRecord();
}

void Recorder::Stop() {
    bool drainIsPending = false;
    {
        const std::lock_guard lock(m_takeLock);
        m_recording = false;
        m_abortSaving = m_stopRequestedWhileSaving.load();
        drainIsPending = m_drainIsPending;
    }
    if (drainIsPending) {
        emit updateStatusText(QStringLiteral("Saving Buffered Frames.."));
        emit updateStopRecord(QStringLiteral("Abort Saving"), true);
        m_stopRequestedWhileSaving = true;
        return;
    }
    // Behind the images that are still on their way to the worker's thread, so that the file that it closes
    // has all of them, and away from the caller's thread, because finishing a video takes time.
    const unsigned int run = m_run;
    QMetaObject::invokeMethod(this, [this, run] {
        if (run == m_run) {
            Finish();
        }
    });
}

void Recorder::Finish() {
    m_runIsOpen = false; // the run may end here twice, after its last image and after its drain
    m_writes.Wait();
    try {
        m_video.Close();
    } catch (const std::exception& error) {
        qWarning("Recording: the end of the video could not be written: %s", error.what());
    }
    m_behind.Release();
    m_memory.Release();
    if (const unsigned int failures = m_failures.exchange(0); failures > 1) {
        qWarning("Recording: %u frames could not be written.", failures);
    }
    if (const std::uint64_t missed = m_missed.exchange(0); missed > 0) {
        qWarning(
            "Recording: %llu images of the camera never arrived; the computer or its disk was too slow, or "
            "the network lost them.",
            static_cast<unsigned long long>(missed));
    }
    emit updateStatusText(IsDoneRecording() ? QStringLiteral("Done")
                                            : QStringLiteral("Recording has been stopped."));
    emit doneRecording();
}

void Recorder::TakeImage(const Norvane::ImagePtr& image) {
    if (!m_recording) {
        return;
    }
    Outcome outcome;
    {
        const std::lock_guard lock(m_takeLock);
        if (!m_recording) {
            return;
        }
        const RecordingSettings settings = Settings();
        ++m_grabbed;
        NoteMissedImages(image->GetFrameID());
        outcome = settings.mode == STREAMING ? Stream(image, settings) : Buffer(image, settings);
        if (outcome.isDone) {
            m_recording = false;
        }
    }
    emit grabbedFramesUpdated(m_grabbed);
    if (outcome.isBuffered) {
        emit bufferedFramesUpdated(m_buffered, m_remaining);
    }
    if (outcome.announceDrain) {
        emit bufferedImageReady();
    }
    if (outcome.isDone) {
        emit disableRecord();
    }
}

Recorder::Outcome Recorder::Stream(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    if (settings.KeepsCameraPixelFormat()) {
        emit streamImageReady(image);
    } else if (*m_convertedInFlight >= kMaxConvertedInFlight) {
        NoteFailure("the disk is slower than the camera");
    } else {
        try {
            emit streamImageReady(counted(image->Convert(Norvane::PixelFormat_BGR8), m_convertedInFlight));
        } catch (const std::exception& error) {
            NoteFailure(error.what());
        }
    }
    Outcome outcome;
    outcome.isDone = settings.saveOption == SAVE_FRAME_COUNT && settings.framesToGrab != 0 &&
                     m_grabbed >= settings.framesToGrab;
    return outcome;
}

Recorder::Outcome Recorder::Buffer(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    Outcome outcome;
    if (!m_rules.ShouldSkipImage(settings)) {
        try {
            m_buffer.Push(m_memory.Copy(image, settings.KeepsCameraPixelFormat()
                                                   ? image->GetPixelFormat()
                                                   : Norvane::PixelFormat_BGR8));
            ++m_remaining;
            ++m_buffered;
            outcome.isBuffered = true;
            outcome.announceDrain = !m_drainIsPending.exchange(true);
        } catch (const std::exception& error) {
            NoteFailure(error.what());
        }
    }
    outcome.isDone = m_rules.IsDoneGrabbing(settings, m_buffered);
    return outcome;
}

void Recorder::Drain() {
    // By the wall clock: the thread sanitizer does not see locks that are timed by the other one.
    if (!m_drainLock.try_lock_until(std::chrono::system_clock::now() + std::chrono::milliseconds(1))) {
        if (!m_recording) {
            emit disableRecord();
        }
        return;
    }
    bool hasMore = true;
    while (hasMore) {
        Norvane::ImagePtr image;
        while (m_buffer.Pop(image)) {
            m_writes.Add([this, image = std::exchange(image, nullptr)] { WriteBuffered(image); });
        }
        m_writes.Wait();
        m_drainIsPending = false;
        // An image that came between the last look and the flag announced no drain: it is this one's.
        hasMore = !m_buffer.IsEmpty() && !m_drainIsPending.exchange(true);
    }
    m_drainLock.unlock();
    // While another drain is announced, that one tells: a stop in between would pass for the user's second.
    if (!m_recording && !m_drainIsPending) {
        emit disableRecord();
    }
}

void Recorder::WriteBuffered(const Norvane::ImagePtr& image) {
    if (!m_abortSaving) {
        Write(image);
    }
    if (m_remaining > 0) {
        --m_remaining;
    }
    emit remainingBufferedFramesUpdated(m_remaining);
}

void Recorder::WriteStreamed(const Norvane::ImagePtr& image) {
    if (m_runIsOpen && image.IsValid()) {
        m_writes.Add([this, image] { Write(image); });
    }
}

void Recorder::Write(const Norvane::ImagePtr& image) {
    const RecordingSettings settings = Settings();
    try {
        const std::string file = settings.type == RECORD_VIDEO ? m_video.Append(image, settings)
                                                               : StillWriter::Write(image, settings);
        if (settings.mode == BUFFERED) {
            m_behind.Written(file);
        }
    } catch (const std::exception& error) {
        NoteFailure(error.what());
    }
    emit savedFramesUpdated(++m_saved);
}

void Recorder::NoteFailure(const char* what) {
    // A full disk fails every frame: the first failure of a run says why, Finish() says how many.
    if (m_failures++ == 0) {
        qWarning("Recording: a frame could not be written: %s", what);
    }
}

void Recorder::NoteMissedImages(std::uint64_t frameId) {
    // A lower number is a stream that was started anew.
    if (m_lastFrameId != 0 && frameId > m_lastFrameId + 1) {
        m_missed += frameId - m_lastFrameId - 1;
    }
    m_lastFrameId = frameId;
}

bool Recorder::ShouldSkipImage() {
    const std::lock_guard lock(m_takeLock);
    return m_rules.ShouldSkipImage(Settings());
}

bool Recorder::IsDoneGrabbingFramesToBuffer() const {
    const std::lock_guard lock(m_takeLock);
    return m_rules.IsDoneGrabbing(Settings(), m_buffered);
}

bool Recorder::IsDoneRecording() const {
    const RecordingSettings settings = Settings();
    if (settings.mode == BUFFERED) {
        return m_saved >= m_buffered;
    }
    if (settings.saveOption == SAVE_FRAME_COUNT && settings.framesToGrab != 0) {
        return settings.framesToGrab <= m_grabbed;
    }
    return settings.saveOption == SAVE_FOR_TIME && m_timedOut;
}
