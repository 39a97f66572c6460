#pragma once

#include "RecordingTypes.h"

#include <QDialog>

#include <memory>

class QLineEdit;
namespace Ui {
class wRecordingDialog;
}

/// Where the user chooses what to record from one camera, and starts and stops it. It records nothing itself:
/// every choice goes out as a signal at once, and the worker's counters and texts come back. Owned by the
/// image display; user-interface thread.
class wRecordingDialog : public QDialog {
    Q_OBJECT

public:
    explicit wRecordingDialog(QWidget* parent = nullptr);
    ~wRecordingDialog() override;

    /// Sends the save option and the record mode once more, for a worker that has just been connected. The
    /// output folder is only sent once the user has touched it.
    void signalInitialParamsUpdate();

public slots:
    void OnSavedFramesUpdated(unsigned int saved);
    void OnGrabbedFramesUpdated(unsigned int grabbed);
    void OnBufferedFramesUpdated(unsigned int buffered, unsigned int remaining);
    void OnRemainingBufferedFramesUpdated(unsigned int remaining);
    void OnUpdateStatusText(QString const& text);
    void OnUpdateStopRecord(QString const& text, bool enabled);
    void OnFrameRateChanged(double framesPerSecond);
    void OnDoneRecording();
    void OnStopRecording();

signals:
    void updateRecordMode(RecordMode mode);
    void updateRecordType(RecordType type);
    void updateImageFormat(RecordImFormat format);
    void updateVideoFileFormat(RecordVideoFileType type);
    void updateSaveMode(RecordSaveOption option);
    void updateFilePath(QString path);
    void updateSaveOptions(unsigned int framesToGrab, unsigned int everyN, unsigned int runFrames,
                           unsigned int stopTimeMs, unsigned int intervalMs, unsigned int runMs);
    void updateSaveAsBinary(bool on);
    void updatePNGOptions(Norvane::PNGOption option);
    void updateBMPOptions(Norvane::BMPOption option);
    void updateJPEGOptions(Norvane::JPEGOption option);
    void updateJPEG2Options(Norvane::JPG2Option option);
    void updateTIFFOptions(Norvane::TIFFOption option);
    void updateH264Bitrate(int bitsPerSecond);
    void updateMJPEGQuality(int quality);
    void updateVideoFrameRate(double framesPerSecond);
    void updateVideoFileSizeLimit(int megabytes);
    void useCameraFrameRate();
    void startRecording();
    void stopRecording();

private slots:
    void OnStartRecording();
    void OnBrowseFolder();
    void OnFileFolderChanged();
    void OnUpdateSaveOption();
    void OnChangeSaveOptions();
    void OnUpdateRecordMode();
    void OnRecordTabChanged(int index);
    void OnUpdateImageFormat(int index);
    void OnUpdateVideoType(int index);
    void OnSaveAsBinary(bool on);
    void OnChangePNGOptions();
    void OnChangeTIFFOptions(int index);
    void OnChangeJPEGOptions();
    void OnChangeJPEG2000Options();
    void OnUpdateBitrateH264();
    void OnUpdateQualityMJPEG();
    void OnUpdateVideoFileSplitSize();
    void OnChangeVideoFrameRate();
    void OnUseCameraFR();
    void OnUpdateFilename();

private:
    void connectForm();
    void resetCounters();
    void enableOptions(bool on);
    void allowStreaming();
    void demandBuffered();
    bool ValidSaveOptions() const;

    std::unique_ptr<Ui::wRecordingDialog> m_ui;
    bool m_isRecording = false;
};
