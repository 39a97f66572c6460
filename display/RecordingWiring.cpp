#include "RecordingWiring.h"

#include "ImageCapture.h"
#include "wRecordingDialog.h"

namespace {

/// The worker's counters and texts.
void wireAnswers(ImageCapture* worker, wRecordingDialog* dialog) {
    QObject::connect(worker, &ImageCapture::disableRecord, dialog, &wRecordingDialog::OnStopRecording);
    QObject::connect(worker, &ImageCapture::doneRecording, dialog, &wRecordingDialog::OnDoneRecording);
    QObject::connect(worker, &ImageCapture::updateStatusText, dialog, &wRecordingDialog::OnUpdateStatusText);
    QObject::connect(worker, &ImageCapture::updateStopRecord, dialog, &wRecordingDialog::OnUpdateStopRecord);
    QObject::connect(worker, &ImageCapture::frameRateChanged, dialog, &wRecordingDialog::OnFrameRateChanged,
                     Qt::DirectConnection);
    QObject::connect(worker, &ImageCapture::savedFramesUpdated, dialog,
                     &wRecordingDialog::OnSavedFramesUpdated);
    QObject::connect(worker, &ImageCapture::grabbedFramesUpdated, dialog,
                     &wRecordingDialog::OnGrabbedFramesUpdated);
    QObject::connect(worker, &ImageCapture::bufferedFramesUpdated, dialog,
                     &wRecordingDialog::OnBufferedFramesUpdated);
    QObject::connect(worker, &ImageCapture::remainingBufferedFramesUpdated, dialog,
                     &wRecordingDialog::OnRemainingBufferedFramesUpdated);
}

/// The dialog's choices.
void wireSettings(ImageCapture* worker, wRecordingDialog* dialog) {
    // Directly, so that the worker has every setting before it is told to start.
    const auto direct = [worker, dialog](auto from, auto to) {
        QObject::connect(dialog, from, worker, to, Qt::DirectConnection);
    };
    direct(&wRecordingDialog::updateRecordType, &ImageCapture::OnUpdateRecordType);
    direct(&wRecordingDialog::updateImageFormat, &ImageCapture::OnUpdateImageFormat);
    direct(&wRecordingDialog::updateVideoFileFormat, &ImageCapture::OnUpdateVideoFileFormat);
    direct(&wRecordingDialog::updateSaveMode, &ImageCapture::OnUpdateSaveMode);
    direct(&wRecordingDialog::updateSaveOptions, &ImageCapture::OnUpdateSaveOptions);
    direct(&wRecordingDialog::updateRecordMode, &ImageCapture::OnUpdateRecordMode);
    direct(&wRecordingDialog::updateSaveAsBinary, &ImageCapture::OnUpdateSaveAsBinary);
    direct(&wRecordingDialog::updatePNGOptions, &ImageCapture::OnUpdatePNGOptions);
    direct(&wRecordingDialog::updateBMPOptions, &ImageCapture::OnUpdateBMPOption);
    direct(&wRecordingDialog::updateJPEGOptions, &ImageCapture::OnUpdateJPEGOption);
    direct(&wRecordingDialog::updateJPEG2Options, &ImageCapture::OnUpdateJPEG2Option);
    direct(&wRecordingDialog::updateTIFFOptions, &ImageCapture::OnUpdateTIFFOption);
    direct(&wRecordingDialog::updateH264Bitrate, &ImageCapture::OnUpdateH264Bitrate);
    direct(&wRecordingDialog::updateMJPEGQuality, &ImageCapture::OnUpdateMJPEGQuality);
    direct(&wRecordingDialog::updateVideoFrameRate, &ImageCapture::OnUpdateVideoFrameRate);
    direct(&wRecordingDialog::useCameraFrameRate, &ImageCapture::OnUseCameraFrameRate);
    direct(&wRecordingDialog::updateVideoFileSizeLimit, &ImageCapture::OnUpdateVideoFileSizeLimit);
    direct(&wRecordingDialog::updateFilePath, &ImageCapture::OnUpdateFilePath);
    direct(&wRecordingDialog::startRecording, &ImageCapture::OnStartRecording);
    direct(&wRecordingDialog::stopRecording, &ImageCapture::OnStopRecording);
}

} // namespace

void wireRecording(ImageCapture* worker, wRecordingDialog* dialog) {
    wireAnswers(worker, dialog);
    wireSettings(worker, dialog);
}
