#pragma once

#include "ImageInfoLine.h"
#include "Mapper.h"
#include "norvane/Camera.h"
#include "norvane/Interface.h"

#include <QAction>
#include <QColor>
#include <QDockWidget>
#include <QFont>
#include <QMenu>
#include <QPoint>
#include <QPointer>

#include <mutex>

class DisplayToolBar;
class ElidingStatusBar;
class ImageCapture;
class QGridLayout;
class QLabel;
class QMainWindow;
class QScrollArea;
class QThread;
class wGLImageDisplay;
class wInferenceDialog;
class wRecordingDialog;

/// The viewer of one camera, a dock of the main window: tool bar, image, status line and context menu, with
/// the acquisition worker on a thread of its own and the recording and inference dialogs beside it. Pixels go
/// from the worker to the GL widget; this class only steers.
///
/// Created and owned by the main window; user-interface thread. Destruction ends acquisition, whatever the
/// worker waits for, and returns when its thread is done.
class wImageDisplay : public QDockWidget {
    Q_OBJECT

public:
    /// Opens the camera where it is not open yet. @throws Norvane::Exception when that fails.
    wImageDisplay(Norvane::InterfacePtr interface, Norvane::CameraPtr camera, QWidget* parent = nullptr);
    ~wImageDisplay() override;

    QWidget* view() const { return m_imageArea; }
    /// The menu of the latest right click; null when there is none.
    QMenu* getContextMenu() const { return m_contextMenu; }
    QAction* getStatusBarAction() const { return m_imageStatusAction; }
    /// The number that stands for the camera, -1 when it has none.
    void getDeviceSerial(int& serial) const { serial = m_deviceSerial; }
    Norvane::CameraPtr getCamera() const { return m_camera; }
    Norvane::InterfacePtr getInterface() const { return m_interface; }
    bool isMouseOverStatusBar() const;
    void setCamera(Norvane::CameraPtr camera);
    void destroy(bool destroyWindow = true, bool destroySubWindows = true);

public slots:
    void OnStartStream();
    void OnStopStream();
    void OnGrabSingleImage();
    void OnSave();
    void OnZoomIn();
    void OnZoomOut();
    void OnImageCopy() const;
    void OnRecord();
    void OnAcquisitionModeUpdated(int index);
    void OnAcquisitionModeUpdated();
    void updateImageInfoGEV(int width, int height, int pixelFormat, int bitsPerPixel, const QString& frameId,
                            const QString& timeStamp, const QString& totalPackets,
                            const QString& missedPackets, const QString& resendRequests,
                            const QString& resendPackets, const QString& corruptImages,
                            const QString& bufferUnderrun);
    void updateImageInfoUSB(int width, int height, int pixelFormat, int bitsPerPixel, const QString& frameId,
                            const QString& timeStamp, const QString& corruptImages,
                            const QString& bufferUnderrun);
    void toggleImageStatusBar(bool on);
    void toggleCameraLeaderFPSStatusBar(bool on);
    void toggleReceivedFPSStatusBar(bool on);
    void toggleProcessedFPSStatusBar(bool on);
    void toggleDisplayedFPSStatusBar(bool on);
    void toggleBoundingBox(bool on);
    void toggleInferenceDialog(bool on);
    void OnInferenceDialogHidden();
    void OnInferenceCornerLabelUpdated(const QFont& font, const QColor& color, const QString& text);
    void OnEnableZoomButtons();
    void OnDisableZoomButtons();
    void OnEnableSave();
    void OnDisableSave();
    void OnEnableCopy();
    void setStretchToFit(bool on);
    void setDisplayLimit();
    void colorProcessingAlgorithmSelect(QAction* action);

public:
    /// Deletes this, as deleteLater(), once its recording lies on the disk; until then the recording dialog
    /// shows how far it is and can abort it. The destructor would hold the window up for as long.
    void deleteWhenWritten();

signals:
    void startContinuousCapture();
    void stopContinuousCapture();
    void startSingleCapture();
    void streamStateChanged(bool streaming);
    void connectCameraToGL(Norvane::CameraPtr camera);
    void startProcessAndDisplay();
    void stopProcessAndDisplay();
    void enableZoom();
    void disableZoom();
    void enableSave();
    void disableSave();
    void enableCopy();
    void disconnectImDisplay(Norvane::CameraPtr camera);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openCamera();
    void setupTitle();
    void setupWidget();
    void setupToolBar();
    void setupImageArea();
    void setupStatusBar();
    void setupCapture();
    void connectCapture();
    void createInferenceDialog();
    void claimShortcuts(QWidget* focused);
    void tearDown();

    void fitIfStretched();
    void restoreAcquisitionMode();
    void updateImageInfo(const ImageInfoLine::Frame& frame, const ImageInfoLine::Packets* packets);
    void toggleStatusPart(bool ImageInfoLine::Selection::*part, bool on);

    Norvane::InterfacePtr m_interface;
    Norvane::CameraPtr m_camera;
    int m_deviceSerial = -1;
    bool m_singleGrabPending = false;
    int m_modeToRestore = -1; // after a single grab; -1 when there is none
    bool m_isLeaving = false; // its camera or its window is gone, its recording not yet
    QPointer<QThread> m_captureThread;
    QPointer<ImageCapture> m_imageCapture;
    std::mutex m_mutex;
    Mapper m_mapper;

    QPointer<wGLImageDisplay> m_glDisplay;
    QWidget* m_container = nullptr;
    QGridLayout* m_containerLayout = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    QGridLayout* m_imageAreaLayout = nullptr;
    QWidget* m_imageArea = nullptr;
    QLabel* m_inferenceLabel = nullptr;
    ElidingStatusBar* m_statusBar = nullptr;
    QMainWindow* m_innerMainWindow = nullptr;
    DisplayToolBar* m_toolBar = nullptr;
    QPointer<wRecordingDialog> m_recordingDialog;
    QPointer<wInferenceDialog> m_inferenceDialog;
    QPointer<QMenu> m_contextMenu;
    QPointer<QAction> m_imageStatusAction;

    ImageInfoLine::Selection m_shown;
    bool m_stretchToFit = false;
    bool m_showInferenceLabel = false;
    bool m_inferenceDialogShown = false;
    bool m_inferenceAvailable = false;
    bool m_dragging = false;
    QPoint m_lastMousePos;
};
