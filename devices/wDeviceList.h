#pragma once

#include "Mapper.h"

#include "norvane/Camera.h"
#include "norvane/Interface.h"
#include "norvane/System.h"

#include <QDockWidget>
#include <QMap>
#include <QPointer>
#include <QSettings>
#include <QVector>

#include <map>

class DeviceToolBar;
class QAction;
class QRoundProgressBar;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;
class wCameraInfoDialog;
class wFirmwareDialog;
class wPropertyDialog;

/// The dock that shows the host's camera interfaces and the cameras on them, with a tool bar of actions.
/// Selecting a row is told by signals; what becomes of it is the main window's affair. Made and owned by the
/// main window; user-interface thread only. Rows and the maps behind them live until the next refresh, which
/// an event may bring at any time: nothing keeps a row across a signal.
class wDeviceList : public QDockWidget {
    Q_OBJECT

public:
    wDeviceList(Norvane::InterfaceList interfaceList, Norvane::SystemPtr system, QWidget* parent);
    ~wDeviceList() override;

    void setInterfaceList(Norvane::InterfaceList interfaceList);
    void setSystemPtr(Norvane::SystemPtr system);
    /// Makes the row of this interface or camera current and treats it as clicked; nothing when it has no
    /// row.
    void SelectInterface(const Norvane::InterfacePtr& interface);
    void SelectDevice(const Norvane::CameraPtr& camera);
    void enableToolbarButtons();
    void disableDeviceButtons(bool disable);

public slots:
    void OnStartStream();
    void OnStopStream();
    void OnConfigDeviceIP();
    void OnSwitchDeviceDriver();
    void OnDisconnectDevice();
    void OnCustomContextMenu(const QPoint& position);
    void OnItemDoubleClicked(QTreeWidgetItem* item, int column);
    void OnItemClicked(QTreeWidgetItem* item, int column);
    void OnUpdateDoNotShow(const QString& key, bool doNotShow);
    void OnAutoForceIP();
    void OnUpdateDeviceFW();
    void OnCopyToClipboard();
    void OnShowProperties();
    /// Fills the tree anew. @param checked  hides interfaces without cameras.
    void OnShowAllInterfaces(bool checked);
    void OnRefreshDeviceList();
    void OnDeviceRemoval(int serial);
    void OnDeviceArrival(int serial);
    void OnInterfaceRemoval(const QString& interfaceId);
    void OnInterfaceArrival(const QString& interfaceId);
    /// Swaps the list for the page with the progress indicator, or back.
    void ToggleProgressBarView(bool show);

signals:
    void InterfaceSelected();
    void CameraSelected();
    void notifyCreateImageDisplay(Norvane::InterfacePtr interface, Norvane::CameraPtr camera);
    void notifyDisconnectDevice(Norvane::CameraPtr camera);
    void CameraUpdated(Norvane::CameraPtr camera);
    void InterfaceUpdated(Norvane::InterfacePtr interface);
    void NothingSelected();
    void notifyDoubleClickToStartStreaming(int serial);

protected:
    /// Shows the model notices that came while the list could not be seen.
    void showEvent(QShowEvent* event) override;
    /// Return on a row does what a click does.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setupToolBar();
    void setupListView();
    void setupProgressPage();
    void addInterface(const Norvane::InterfacePtr& interface, const Norvane::CameraList& cameras);
    void addCamera(QTreeWidgetItem& interfaceRow, const Norvane::CameraPtr& camera);
    void setColumnWidths();
    void markSelectedRow();
    QTreeWidgetItem* findRow(const Norvane::InterfacePtr& interface) const;
    QTreeWidgetItem* findRow(const Norvane::CameraPtr& camera) const;
    void clearSelectedCamera();
    void clearSelection();
    void checkForCameraInfoDialog(const Norvane::CameraPtr& camera);
    void showNotice(wCameraInfoDialog& notice);
    void createPropertyDialog();
    void setPropertyDialog();
    void LoadFromPersistentSettings();

    Norvane::SystemPtr m_system;
    Norvane::InterfaceList m_interfaceList;
    Norvane::InterfacePtr m_selectedInterface;
    Norvane::CameraPtr m_selectedCamera;
    int m_selectedSerial = -1;
    std::map<const QTreeWidgetItem*, int> m_rowIndices;
    std::map<const QTreeWidgetItem*, Norvane::InterfacePtr> m_interfaces;
    std::map<const QTreeWidgetItem*, Norvane::CameraPtr> m_cameras;
    Mapper m_mapper;
    QSettings m_settings;
    QMap<QString, bool> m_doNotShow;       ///< by notice key
    QVector<wCameraInfoDialog*> m_notices; ///< every notice of this run
    QVector<QPointer<wCameraInfoDialog>> m_pendingNotices;

    QStackedWidget* m_pages = nullptr;
    QWidget* m_progressPage = nullptr;
    QVBoxLayout* m_listLayout = nullptr;
    DeviceToolBar* m_toolBar = nullptr;
    QTreeWidget* m_tree = nullptr;
    QAction* m_autoForceIp = nullptr;
    const QTreeWidgetItem* m_contextRow = nullptr; ///< while a context menu is open
    wPropertyDialog* m_propertyDialog = nullptr;
    wFirmwareDialog* m_firmwareDialog = nullptr;
};
