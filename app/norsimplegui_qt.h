#pragma once

#include "Mapper.h"

#include "norvane/Camera.h"
#include "norvane/Interface.h"
#include "norvane/System.h"

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QVector>

#include <memory>
#include <mutex>

class InterfaceEventHandlerImpl;
class SystemEventHandlerImpl;
class Ui_mainWindow;
class wDeviceList;
class wFeaturesTabController;
class wImageDisplay;
class wSurveyDialog;

/// The application's only top-level window. It owns the camera system's handle and event handlers, the device
/// list, the feature tabs and one image display per opened camera, and joins them by signals. A camera is
/// shown at most once; its number finds its display. Made and used on the user-interface thread; library
/// events arrive there queued. Without a camera library the window is built as far as possible and stays
/// usable.
class NorSimpleGUI_QT : public QMainWindow {
    Q_OBJECT

public:
    explicit NorSimpleGUI_QT(QWidget* parent);
    /// Ends event delivery, then releases displays, lists and cameras, and the system last.
    ~NorSimpleGUI_QT() override;

    /// Joins the event handlers and the device list to this window; once, after construction.
    void Initialize();
    /// Disconnects every camera and closes all windows.
    void closeEvent(QCloseEvent* event) override;
    /// The context menu of the dock areas, which shows and hides the two permanent docks.
    QMenu* createPopupMenu() override;
    /// Empties the settings file; takes effect at the next start.
    void ResetApplicationSettings() const;

public slots:
    void OnInterfaceArrivalRemoval(const QString& interfaceId);
    void OnDeviceArrival(int serial);
    /// Locks the whole window while a file is transferred.
    void OnFileOperationStatusChanged(bool busy);
    void OnDeviceDisconnect(Norvane::CameraPtr camera);
    void OnAddImageDisplay(Norvane::InterfacePtr interface, Norvane::CameraPtr camera);
    void OnDeviceRemoval(int serial);
    /// Takes a camera's display out of use; it is deleted with the next removal of a device.
    void OnRemoveImageDisplay(int serial);
    void OnDoubleClickStream(int serial);
    void OnAcquisitionModeUpdated(const Norvane::CameraPtr& camera);

    void Survey() const;
    void Support() const;
    void About();
    void License();
    void DocCPP() const;
    void DocC() const;
    void DocProgrammerGuide() const;
    void DocFeature() const;
    void DocTavorin() const;
    void DocCameraGettingStarted() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// The first time, lists the cameras again: those that answer late are not in the list made at start-up.
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// Asked for by key, the menu opens whatever has the focus; Qt looks where the pointer would be.
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void InitNorInstance();
    void CleanupNorInstance();
    void UpdateInterfaceList();
    void SetupMenuBar();
    void SetupDocumentationMenu();
    void SetupDeviceList();
    void SetupFeaturesWindow();
    void SetupMenuKey();
    void LoadStyleSheet();
    void ConnectDocks();
    void CountStart();
    void SwitchToNextDevice(int index);
    void WidenDisplay(wImageDisplay* display);
    /// Displays that stand in the right dock area, in opening order.
    QList<QDockWidget*> DockedDisplays() const;
    /// Gives stacked displays equal heights; one that would leave too little for each becomes a tab.
    void ShareHeight(wImageDisplay* newest);
    void OfferSurvey();
    int FindDisplay(int serial) const; ///< index of the open display, -1 when there is none
    static QString GetDocsInstallDir();
    static void OpenDoc(const QString& path);

    std::unique_ptr<Ui_mainWindow> m_ui;
    wSurveyDialog* m_surveyDialog = nullptr;
    bool m_surveyOffered = false; ///< in this run
    bool m_shownBefore = false;
    QPointer<wDeviceList> m_deviceList;
    // Held across OnDeviceDisconnect, which removes a display and may select the next one.
    mutable std::recursive_mutex m_displayMutex;
    QVector<QPointer<wImageDisplay>> m_imageDisplays; ///< open, in opening order
    QVector<QPointer<wImageDisplay>> m_displaysToDelete;
    int m_leftWidth =
        0; ///< what a person gave the left docks, kept when the window changes; 0 before a display opens
    QPointer<wFeaturesTabController> m_featureTabs;
    Norvane::SystemPtr m_system;
    Norvane::InterfaceList m_interfaceList;
    std::unique_ptr<SystemEventHandlerImpl> m_systemEventHandler;
    std::unique_ptr<InterfaceEventHandlerImpl> m_interfaceEventHandler;
    Mapper m_mapper;
    QString m_docC;
    QString m_docCpp;
    QString m_docProgrammerGuide;
    QString m_docFeature;
    QString m_docTavorin;
    QString m_docCameraGettingStarted;
};
