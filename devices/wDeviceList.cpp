#include "wDeviceList.h"

#include "AutoForceIp.h"
#include "DeviceRow.h"
#include "DeviceToolBar.h"
#include "Guarded.h"
#include "ModelNotice.h"
#include "NodeReading.h"
#include "QRoundProgressBar.h"
#include "SettingsFile.h"
#include "wCameraInfoDialog.h"
#include "wFirmwareDialog.h"
#include "wPropertyDialog.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>
#include <QShowEvent>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QColor kHeaderBackground(230, 230, 230);

template <class Handle>
QTreeWidgetItem* rowOf(const std::map<const QTreeWidgetItem*, Handle>& rows, const Handle& wanted) {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.second == wanted; });
    // The maps' keys are const because most uses only look rows up; the tree's own rows are not.
    return found == rows.end() ? nullptr : const_cast<QTreeWidgetItem*>(found->first);
}

} // namespace

wDeviceList::wDeviceList(Norvane::InterfaceList interfaceList, Norvane::SystemPtr system, QWidget* parent)
    : QDockWidget(tr("Devices"), parent), m_settings(SettingsFilePath(), QSettings::IniFormat) {
    setObjectName(QStringLiteral("wDeviceList"));
    LoadFromPersistentSettings();

    m_pages = new QStackedWidget(this);
    auto* page = new QWidget(m_pages);
    m_listLayout = new QVBoxLayout(page);
    m_listLayout->setSpacing(0);
    m_listLayout->setContentsMargins(0, 0, 0, 0);
    m_pages->addWidget(page);
    setupProgressPage();
    setWidget(m_pages);

    m_system = std::move(system);
    m_interfaceList = std::move(interfaceList);
    m_autoForceIp = new QAction(tr("Auto Force IP"), this);
    m_autoForceIp->setStatusTip(tr("Auto Force IP"));
    setupToolBar();
    setupListView();

    connect(m_tree, SIGNAL(itemClicked(QTreeWidgetItem*, int)), this,
            SLOT(OnItemClicked(QTreeWidgetItem*, int)));
    connect(m_tree, SIGNAL(itemDoubleClicked(QTreeWidgetItem*, int)), this,
            SLOT(OnItemDoubleClicked(QTreeWidgetItem*, int)));
    connect(m_tree, SIGNAL(customContextMenuRequested(const QPoint&)), this,
            SLOT(OnCustomContextMenu(const QPoint&)));
    connect(m_autoForceIp, SIGNAL(triggered()), this, SLOT(OnAutoForceIP()));
}

wDeviceList::~wDeviceList() = default;

void wDeviceList::setInterfaceList(Norvane::InterfaceList interfaceList) {
    m_interfaceList = std::move(interfaceList);
}

void wDeviceList::setSystemPtr(Norvane::SystemPtr system) {
    m_system = std::move(system);
}

void wDeviceList::setupToolBar() {
    m_toolBar = new DeviceToolBar(this);
    m_listLayout->addWidget(m_toolBar);
}

void wDeviceList::setupListView() {
    m_tree = new QTreeWidget;
    m_tree->setObjectName(QStringLiteral("treeWidget"));
    m_tree->setAccessibleName(tr("Devices"));
    m_tree->setColumnCount(DeviceRow::ColumnCount);
    m_tree->setHeaderLabels({QString(), tr("Serial"), tr("IP Address")});
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->installEventFilter(this);
    OnRefreshDeviceList();
    m_listLayout->addWidget(m_tree);
    m_tree->expandAll();
}

void wDeviceList::setupProgressPage() {
    m_progressPage = new QWidget(m_pages);
    m_progressPage->setObjectName(QStringLiteral("wProgressBar"));
    auto* indicator = new QRoundProgressBar(m_progressPage);
    indicator->setValue(0);
    auto* layout = new QVBoxLayout(m_progressPage);
    layout->addWidget(indicator);
    m_pages->addWidget(m_progressPage);
}

void wDeviceList::ToggleProgressBarView(bool show) {
    m_pages->setCurrentIndex(show ? m_pages->indexOf(m_progressPage) : 0);
}

void wDeviceList::enableToolbarButtons() {
    m_toolBar->EnableAll();
}

void wDeviceList::disableDeviceButtons(bool disable) {
    m_toolBar->DisableDeviceButtons(disable);
}

void wDeviceList::OnRefreshDeviceList() {
    OnShowAllInterfaces(m_toolBar->AdaptersButton()->isChecked());
}

void wDeviceList::OnShowAllInterfaces(bool checked) {
    const int scrollPosition = m_tree->verticalScrollBar()->value();
    m_rowIndices.clear();
    m_interfaces.clear();
    m_cameras.clear();
    m_contextRow = nullptr;
    m_tree->clear();
    const bool sorting = m_tree->isSortingEnabled();
    m_tree->setSortingEnabled(false);

    guarded("listing the interfaces", [&] { m_interfaceList = m_system->GetInterfaces(true); });
    bool selectedInterfaceFound = false;
    for (unsigned int i = 0; i < m_interfaceList.GetSize(); ++i) {
        guarded("listing an interface", [&] {
            const Norvane::InterfacePtr interface = m_interfaceList.GetByIndex(i);
            selectedInterfaceFound |= interface == m_selectedInterface;
            if (!interface->IsUsable()) {
                return;
            }
            const Norvane::CameraList cameras = interface->GetCameras(true);
            if (checked && cameras.GetSize() == 0) {
                return;
            }
            addInterface(interface, cameras);
        });
    }
    if (!selectedInterfaceFound) {
        clearSelection();
        emit NothingSelected();
    }

    m_tree->setSortingEnabled(sorting);
    m_tree->expandAll();
    setColumnWidths();
    markSelectedRow();
    m_tree->verticalScrollBar()->setValue(scrollPosition);
}

void wDeviceList::addInterface(const Norvane::InterfacePtr& interface, const Norvane::CameraList& cameras) {
    auto* row = new QTreeWidgetItem(m_tree);
    m_rowIndices[row] = m_tree->indexOfTopLevelItem(row);
    m_interfaces[row] = interface;
    DeviceRow::FillInterface(*row, interface);
    if (cameras.GetSize() == 0) {
        DeviceRow::FillPlaceholder(*new QTreeWidgetItem(row));
        return;
    }
    for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
        guarded("listing a camera", [&] { addCamera(*row, cameras.GetByIndex(i)); });
    }
}

void wDeviceList::addCamera(QTreeWidgetItem& interfaceRow, const Norvane::CameraPtr& camera) {
    const int serial = m_mapper.GetDeviceSerialNumber(camera);
    auto* row = new QTreeWidgetItem(&interfaceRow);
    m_rowIndices[row] = interfaceRow.indexOfChild(row);
    m_cameras[row] = camera;
    DeviceRow::FillCamera(*row, camera, serial);
    checkForCameraInfoDialog(camera);
}

void wDeviceList::setColumnWidths() {
    m_tree->setColumnWidth(DeviceRow::NameColumn, width() / 2);
    m_tree->setColumnWidth(DeviceRow::SerialColumn, width() / 4);
    m_tree->setColumnWidth(DeviceRow::AddressColumn, width() / 4);
    for (int column = 0; column < DeviceRow::ColumnCount; ++column) {
        m_tree->headerItem()->setBackground(column, kHeaderBackground);
    }
}

void wDeviceList::markSelectedRow() {
    QTreeWidgetItem* row = m_selectedCamera.IsValid()      ? findRow(m_selectedCamera)
                           : m_selectedInterface.IsValid() ? findRow(m_selectedInterface)
                                                           : nullptr;
    if (row) {
        m_tree->setCurrentItem(row);
    }
}

QTreeWidgetItem* wDeviceList::findRow(const Norvane::InterfacePtr& interface) const {
    return rowOf(m_interfaces, interface);
}

QTreeWidgetItem* wDeviceList::findRow(const Norvane::CameraPtr& camera) const {
    return rowOf(m_cameras, camera);
}

void wDeviceList::OnItemClicked(QTreeWidgetItem* item, int) {
    enableToolbarButtons();
    createPropertyDialog();

    if (!item->parent()) {
        const Norvane::InterfacePtr interface = m_interfaces.at(item);
        m_selectedInterface = interface;
        clearSelectedCamera();
        disableDeviceButtons(true);
        emit InterfaceUpdated(interface);
        return;
    }
    if (DeviceRow::IsPlaceholder(*item)) {
        clearSelection();
        emit NothingSelected();
        return;
    }
    // Receivers may refresh the list, after which the row is gone: everything is read before the signals.
    const Norvane::CameraPtr camera = m_cameras.at(item);
    const Norvane::InterfacePtr interface = m_interfaces.at(item->parent());
    m_selectedInterface = interface;
    m_selectedCamera = camera;
    m_selectedSerial = m_mapper.GetDeviceSerialNumber(camera);
    emit CameraUpdated(camera);
    emit notifyCreateImageDisplay(interface, camera);
}

void wDeviceList::OnItemDoubleClicked(QTreeWidgetItem* item, int) {
    if (item->parent() && !DeviceRow::IsPlaceholder(*item)) {
        emit notifyDoubleClickToStartStreaming(item->text(DeviceRow::SerialColumn).toInt(nullptr, 10));
    }
}

bool wDeviceList::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_tree && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        QTreeWidgetItem* row = m_tree->currentItem();
        if (row && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
            OnItemClicked(row, DeviceRow::NameColumn);
            return true;
        }
    }
    if (watched == m_tree && event->type() == QEvent::ContextMenu) {
        QTreeWidgetItem* row = m_tree->currentItem();
        if (row && static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
            // Qt would ask for whatever row lies in the middle of the list.
            OnCustomContextMenu(m_tree->visualItemRect(row).center());
            return true;
        }
    }
    return QDockWidget::eventFilter(watched, event);
}

void wDeviceList::SelectInterface(const Norvane::InterfacePtr& interface) {
    if (QTreeWidgetItem* row = findRow(interface)) {
        m_tree->setCurrentItem(row);
        OnItemClicked(row, DeviceRow::NameColumn);
    }
}

void wDeviceList::SelectDevice(const Norvane::CameraPtr& camera) {
    if (QTreeWidgetItem* row = findRow(camera)) {
        m_tree->setCurrentItem(row);
        OnItemClicked(row, DeviceRow::NameColumn);
    }
}

void wDeviceList::clearSelectedCamera() {
    m_selectedCamera = nullptr;
    m_selectedSerial = -1;
}

void wDeviceList::clearSelection() {
    clearSelectedCamera();
    m_selectedInterface = nullptr;
    disableDeviceButtons(true);
    m_toolBar->DisableSelectionButtons();
}

void wDeviceList::OnDeviceRemoval(int) {
    const bool wasSelected = m_selectedCamera.IsValid();
    OnRefreshDeviceList();
    if (wasSelected && m_selectedCamera.IsValid() && !findRow(m_selectedCamera)) {
        clearSelection();
        emit NothingSelected();
    }
}

void wDeviceList::OnInterfaceRemoval(const QString& interfaceId) {
    QString selectedId;
    if (m_selectedInterface.IsValid()) {
        guarded("reading the selected interface's ID",
                [&] { selectedId = NodeReading::Text(m_selectedInterface->GetTLNodeMap(), "InterfaceID"); });
    }
    OnRefreshDeviceList();
    if (!selectedId.isEmpty() && interfaceId == selectedId) {
        clearSelection();
        emit NothingSelected();
    }
}

// New devices and interfaces appear with the next refresh, so that the rows under the pointer do not move by
// themselves.
void wDeviceList::OnDeviceArrival(int) {}
void wDeviceList::OnInterfaceArrival(const QString&) {}

void wDeviceList::OnStartStream() {}
void wDeviceList::OnStopStream() {}
void wDeviceList::OnConfigDeviceIP() {}
void wDeviceList::OnSwitchDeviceDriver() {}

void wDeviceList::OnDisconnectDevice() {
    m_toolBar->DisconnectButton()->setEnabled(false);
    emit notifyDisconnectDevice(m_selectedCamera);
}

void wDeviceList::createPropertyDialog() {
    if (!m_propertyDialog) {
        m_propertyDialog = new wPropertyDialog(this);
    }
}

void wDeviceList::setPropertyDialog() {
    createPropertyDialog();
    if (m_selectedCamera.IsValid()) {
        m_propertyDialog->setCamProperty(m_selectedCamera);
    } else if (m_selectedInterface.IsValid()) {
        m_propertyDialog->setIfaceProperty(m_selectedInterface);
    }
}

void wDeviceList::OnCopyToClipboard() {
    setPropertyDialog();
    m_propertyDialog->CopyToClipboard();
}

void wDeviceList::OnShowProperties() {
    setPropertyDialog();
    m_propertyDialog->show();
}

void wDeviceList::OnUpdateDeviceFW() {
    if (!m_selectedCamera.IsValid()) {
        return;
    }
    guarded("opening the firmware dialog", [&] {
        for (unsigned int i = 0; i < m_interfaceList.GetSize(); ++i) {
            const Norvane::CameraList cameras = m_interfaceList.GetByIndex(i)->GetCameras(true);
            for (unsigned int j = 0; j < cameras.GetSize(); ++j) {
                const Norvane::CameraPtr camera = cameras.GetByIndex(j);
                if (m_mapper.GetDeviceSerialNumber(camera) != m_selectedSerial) {
                    continue;
                }
                if (!m_firmwareDialog) {
                    m_firmwareDialog = new wFirmwareDialog(this);
                }
                m_firmwareDialog->SetCamera(camera);
                // Its display and its acquisition must not run while it is flashed.
                emit notifyDisconnectDevice(camera);
                m_firmwareDialog->show();
                return;
            }
        }
    });
}

void wDeviceList::OnCustomContextMenu(const QPoint& position) {
    m_contextRow = m_tree->itemAt(position);
    const auto interfaceRow = m_interfaces.find(m_contextRow);
    const auto cameraRow = m_cameras.find(m_contextRow);
    const bool hasAddresses = (interfaceRow != m_interfaces.end() && HasIpAddresses(interfaceRow->second)) ||
                              (cameraRow != m_cameras.end() && HasIpAddresses(cameraRow->second));
    if (!hasAddresses) {
        m_contextRow = nullptr;
        return;
    }
    const QPointer<wDeviceList> self(this);
    QMenu menu;
    menu.addAction(m_autoForceIp);
    menu.exec(m_tree->viewport()->mapToGlobal(position));
    // The menu runs an event loop, in which the window may have been closed and destroyed.
    if (self) {
        m_contextRow = nullptr;
    }
}

void wDeviceList::OnAutoForceIP() {
    const auto interfaceRow = m_interfaces.find(m_contextRow);
    const auto cameraRow = m_cameras.find(m_contextRow);
    if (interfaceRow != m_interfaces.end() && interfaceRow->second.IsValid()) {
        AutoForceIp(interfaceRow->second);
    } else if (cameraRow != m_cameras.end()) {
        AutoForceIp(cameraRow->second);
    }
    m_contextRow = nullptr;
}

void wDeviceList::LoadFromPersistentSettings() {
    for (const QString& key : {kEmberlynNoticeKey, kTarselNoticeKey}) {
        m_doNotShow[key] = m_settings.value(ModelNoticeSettingsKey(key)).toBool();
    }
}

void wDeviceList::OnUpdateDoNotShow(const QString& key, bool doNotShow) {
    m_doNotShow[key] = doNotShow;
    m_settings.setValue(ModelNoticeSettingsKey(key), doNotShow);
}

void wDeviceList::checkForCameraInfoDialog(const Norvane::CameraPtr& camera) {
    const ModelNotice* notice =
        FindModelNotice(NodeReading::Text(camera->GetTLDeviceNodeMap(), "DeviceModelName"));
    if (!notice || m_doNotShow.value(notice->key)) {
        return;
    }
    const auto sameKey = [&](const wCameraInfoDialog* dialog) { return dialog->GetKey() == notice->key; };
    if (std::any_of(m_notices.cbegin(), m_notices.cend(), sameKey)) {
        return;
    }
    auto* dialog = new wCameraInfoDialog(notice->key, notice->title, notice->text, this);
    connect(dialog, SIGNAL(returnDoNotShow(QString, bool)), this, SLOT(OnUpdateDoNotShow(QString, bool)));
    m_notices.append(dialog);
    // The list is filled before its window is shown; a notice then would stand alone behind the splash.
    if (isVisible()) {
        showNotice(*dialog);
    } else {
        m_pendingNotices.append(dialog);
    }
}

void wDeviceList::showNotice(wCameraInfoDialog& notice) {
    notice.show();
    notice.setFocus();
}

void wDeviceList::showEvent(QShowEvent* event) {
    QDockWidget::showEvent(event);
    const auto pending = std::exchange(m_pendingNotices, {});
    for (const auto& notice : pending) {
        QTimer::singleShot(0, notice, SLOT(show()));
    }
}
