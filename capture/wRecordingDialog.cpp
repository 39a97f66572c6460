#include "wRecordingDialog.h"

#include "ui_wRecordingDialog.h"

#include <QDir>
#include <QFileDialog>
#include <QRegularExpressionValidator>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int kInvalidTextTime = 2000; // ms
constexpr int kStreamingOffDelay = 5;  // ms

/// The whole number in an edit, the largest or smallest that there is for one of more digits; 0 for anything
/// else.
qint64 numberIn(const QLineEdit* edit) {
    const QString text = edit->text();
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    static const QRegularExpression wholeNumber(QStringLiteral("^-?\\d+$"));
    if (fits || !wholeNumber.match(text).hasMatch()) {
        return number;
    }
    return text.startsWith(QLatin1Char('-')) ? std::numeric_limits<qint64>::min()
                                             : std::numeric_limits<qint64>::max();
}

unsigned int unsignedIn(const QLineEdit* edit) {
    return static_cast<unsigned int>(
        std::clamp<qint64>(numberIn(edit), 0, std::numeric_limits<unsigned int>::max()));
}

int intIn(const QLineEdit* edit) {
    return static_cast<int>(
        std::clamp<qint64>(numberIn(edit), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

wRecordingDialog::wRecordingDialog(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::wRecordingDialog>()) {
    registerRecordingMetaTypes();
    m_ui->setupUi(this);
    m_ui->editBox_Filename->setText(QDir::homePath() + QStringLiteral("/Videos"));
    connectForm();
    OnUpdateImageFormat(m_ui->comboBox_ImageFormat->currentIndex());
    OnUpdateVideoType(m_ui->comboBox_VideoType->currentIndex());
    OnUpdateSaveOption();
}

wRecordingDialog::~wRecordingDialog() {
    // An edit that loses the focus on the way down would still tell its dialog.
    for (QObject* control : findChildren<QObject*>()) {
        control->disconnect(this);
    }
}

void wRecordingDialog::connectForm() {
    connect(m_ui->button_StartRecord, &QPushButton::clicked, this, &wRecordingDialog::OnStartRecording);
    connect(m_ui->button_StopRecord, &QPushButton::clicked, this, &wRecordingDialog::OnStopRecording);
    connect(m_ui->button_Browse, &QPushButton::clicked, this, &wRecordingDialog::OnBrowseFolder);
    connect(m_ui->editBox_Filename, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnFileFolderChanged);
    for (QRadioButton* radio :
         {m_ui->radio_FramesToGrab, m_ui->radio_StopTime, m_ui->radio_OneOfN, m_ui->radio_TimeLapse}) {
        connect(radio, &QRadioButton::toggled, this, &wRecordingDialog::OnUpdateSaveOption);
    }
    connect(m_ui->radio_Buffered, &QRadioButton::clicked, this, &wRecordingDialog::OnUpdateRecordMode);
    connect(m_ui->radio_Streaming, &QRadioButton::clicked, this, &wRecordingDialog::OnUpdateRecordMode);
    connect(m_ui->tabWidget_RecordType, &QTabWidget::currentChanged, this,
            &wRecordingDialog::OnRecordTabChanged);

    auto* wholeNumber = new QRegularExpressionValidator(QRegularExpression(QStringLiteral("-?\\d*")), this);
    for (QLineEdit* edit : {m_ui->editBox_FramesToGrab, m_ui->editBox_EveryN, m_ui->editBox_RunFrames,
                            m_ui->editBox_StopTime, m_ui->editBox_Interval, m_ui->editBox_RunTime}) {
        edit->setValidator(wholeNumber);
        connect(edit, &QLineEdit::editingFinished, this, &wRecordingDialog::OnChangeSaveOptions);
    }

    const auto comboIndexChanged = qOverload<int>(&QComboBox::currentIndexChanged);
    connect(m_ui->comboBox_ImageFormat, comboIndexChanged, this, &wRecordingDialog::OnUpdateImageFormat);
    connect(m_ui->checkBox_SaveBinary, &QCheckBox::toggled, this, &wRecordingDialog::OnSaveAsBinary);
    connect(m_ui->checkBox_InterleavedPNG, &QCheckBox::toggled, this, &wRecordingDialog::OnChangePNGOptions);
    connect(m_ui->comboBox_CompressionPNG, comboIndexChanged, this, &wRecordingDialog::OnChangePNGOptions);
    connect(m_ui->comboBox_CompressionTiff, comboIndexChanged, this, &wRecordingDialog::OnChangeTIFFOptions);
    connect(m_ui->checkBox_SaveProgressive, &QCheckBox::toggled, this,
            &wRecordingDialog::OnChangeJPEGOptions);
    connect(m_ui->editBox_JPEGQuality, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnChangeJPEGOptions);
    connect(m_ui->editBox_JPEG2000Quality, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnChangeJPEG2000Options);

    connect(m_ui->comboBox_VideoType, comboIndexChanged, this, &wRecordingDialog::OnUpdateVideoType);
    connect(m_ui->editBox_FrameRate, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnChangeVideoFrameRate);
    connect(m_ui->button_UseFrameRate, &QPushButton::clicked, this, &wRecordingDialog::OnUseCameraFR);
    connect(m_ui->editBox_Bitrate, &QLineEdit::editingFinished, this, &wRecordingDialog::OnUpdateBitrateH264);
    connect(m_ui->editBox_MJPGQuality, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnUpdateQualityMJPEG);
    connect(m_ui->editBox_SplitSize, &QLineEdit::editingFinished, this,
            &wRecordingDialog::OnUpdateVideoFileSplitSize);
}

void wRecordingDialog::signalInitialParamsUpdate() {
    OnUpdateSaveOption();
    OnUpdateRecordMode();
    OnUpdateFilename();
}

void wRecordingDialog::OnUpdateFilename() {}

void wRecordingDialog::resetCounters() {
    OnSavedFramesUpdated(0);
    OnGrabbedFramesUpdated(0);
    OnBufferedFramesUpdated(0, 0);
}

void wRecordingDialog::OnSavedFramesUpdated(unsigned int saved) {
    m_ui->label_SavedImages->setText(tr("Total # of Saved Images: %1").arg(saved));
}

void wRecordingDialog::OnGrabbedFramesUpdated(unsigned int grabbed) {
    m_ui->label_GrabbedImages->setText(tr("Total # of Grabbed Images: %1").arg(grabbed));
}

void wRecordingDialog::OnBufferedFramesUpdated(unsigned int buffered, unsigned int remaining) {
    m_ui->label_BufferedImages->setText(tr("Total # of Buffered Images: %1").arg(buffered));
    OnRemainingBufferedFramesUpdated(remaining);
}

void wRecordingDialog::OnRemainingBufferedFramesUpdated(unsigned int remaining) {
    m_ui->label_RemainingImages->setText(tr("# of Images Left in Buffer: %1").arg(remaining));
}

void wRecordingDialog::OnUpdateStatusText(QString const& text) {
    m_ui->editBox_Status->setText(text);
}

void wRecordingDialog::OnUpdateStopRecord(QString const& text, bool enabled) {
    m_ui->button_StopRecord->setText(text);
    m_ui->button_StopRecord->setEnabled(enabled);
}

void wRecordingDialog::OnFrameRateChanged(double framesPerSecond) {
    m_ui->editBox_FrameRate->setText(QString::number(framesPerSecond, 'g', 6));
}

void wRecordingDialog::OnStartRecording() {
    resetCounters();
    if (!ValidSaveOptions()) {
        OnUpdateStatusText(QStringLiteral("Invalid Save Options..."));
        QTimer::singleShot(kInvalidTextTime, this, [this] {
            if (!m_isRecording) {
                OnUpdateStatusText(QStringLiteral("Ready"));
            }
        });
        return;
    }
    OnUpdateStatusText(QStringLiteral("Recording..."));
    m_isRecording = true;
    enableOptions(false);
    m_ui->button_StartRecord->setEnabled(false);
    m_ui->button_StopRecord->setEnabled(true);
    emit startRecording();
}

void wRecordingDialog::OnStopRecording() {
    emit stopRecording();
}

void wRecordingDialog::OnDoneRecording() {
    m_isRecording = false;
    enableOptions(true);
    OnUpdateSaveOption();
    OnUpdateStopRecord(tr("Stop"), false);
    m_ui->button_StartRecord->setEnabled(true);
}

void wRecordingDialog::enableOptions(bool on) {
    for (QWidget* options :
         std::initializer_list<QWidget*>{m_ui->groupBox_SaveFilename, m_ui->groupBox_SaveOptions,
                                         m_ui->groupBox_RecordingMode, m_ui->tabWidget_RecordType}) {
        options->setEnabled(on);
    }
}

bool wRecordingDialog::ValidSaveOptions() const {
    if (m_ui->radio_FramesToGrab->isChecked()) {
        return numberIn(m_ui->editBox_FramesToGrab) >= 0;
    }
    if (m_ui->radio_OneOfN->isChecked()) {
        const qint64 everyN = numberIn(m_ui->editBox_EveryN);
        return everyN >= 1 && everyN <= numberIn(m_ui->editBox_RunFrames);
    }
    if (m_ui->radio_StopTime->isChecked()) {
        return numberIn(m_ui->editBox_StopTime) >= 0;
    }
    const qint64 interval = numberIn(m_ui->editBox_Interval);
    return interval >= 1 && interval <= numberIn(m_ui->editBox_RunTime);
}

void wRecordingDialog::OnUpdateSaveOption() {
    m_ui->editBox_FramesToGrab->setEnabled(m_ui->radio_FramesToGrab->isChecked());
    m_ui->editBox_StopTime->setEnabled(m_ui->radio_StopTime->isChecked());
    m_ui->editBox_EveryN->setEnabled(m_ui->radio_OneOfN->isChecked());
    m_ui->editBox_RunFrames->setEnabled(m_ui->radio_OneOfN->isChecked());
    m_ui->editBox_Interval->setEnabled(m_ui->radio_TimeLapse->isChecked());
    m_ui->editBox_RunTime->setEnabled(m_ui->radio_TimeLapse->isChecked());

    if (m_ui->radio_FramesToGrab->isChecked()) {
        allowStreaming();
        emit updateSaveMode(SAVE_FRAME_COUNT);
    } else if (m_ui->radio_OneOfN->isChecked()) {
        demandBuffered();
        emit updateSaveMode(SAVE_ONE_OF_N);
    } else if (m_ui->radio_StopTime->isChecked()) {
        allowStreaming();
        emit updateSaveMode(SAVE_FOR_TIME);
    } else if (m_ui->radio_TimeLapse->isChecked()) {
        demandBuffered();
        emit updateSaveMode(SAVE_TIME_LAPSE);
    }
}

void wRecordingDialog::allowStreaming() {
    m_ui->radio_Streaming->setEnabled(true);
}

void wRecordingDialog::demandBuffered() {
    m_ui->radio_Buffered->click();
    // Once the click has been dealt with: a disabled button cannot give its check mark away.
    QTimer::singleShot(kStreamingOffDelay, this, [this] {
        if (m_ui->radio_OneOfN->isChecked() || m_ui->radio_TimeLapse->isChecked()) {
            m_ui->radio_Streaming->setEnabled(false);
        }
    });
}

void wRecordingDialog::OnChangeSaveOptions() {
    emit updateSaveOptions(unsignedIn(m_ui->editBox_FramesToGrab), unsignedIn(m_ui->editBox_EveryN),
                           unsignedIn(m_ui->editBox_RunFrames), unsignedIn(m_ui->editBox_StopTime),
                           unsignedIn(m_ui->editBox_Interval), unsignedIn(m_ui->editBox_RunTime));
}

void wRecordingDialog::OnUpdateRecordMode() {
    emit updateRecordMode(m_ui->radio_Streaming->isChecked() ? STREAMING : BUFFERED);
}

void wRecordingDialog::OnRecordTabChanged(int index) {
    emit updateRecordType(static_cast<RecordType>(index));
}

void wRecordingDialog::OnBrowseFolder() {
    // Shown without a loop of its own: the camera, and this dialog with it, may go away meanwhile.
    auto* dialog = new QFileDialog(this, tr("Open Folder"), m_ui->editBox_Filename->text());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& folder) {
        m_ui->editBox_Filename->setText(folder);
        emit updateFilePath(folder);
    });
    dialog->open();
}

void wRecordingDialog::OnFileFolderChanged() {
    const QString folder = m_ui->editBox_Filename->text();
    if (!QDir(folder).exists() && !QDir().mkdir(folder)) {
        qWarning("The recording folder %s cannot be created.", qPrintable(folder));
    }
    emit updateFilePath(folder);
}

void wRecordingDialog::OnUpdateImageFormat(int index) {
    emit updateImageFormat(static_cast<RecordImFormat>(index));
    m_ui->groupBox_PGMOptions->setVisible(index == PGM || index == PPM);
    m_ui->groupBox_JPEGOptions->setVisible(index == JPEG);
    m_ui->groupBox_JPEG2000Options->setVisible(index == JPEG2000);
    m_ui->groupBox_TiffOptions->setVisible(index == TIFF);
    m_ui->groupBox_PNGOptions->setVisible(index == PNG);
}

void wRecordingDialog::OnUpdateVideoType(int index) {
    emit updateVideoFileFormat(static_cast<RecordVideoFileType>(index));
    m_ui->groupBox_H264Options->setVisible(index == H264);
    m_ui->groupBox_MJPGOptions->setVisible(index == MJPG);
    m_ui->groupBox_VideoFileSplitSizeOptions->setVisible(index != H264);
}

void wRecordingDialog::OnSaveAsBinary(bool on) {
    emit updateSaveAsBinary(on);
}

void wRecordingDialog::OnChangePNGOptions() {
    Norvane::PNGOption option;
    option.interlaced = m_ui->checkBox_InterleavedPNG->isChecked();
    option.compressionLevel = static_cast<unsigned int>(m_ui->comboBox_CompressionPNG->currentIndex());
    emit updatePNGOptions(option);
}

void wRecordingDialog::OnChangeTIFFOptions(int index) {
    Norvane::TIFFOption option;
    option.compression = static_cast<Norvane::TIFFOption::CompressionMethod>(index + 1);
    emit updateTIFFOptions(option);
}

void wRecordingDialog::OnChangeJPEGOptions() {
    Norvane::JPEGOption option;
    option.progressive = m_ui->checkBox_SaveProgressive->isChecked();
    option.quality = unsignedIn(m_ui->editBox_JPEGQuality);
    emit updateJPEGOptions(option);
}

void wRecordingDialog::OnChangeJPEG2000Options() {
    Norvane::JPG2Option option;
    option.quality = unsignedIn(m_ui->editBox_JPEG2000Quality);
    emit updateJPEG2Options(option);
}

void wRecordingDialog::OnUpdateBitrateH264() {
    if (const int bitrate = intIn(m_ui->editBox_Bitrate); bitrate > 0) {
        emit updateH264Bitrate(bitrate);
    }
}

void wRecordingDialog::OnUpdateQualityMJPEG() {
    if (const int quality = intIn(m_ui->editBox_MJPGQuality); quality > 0) {
        emit updateMJPEGQuality(quality);
    }
}

void wRecordingDialog::OnUpdateVideoFileSplitSize() {
    if (const int megabytes = intIn(m_ui->editBox_SplitSize); megabytes >= 0) {
        emit updateVideoFileSizeLimit(megabytes);
    }
}

void wRecordingDialog::OnChangeVideoFrameRate() {
    // Endless is no rate, and would cost the whole video.
    if (const double rate = m_ui->editBox_FrameRate->text().toDouble(); rate > 0.0 && std::isfinite(rate)) {
        emit updateVideoFrameRate(rate);
    }
}

void wRecordingDialog::OnUseCameraFR() {
    emit useCameraFrameRate();
}
