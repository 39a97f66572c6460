#include "wImageDisplay.h"

#include "AcquisitionModeBox.h"
#include "DisplayContextMenu.h"
#include "DisplayToolBar.h"
#include "ElidingStatusBar.h"
#include "Guarded.h"
#include "ImageCapture.h"
#include "ImageSaver.h"
#include "ImageScrollArea.h"
#include "RecordingWiring.h"
#include "norvane/genapi/GenApi.h"
#include "wGLImageDisplay.h"
#include "wInferenceDialog.h"
#include "wRecordingDialog.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMainWindow>
#include <QMouseEvent>
#include <QScrollBar>
#include <QShortcut>
#include <QThread>
#include <QToolButton>

#include <utility>

using namespace Norvane::GenApi;
using Norvane::CameraPtr;
using Norvane::ImagePtr;

namespace {

constexpr int kSingleFrameMode = 1;
constexpr int kRoomAroundToolBar = 25; // pixels
constexpr int kStatusBarHeight = 40;

QString translated(const char* context, const QString& text) {
    return QCoreApplication::translate(context, text.toUtf8().constData());
}

} // namespace

wImageDisplay::wImageDisplay(Norvane::InterfacePtr interface, CameraPtr camera, QWidget* parent)
    : QDockWidget(parent), m_interface(std::move(interface)), m_camera(std::move(camera)) {
    try {
        setupTitle();
        openCamera();
        setupWidget();
        setupCapture();
    } catch (const Norvane::Exception&) {
        tearDown();
        throw;
    }
}

wImageDisplay::~wImageDisplay() {
    tearDown();
}

void wImageDisplay::tearDown() {
    // The focus moves while children go, and the tool bar is one of the first.
    disconnect(qApp, nullptr, this, nullptr);
    if (m_imageCapture) {
        m_imageCapture->close();
    }
    if (m_captureThread) {
        m_captureThread->quit();
        m_captureThread->wait();
        delete m_captureThread;
    }
    delete m_imageCapture; // gone with its thread, unless that was never started
    delete m_glDisplay;
    if (QWidget* parent = parentWidget()) {
        // Qt knows what it composes into a window from the last time it painted there: an expose event before
        // the next time would look for the widget that has just gone.
        parent->window()->update();
    }
    m_camera = CameraPtr();
    m_interface = Norvane::InterfacePtr();
    delete m_recordingDialog;
    delete m_inferenceDialog;
}

void wImageDisplay::setupTitle() {
    if (!m_camera.IsValid()) {
        return;
    }
    m_deviceSerial = m_mapper.GetDeviceSerialNumber(m_camera);
    guarded("Reading the camera's model name", [this] {
        const CStringPtr model = m_camera->GetTLDeviceNodeMap().GetNode("DeviceModelName");
        if (IsReadable(model.Get())) {
            const QString name = QString::fromUtf8(model->GetValue().c_str());
            setWindowTitle(translated("mainWindow", name));
            setWindowTitle(name + QLatin1Char(' ') + QString::number(m_deviceSerial));
        }
    });
}

void wImageDisplay::openCamera() {
    if (!m_camera->IsInitialized()) {
        m_camera->Init();
    }
    const CBooleanPtr enable = m_camera->GetNodeMap().GetNode("InferenceEnable");
    m_inferenceAvailable = IsAvailable(enable.Get());
    m_showInferenceLabel = m_inferenceAvailable;
}

void wImageDisplay::setupWidget() {
    m_container = new QWidget(this);
    m_container->setAutoFillBackground(true);
    m_containerLayout = new QGridLayout(m_container);
    m_containerLayout->setContentsMargins(0, 0, 0, 0);
    m_containerLayout->setSpacing(0);
    setupToolBar();
    setupImageArea();
    setupStatusBar();
    setWidget(m_container);

    // The dock's own buttons take no keyboard focus.
    auto* closing = new QShortcut(QKeySequence::Close, this);
    closing->setContext(Qt::WidgetWithChildrenShortcut);
    connect(closing, &QShortcut::activated, this, &QWidget::close);
    connect(this, &wImageDisplay::enableZoom, this, &wImageDisplay::OnEnableZoomButtons);
    connect(this, &wImageDisplay::disableZoom, this, &wImageDisplay::OnDisableZoomButtons);
    connect(this, &wImageDisplay::enableSave, this, &wImageDisplay::OnEnableSave);
    connect(this, &wImageDisplay::disableSave, this, &wImageDisplay::OnDisableSave);
    connect(this, &wImageDisplay::enableCopy, this, &wImageDisplay::OnEnableCopy);
}

void wImageDisplay::setupToolBar() {
    m_innerMainWindow = new QMainWindow;
    m_innerMainWindow->setContextMenuPolicy(Qt::NoContextMenu);
    m_toolBar = new DisplayToolBar(m_innerMainWindow);
    m_innerMainWindow->addToolBar(m_toolBar);
    m_innerMainWindow->setFixedHeight(m_toolBar->height() + kRoomAroundToolBar);
    m_containerLayout->addWidget(m_innerMainWindow, 0, 0);

    connect(m_toolBar->startButton, &QToolButton::clicked, this, &wImageDisplay::OnStartStream);
    connect(m_toolBar->singleButton, &QToolButton::clicked, this, &wImageDisplay::OnGrabSingleImage);
    connect(m_toolBar->stopButton, &QToolButton::clicked, this, &wImageDisplay::OnStopStream);
    connect(m_toolBar->saveButton, &QToolButton::clicked, this, &wImageDisplay::OnSave);
    connect(m_toolBar->zoomInButton, &QToolButton::clicked, this, &wImageDisplay::OnZoomIn);
    connect(m_toolBar->zoomOutButton, &QToolButton::clicked, this, &wImageDisplay::OnZoomOut);
    connect(m_toolBar->copyButton, &QToolButton::clicked, this, &wImageDisplay::OnImageCopy);
    connect(m_toolBar->recordButton, &QToolButton::clicked, this, &wImageDisplay::OnRecord);
    m_toolBar->acquisitionMode->Fill(m_camera);
    m_stretchToFit = false;
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focused) { claimShortcuts(focused); });
    claimShortcuts(this);
}

void wImageDisplay::claimShortcuts(QWidget* focused) {
    // The display that had the focus last keeps the keys while a tree or a menu has it.
    static QPointer<wImageDisplay> owner;
    if (focused == this || isAncestorOf(focused)) {
        owner = this;
    }
    m_toolBar->setShortcutsActive(!owner || owner == this);
}

void wImageDisplay::setupImageArea() {
    m_imageArea = new QWidget(m_container);
    m_imageArea->setObjectName(QStringLiteral("imageArea"));
    m_imageArea->setContentsMargins(0, 0, 0, 0);
    m_imageArea->installEventFilter(this);
    // A window of its own for the graphics system: each image is then composed and shown in this area only,
    // otherwise over the whole main window.
    m_imageArea->setAttribute(Qt::WA_DontCreateNativeAncestors);
    m_imageArea->setAttribute(Qt::WA_NativeWindow);
    m_glDisplay = new wGLImageDisplay;
    m_glDisplay->connectToCamera(m_camera);
    m_glDisplay->changeInferenceEnabledStatus(m_showInferenceLabel);

    m_scrollArea = new ImageScrollArea(m_imageArea);
    m_scrollArea->setAccessibleName(tr("Image"));
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    m_scrollArea->setWidgetResizable(true);
    m_scrollArea->setWidget(m_glDisplay);
    m_glDisplay->setAutoFillBackground(false); // which the scroll area sets; each painter would clear it all
    m_imageAreaLayout = new QGridLayout(m_imageArea);
    m_imageAreaLayout->setSpacing(0);
    m_imageAreaLayout->setContentsMargins(0, 0, 0, 0);
    m_imageAreaLayout->addWidget(m_scrollArea);
    m_containerLayout->addWidget(m_imageArea, 1, 0);

    m_inferenceLabel = new QLabel(m_imageArea);
    m_inferenceLabel->setObjectName(QStringLiteral("inferenceLabel"));
    m_inferenceLabel->setStyleSheet(QStringLiteral("background-color: rgba(255, 255, 255, 0);"));
    m_inferenceLabel->setAlignment(Qt::AlignTop);
    m_inferenceLabel->setWordWrap(true);
    m_inferenceLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_inferenceLabel->setFixedSize(m_glDisplay->size());
    m_inferenceLabel->setVisible(m_showInferenceLabel);
}

void wImageDisplay::setupStatusBar() {
    m_statusBar = new ElidingStatusBar(m_container);
    m_statusBar->setMaximumHeight(kStatusBarHeight);
    m_statusBar->setSizeGripEnabled(false);
    m_statusBar->setLineCount(m_shown.imageStatus ? 2 : 1);
    m_containerLayout->addWidget(m_statusBar, 2, 0);
}

void wImageDisplay::setupCapture() {
    registerRecordingMetaTypes();
    m_captureThread = new QThread;
    m_imageCapture = new ImageCapture;
    m_imageCapture->setCamera(m_camera);
    m_imageCapture->moveToThread(m_captureThread);
    m_glDisplay->setImageCaptureThread(m_imageCapture);
    connectCapture();

    m_recordingDialog = new wRecordingDialog(this);
    wireRecording(m_imageCapture, m_recordingDialog);
    createInferenceDialog();
    m_recordingDialog->signalInitialParamsUpdate();
    m_captureThread->start(QThread::InheritPriority);
}

void wImageDisplay::connectCapture() {
    connect(this, &wImageDisplay::startProcessAndDisplay, m_glDisplay,
            &wGLImageDisplay::startProcessAndDisplay, Qt::DirectConnection);
    connect(this, &wImageDisplay::stopProcessAndDisplay, m_glDisplay, &wGLImageDisplay::stopProcessAndDisplay,
            Qt::DirectConnection);
    connect(m_imageCapture, &ImageCapture::updateSingleImageDisplay, m_glDisplay,
            &wGLImageDisplay::updateImageDisplayGL, Qt::QueuedConnection);
    connect(m_imageCapture, &ImageCapture::singleCaptureFinished, this,
            &wImageDisplay::restoreAcquisitionMode, Qt::QueuedConnection);
    connect(m_toolBar->acquisitionMode->Combo(), qOverload<int>(&QComboBox::currentIndexChanged), this,
            qOverload<int>(&wImageDisplay::OnAcquisitionModeUpdated));
    connect(this, &wImageDisplay::startContinuousCapture, m_imageCapture,
            &ImageCapture::OnStartContinuousCapture, Qt::DirectConnection);
    connect(this, &wImageDisplay::stopContinuousCapture, m_imageCapture,
            &ImageCapture::OnStopContinuousCapture, Qt::DirectConnection);
    connect(this, &wImageDisplay::startSingleCapture, m_imageCapture, &ImageCapture::OnStartSingleCapture,
            Qt::QueuedConnection);
    connect(m_imageCapture, &ImageCapture::imageInfoUSB, this, &wImageDisplay::updateImageInfoUSB);
    connect(m_imageCapture, &ImageCapture::imageInfoGEV, this, &wImageDisplay::updateImageInfoGEV);
    connect(m_captureThread, &QThread::finished, m_imageCapture, &QObject::deleteLater);
    connect(m_captureThread, &QThread::finished, m_captureThread, &QObject::deleteLater);
    connect(m_imageCapture, &ImageCapture::streamImageReady, m_imageCapture,
            &ImageCapture::OnStreamImageReady);
    connect(m_imageCapture, &ImageCapture::bufferedImageReady, m_imageCapture,
            &ImageCapture::OnBufferedImageReady);
    connect(m_glDisplay, &wGLImageDisplay::InferenceCornerLabelUpdate, this,
            &wImageDisplay::OnInferenceCornerLabelUpdated);
}

void wImageDisplay::createInferenceDialog() {
    m_inferenceDialog = new wInferenceDialog(this);
    m_glDisplay->setInferenceDialog(m_inferenceDialog);
    connect(m_inferenceDialog, &wInferenceDialog::InferenceClassLabelLocationChanged, m_glDisplay,
            &wGLImageDisplay::OnInferenceClassLabelLocationChanged);
    connect(m_inferenceDialog, &wInferenceDialog::InferenceClassificationConfidenceThresholdChanged,
            m_glDisplay, &wGLImageDisplay::OnInferenceClassificationConfidenceThresholdChanged);
    connect(m_inferenceDialog, &wInferenceDialog::InferenceLabelDisplaySettingsChanged, m_glDisplay,
            &wGLImageDisplay::OnInferenceLabelDisplaySettingChanged);
    connect(m_inferenceDialog, &wInferenceDialog::InferenceDialogHidden, this,
            &wImageDisplay::OnInferenceDialogHidden);
}

void wImageDisplay::setCamera(CameraPtr camera) {
    m_camera = std::move(camera);
    m_deviceSerial = m_mapper.GetDeviceSerialNumber(m_camera);
}

void wImageDisplay::destroy(bool destroyWindow, bool destroySubWindows) {
    QDockWidget::destroy(destroyWindow, destroySubWindows);
}

bool wImageDisplay::isMouseOverStatusBar() const {
    return m_statusBar->underMouse();
}

void wImageDisplay::OnStartStream() {
    m_singleGrabPending = false;
    m_toolBar->setStreaming(true);
    m_toolBar->acquisitionMode->Combo()->setEnabled(false);
    emit startContinuousCapture();
    emit enableSave();
    emit enableZoom();
    emit enableCopy();
    emit startProcessAndDisplay();
}

void wImageDisplay::OnStopStream() {
    emit stopProcessAndDisplay();
    emit stopContinuousCapture();
    m_toolBar->setStreaming(false);
    m_toolBar->acquisitionMode->Combo()->setEnabled(true);
}

void wImageDisplay::OnGrabSingleImage() {
    m_singleGrabPending = true;
    emit enableZoom();
    emit enableCopy();
    int mode = kSingleFrameMode;
    AcquisitionModeBox::ReadMode(m_camera, mode);
    const bool switches = mode != kSingleFrameMode;
    guarded("Grabbing a single image", [&] {
        if (switches) {
            m_toolBar->acquisitionMode->SwitchTo(m_camera, kSingleFrameMode);
        }
        emit startSingleCapture();
        if (switches) {
            // The camera may be locked by the capture already; then it follows once that is over.
            m_modeToRestore = mode;
            m_toolBar->acquisitionMode->SwitchTo(m_camera, mode);
        }
    });
    emit enableSave();
}

void wImageDisplay::restoreAcquisitionMode() {
    const int mode = std::exchange(m_modeToRestore, -1);
    int current = mode;
    AcquisitionModeBox::ReadMode(m_camera, current);
    if (mode >= 0 && current != mode) {
        OnAcquisitionModeUpdated(mode);
    }
}

void wImageDisplay::OnAcquisitionModeUpdated(int index) {
    guarded("Setting the acquisition mode", [&] { m_toolBar->acquisitionMode->SwitchTo(m_camera, index); });
}

void wImageDisplay::OnAcquisitionModeUpdated() {
    m_toolBar->acquisitionMode->Resync(m_camera);
}

void wImageDisplay::OnSave() {
    const ImagePtr image = m_glDisplay->getRawImage();
    if (!image.IsValid()) {
        return;
    }
    guarded("Copying the image to save", [&] {
        ImagePtr copy = Norvane::Image::Create();
        copy->DeepCopy(image);
        ImageSaver::AskAndSave(copy, this);
    });
}

void wImageDisplay::OnImageCopy() const {
    const ImagePtr image = m_glDisplay->getRawImage();
    if (!image.IsValid() || !m_glDisplay->getDisplayImage().IsValid()) {
        return;
    }
    guarded("Copying the image", [&] {
        // The pixels on display belong to the graphics system, so the image is converted once more.
        const ImagePtr converted = image->Convert(
            Norvane::PixelFormat_BGR8,
            static_cast<Norvane::ColorProcessingAlgorithm>(m_glDisplay->getColorProcessingAlgorithm()));
        const auto width = static_cast<int>(converted->GetWidth());
        const auto height = static_cast<int>(converted->GetHeight());
        const QImage wrapped(static_cast<const uchar*>(converted->GetData()), width, height, width * 3,
                             QImage::Format_RGB888);
        QApplication::clipboard()->setImage(wrapped.rgbSwapped());
    });
}

void wImageDisplay::OnRecord() {
    m_recordingDialog->show();
    m_recordingDialog->raise();
    m_recordingDialog->OnUpdateStatusText(QStringLiteral("Ready"));
}

void wImageDisplay::OnZoomIn() {
    m_glDisplay->zoom(1);
    m_stretchToFit = false;
}

void wImageDisplay::OnZoomOut() {
    m_glDisplay->zoom(-1);
    m_stretchToFit = false;
}

void wImageDisplay::setStretchToFit(bool on) {
    m_stretchToFit = on;
    fitIfStretched();
}

void wImageDisplay::fitIfStretched() {
    if (m_stretchToFit) {
        m_glDisplay->stretchToFit(m_imageArea->size());
    }
}

void wImageDisplay::resizeEvent(QResizeEvent* event) {
    QDockWidget::resizeEvent(event);
    fitIfStretched();
}

void wImageDisplay::closeEvent(QCloseEvent* event) {
    OnStopStream();
    emit disconnectImDisplay(m_camera);
    if (testAttribute(Qt::WA_DeleteOnClose)) {
        deleteWhenWritten();
    }
    QDockWidget::closeEvent(event);
}

void wImageDisplay::deleteWhenWritten() {
    setAttribute(Qt::WA_DeleteOnClose, false);
    if (std::exchange(m_isLeaving, true)) {
        return;
    }
    // The worker lives on until the destructor: news of its last images may still be on their way.
    connect(m_imageCapture, &ImageCapture::recordingFinished, this, &QObject::deleteLater);
    m_imageCapture->close();
    m_imageCapture->finishRecording();
}

bool wImageDisplay::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_imageArea) {
        return QDockWidget::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::Resize:
        // The area changes without the dock when the status line grows or the dock floats.
        fitIfStretched();
        return false;
    case QEvent::MouseButtonPress:
        m_dragging = true;
        m_lastMousePos = static_cast<QMouseEvent*>(event)->localPos().toPoint();
        m_imageArea->setCursor(Qt::ClosedHandCursor);
        return true;
    case QEvent::MouseButtonRelease:
        m_dragging = false;
        m_lastMousePos = static_cast<QMouseEvent*>(event)->localPos().toPoint();
        m_imageArea->setCursor(Qt::ArrowCursor);
        return true;
    case QEvent::MouseMove: {
        if (!m_dragging) {
            return false;
        }
        m_stretchToFit = false;
        const QPoint position = static_cast<QMouseEvent*>(event)->localPos().toPoint();
        const QPoint moved = position - m_lastMousePos;
        QScrollBar* horizontal = m_scrollArea->horizontalScrollBar();
        QScrollBar* vertical = m_scrollArea->verticalScrollBar();
        horizontal->setValue(horizontal->value() - moved.x());
        vertical->setValue(vertical->value() - moved.y());
        m_lastMousePos = position;
        return true;
    }
    case QEvent::Wheel: {
        const auto* wheel = static_cast<QWheelEvent*>(event);
        const int delta = wheel->angleDelta().y();
        if (delta != 0) {
            m_stretchToFit = false;
            const QPoint position = wheel->position().toPoint();
            m_glDisplay->zoomScroll(m_scrollArea, delta, position.x(), position.y());
        }
        return true;
    }
    default:
        return QDockWidget::eventFilter(watched, event);
    }
}

void wImageDisplay::updateImageInfoGEV(int width, int height, int pixelFormat, int bitsPerPixel,
                                       const QString& frameId, const QString& timeStamp,
                                       const QString& totalPackets, const QString& missedPackets,
                                       const QString& resendRequests, const QString& resendPackets,
                                       const QString& corruptImages, const QString& bufferUnderrun) {
    const ImageInfoLine::Packets packets{totalPackets, missedPackets, resendRequests, resendPackets};
    updateImageInfo(
        {width, height, pixelFormat, bitsPerPixel, frameId, timeStamp, corruptImages, bufferUnderrun},
        &packets);
}

void wImageDisplay::updateImageInfoUSB(int width, int height, int pixelFormat, int bitsPerPixel,
                                       const QString& frameId, const QString& timeStamp,
                                       const QString& corruptImages, const QString& bufferUnderrun) {
    updateImageInfo(
        {width, height, pixelFormat, bitsPerPixel, frameId, timeStamp, corruptImages, bufferUnderrun},
        nullptr);
}

void wImageDisplay::updateImageInfo(const ImageInfoLine::Frame& frame,
                                    const ImageInfoLine::Packets* packets) {
    const std::lock_guard lock(m_mutex);
    const ImageInfoLine::Rates rates{m_imageCapture->getCameraLeaderFrameRate(),
                                     m_imageCapture->getFrameRate(), m_glDisplay->getUpdateRate(),
                                     m_glDisplay->getPaintRate()};
    const auto zoomFactor = static_cast<double>(m_glDisplay->getZoomFactor());
    m_statusBar->showMessage(ImageInfoLine::Format(m_shown, frame, packets, zoomFactor, rates), 0);
}

void wImageDisplay::contextMenuEvent(QContextMenuEvent* event) {
    DisplayContextMenu::State state;
    state.offersColorProcessing = DisplayContextMenu::OffersColorProcessing(m_camera);
    state.colorProcessingAlgorithm = m_glDisplay->getColorProcessingAlgorithm();
    state.stretchToFit = m_stretchToFit;
    state.displayIncomplete = m_imageCapture->getDisplayIncomplete();
    state.shown = m_shown;
    state.inferenceAvailable = m_inferenceAvailable;
    state.showInferenceLabel = m_showInferenceLabel;
    auto* menu = new DisplayContextMenu(state, this);
    connect(menu, &DisplayContextMenu::displayIncompleteToggled, m_imageCapture,
            &ImageCapture::OnDisplayIncomplete, Qt::DirectConnection);
    m_contextMenu = menu;
    m_imageStatusAction = menu->ImageStatusAction();
    // Without a loop of its own: the camera may go away, and this display with it, while the menu is open.
    menu->popup(event->globalPos());
    event->accept();
}

void wImageDisplay::colorProcessingAlgorithmSelect(QAction* action) {
    m_glDisplay->setColorProcessingAlgorithm(action->data().toInt());
}

void wImageDisplay::setDisplayLimit() {
    auto* dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setInputMode(QInputDialog::DoubleInput);
    dialog->setWindowTitle(tr("Maximum Displayed FPS"));
    dialog->setLabelText(tr("Maximum Displayed FPS:"));
    dialog->setDoubleRange(1.0, 120.0);
    dialog->setDoubleDecimals(2);
    dialog->setDoubleValue(static_cast<double>(m_glDisplay->getMaxDisplayFPS()));
    connect(dialog, &QInputDialog::doubleValueSelected, m_glDisplay,
            [this](double limit) { m_glDisplay->setMaxDisplayFPS(static_cast<float>(limit)); });
    dialog->open();
}

void wImageDisplay::toggleStatusPart(bool ImageInfoLine::Selection::*part, bool on) {
    m_shown.*part = on;
    if (!on) {
        m_statusBar->clearMessage();
    }
    m_statusBar->setLineCount(m_shown.imageStatus ? 2 : 1);
}

void wImageDisplay::toggleImageStatusBar(bool on) {
    toggleStatusPart(&ImageInfoLine::Selection::imageStatus, on);
}

void wImageDisplay::toggleCameraLeaderFPSStatusBar(bool on) {
    toggleStatusPart(&ImageInfoLine::Selection::cameraFps, on);
}

void wImageDisplay::toggleReceivedFPSStatusBar(bool on) {
    toggleStatusPart(&ImageInfoLine::Selection::receivedFps, on);
}

void wImageDisplay::toggleProcessedFPSStatusBar(bool on) {
    toggleStatusPart(&ImageInfoLine::Selection::processedFps, on);
}

void wImageDisplay::toggleDisplayedFPSStatusBar(bool on) {
    toggleStatusPart(&ImageInfoLine::Selection::displayedFps, on);
}

void wImageDisplay::toggleBoundingBox(bool on) {
    m_showInferenceLabel = on;
    m_glDisplay->changeInferenceEnabledStatus(on);
    m_inferenceLabel->setVisible(on);
}

void wImageDisplay::toggleInferenceDialog(bool) {
    if (!m_inferenceDialog) {
        createInferenceDialog();
    }
    m_inferenceDialogShown = true;
    m_inferenceDialog->show();
    m_inferenceDialog->setCamProperty(m_camera);
}

void wImageDisplay::OnInferenceDialogHidden() {
    m_inferenceDialogShown = false;
    m_inferenceDialog->hide();
}

void wImageDisplay::OnInferenceCornerLabelUpdated(const QFont& font, const QColor& color,
                                                  const QString& text) {
    // Comes with every image painted, while it rarely changes.
    const QString html = QStringLiteral("<font color= %1>%2</font>").arg(color.name(), text);
    if (m_inferenceLabel->font() != font) {
        m_inferenceLabel->setFont(font);
    }
    if (m_inferenceLabel->text() != html) {
        m_inferenceLabel->setText(html);
    }
}

void wImageDisplay::OnEnableZoomButtons() {
    m_toolBar->zoomInButton->setEnabled(true);
    m_toolBar->zoomOutButton->setEnabled(true);
}

void wImageDisplay::OnDisableZoomButtons() {
    m_toolBar->zoomInButton->setEnabled(false);
    m_toolBar->zoomOutButton->setEnabled(false);
}

void wImageDisplay::OnEnableSave() {
    m_toolBar->saveButton->setEnabled(true);
}

void wImageDisplay::OnDisableSave() {
    m_toolBar->saveButton->setEnabled(false);
}

void wImageDisplay::OnEnableCopy() {
    m_toolBar->copyButton->setEnabled(true);
}
