#include "norsimplegui_qt.h"

#include "EventHandlerImpl.h"
#include "Guarded.h"
#include "LightPalette.h"
#include "SettingsFile.h"
#include "ui_norsimplegui_qt.h"
#include "wDeviceList.h"
#include "wFeaturesTabController.h"
#include "wFileAccess.h"
#include "wImageDisplay.h"
#include "wSurveyDialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QFile>
#include <QFontDatabase>
#include <QIcon>
#include <QMenu>
#include <QResizeEvent>
#include <QScreen>
#include <QSettings>
#include <QShortcut>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// Starts since the reset after which the survey is offered.
constexpr unsigned int kStartsWithoutSurvey = 6;
/// Pixels of height under which stacked displays would show little but their tool bars.
constexpr int kLeastDisplayHeight = 240;

/// A laptop's screen may be lower than the form; what would lie below its edge could not be reached.
void fitIntoScreen(QWidget* window) {
    const QSize frame(0, window->style()->pixelMetric(QStyle::PM_TitleBarHeight));
    const QSize room = window->screen()->availableSize() - frame;
    window->resize(window->size().boundedTo(room));
}

QString mainWindowText(const char* source) {
    return QCoreApplication::translate("MainWindow", source);
}

} // namespace

NorSimpleGUI_QT::NorSimpleGUI_QT(QWidget* parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui_mainWindow>()) {
    QFontDatabase::addApplicationFont(QCoreApplication::applicationDirPath() +
                                      QStringLiteral("/FreeSerif.ttf"));
    setDockNestingEnabled(true);
    m_ui->setupUi(this);
    fitIntoScreen(this);
    setWindowIcon(QIcon(QStringLiteral(":images/NorvaneIcon.ico")));
    LoadStyleSheet();

    guarded("building the main window", [&] {
        m_system = Norvane::System::GetInstance();
        const Norvane::LibraryVersion version = m_system->GetLibraryVersion();
        setWindowTitle(QString::asprintf("Tavorin %d.%d.%d.%d", static_cast<int>(version.major),
                                         static_cast<int>(version.minor), static_cast<int>(version.type),
                                         static_cast<int>(version.build)));
        InitNorInstance();
        SetupMenuBar();
        SetupDeviceList();
        SetupFeaturesWindow();

        m_deviceList->resize(316, 0);
        m_deviceList->setInterfaceList(m_interfaceList);
        m_deviceList->setSystemPtr(m_system);
        m_deviceList->OnRefreshDeviceList();
        m_imageDisplays.resize(0);
        resizeDocks({m_deviceList, m_featureTabs}, {341, 341}, Qt::Horizontal);
        m_surveyDialog = new wSurveyDialog(this);
        m_surveyOffered = false;
        CountStart();
        ConnectDocks();
        SetupMenuKey();
    });
}

NorSimpleGUI_QT::~NorSimpleGUI_QT() {
    CleanupNorInstance();
    // Qt would delete these children only after the members, and with them the system, are gone; the cameras
    // that they hold must go first.
    for (wImageDisplay* display : findChildren<wImageDisplay*>()) { // also those that still write
        delete display;
    }
    delete m_featureTabs.data();
    if (m_deviceList) {
        m_deviceList->removeEventFilter(this);
        delete m_deviceList.data();
    }
}

void NorSimpleGUI_QT::InitNorInstance() {
    guarded("starting camera events", [&] {
        m_interfaceList = m_system->GetInterfaces(true);
        m_systemEventHandler = std::make_unique<SystemEventHandlerImpl>();
        m_system->RegisterEventHandler(*m_systemEventHandler);
        m_interfaceEventHandler = std::make_unique<InterfaceEventHandlerImpl>();
        m_system->RegisterInterfaceEventHandler(*m_interfaceEventHandler, true);
    });
}

void NorSimpleGUI_QT::CleanupNorInstance() {
    guarded("ending camera events", [&] {
        if (m_systemEventHandler) {
            m_system->UnregisterEventHandler(*m_systemEventHandler);
            m_systemEventHandler.reset();
        }
        if (m_interfaceEventHandler) {
            m_system->UnregisterInterfaceEventHandler(*m_interfaceEventHandler);
            m_interfaceEventHandler.reset();
        }
    });
    m_interfaceList.Clear();
}

void NorSimpleGUI_QT::SetupDeviceList() {
    m_deviceList = new wDeviceList(m_interfaceList, m_system, this);
    addDockWidget(Qt::LeftDockWidgetArea, m_deviceList);
    m_deviceList->installEventFilter(this);
}

void NorSimpleGUI_QT::SetupFeaturesWindow() {
    m_featureTabs = new wFeaturesTabController(
        this, [](QWidget* tabParent) -> FileAccessTab* { return new wFileAccess(tabParent); });
    m_featureTabs->Initialize();
    addDockWidget(Qt::LeftDockWidgetArea, m_featureTabs);
}

void NorSimpleGUI_QT::LoadStyleSheet() {
    QFile file(QStringLiteral(":qss/stylesheet.qss"));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray style = file.readAll();
    if (!style.isNull()) {
        QApplication::setPalette(lightPalette());
        qApp->setStyleSheet(QString::fromLatin1(style));
    }
}

void NorSimpleGUI_QT::CountStart() {
    QSettings settings(SettingsFilePath(), QSettings::IniFormat);
    const unsigned int starts = settings.value(wSurveyDialog::appOpensSettingsKey).toUInt();
    settings.setValue(wSurveyDialog::appOpensSettingsKey, starts + 1);
}

void NorSimpleGUI_QT::ResetApplicationSettings() const {
    QSettings settings(SettingsFilePath(), QSettings::IniFormat);
    settings.remove(QString());
}

void NorSimpleGUI_QT::ConnectDocks() {
    if (m_systemEventHandler) {
        connect(m_systemEventHandler.get(), SIGNAL(InterfaceRemoved(QString)), m_deviceList,
                SLOT(OnInterfaceRemoval(QString)));
        connect(m_systemEventHandler.get(), SIGNAL(InterfaceArrived(QString)), m_deviceList,
                SLOT(OnInterfaceArrival(QString)));
    }
    connect(m_deviceList, SIGNAL(InterfaceUpdated(Norvane::InterfacePtr)), m_featureTabs,
            SLOT(OnInterfaceUpdated(Norvane::InterfacePtr)));
    connect(m_deviceList, SIGNAL(CameraUpdated(Norvane::CameraPtr)), m_featureTabs,
            SLOT(OnCameraUpdated(Norvane::CameraPtr)));
    connect(m_deviceList, SIGNAL(NothingSelected()), m_featureTabs, SLOT(ClearFeaturesView()));
    connect(m_featureTabs->GetWidget(wFeaturesTabController::FeatureTreeTab),
            SIGNAL(AcquisitionModeUpdated(Norvane::CameraPtr)), this,
            SLOT(OnAcquisitionModeUpdated(Norvane::CameraPtr)));
    connect(m_featureTabs->GetWidget(wFeaturesTabController::FileAccessTabIndex),
            SIGNAL(FileOperationStatusChanged(bool)), this, SLOT(OnFileOperationStatusChanged(bool)));
}

void NorSimpleGUI_QT::Initialize() {
    if (m_interfaceEventHandler) {
        connect(m_interfaceEventHandler.get(), SIGNAL(DeviceArrived(int)), this, SLOT(OnDeviceArrival(int)));
        connect(m_interfaceEventHandler.get(), SIGNAL(DeviceRemoved(int)), this, SLOT(OnDeviceRemoval(int)));
    }
    if (m_systemEventHandler) {
        connect(m_systemEventHandler.get(), SIGNAL(InterfaceRemoved(QString)), this,
                SLOT(OnInterfaceArrivalRemoval(QString)));
        connect(m_systemEventHandler.get(), SIGNAL(InterfaceArrived(QString)), this,
                SLOT(OnInterfaceArrivalRemoval(QString)));
    }
    if (m_deviceList) {
        connect(m_deviceList, SIGNAL(notifyCreateImageDisplay(Norvane::InterfacePtr, Norvane::CameraPtr)),
                this, SLOT(OnAddImageDisplay(Norvane::InterfacePtr, Norvane::CameraPtr)));
        connect(m_deviceList, SIGNAL(notifyDisconnectDevice(Norvane::CameraPtr)), this,
                SLOT(OnDeviceDisconnect(Norvane::CameraPtr)));
        connect(m_deviceList, SIGNAL(notifyDoubleClickToStartStreaming(int)), this,
                SLOT(OnDoubleClickStream(int)));
    }
}

void NorSimpleGUI_QT::UpdateInterfaceList() {
    guarded("listing the interfaces", [&] { m_interfaceList = m_system->GetInterfaces(true); });
}

void NorSimpleGUI_QT::OnInterfaceArrivalRemoval(const QString&) {
    UpdateInterfaceList();
}

void NorSimpleGUI_QT::OnDeviceArrival(int serial) {
    if (m_deviceList) {
        m_deviceList->OnDeviceArrival(serial);
    }
}

void NorSimpleGUI_QT::OnFileOperationStatusChanged(bool busy) {
    setDisabled(busy);
}

int NorSimpleGUI_QT::FindDisplay(int serial) const {
    for (int i = 0; i < m_imageDisplays.size(); ++i) {
        int displaySerial = -1;
        if (m_imageDisplays[i]) {
            m_imageDisplays[i]->getDeviceSerial(displaySerial);
            if (displaySerial == serial) {
                return i;
            }
        }
    }
    return -1;
}

void NorSimpleGUI_QT::OnAddImageDisplay(Norvane::InterfacePtr interface, Norvane::CameraPtr camera) {
    const std::lock_guard lock(m_displayMutex);
    guarded("opening an image display", [&] {
        if (!camera.IsValid()) {
            return;
        }
        if (const int open = FindDisplay(m_mapper.GetDeviceSerialNumber(camera)); open >= 0) {
            m_imageDisplays[open]->show();
            return;
        }
        auto* display = new wImageDisplay(interface, camera, this);
        display->setAttribute(Qt::WA_DeleteOnClose);
        m_imageDisplays.append(display);
        display->setFocus(Qt::OtherFocusReason);
        addDockWidget(Qt::RightDockWidgetArea, display);
        WidenDisplay(display);
        ShareHeight(display);
        connect(display, SIGNAL(disconnectImDisplay(Norvane::CameraPtr)), this,
                SLOT(OnDeviceDisconnect(Norvane::CameraPtr)));
        display->show();
    });
}

void NorSimpleGUI_QT::WidenDisplay(wImageDisplay* display) {
    if (!m_deviceList || !m_featureTabs) {
        return;
    }
    const int leftWidth = m_deviceList->width();
    if (!m_deviceList->isFloating() && m_featureTabs->width() < m_deviceList->width()) {
        resizeDocks({display}, {width() - m_deviceList->width()}, Qt::Horizontal);
    }
    const int displayWidth = m_featureTabs->isFloating() ? width() : width() - m_featureTabs->width();
    resizeDocks({display}, {displayWidth}, Qt::Horizontal);
    if (!m_deviceList->isFloating()) {
        // What was asked for leaves out the separators, and the left docks must not pay for them at each
        // opening.
        resizeDocks({m_deviceList}, {leftWidth}, Qt::Horizontal);
        m_leftWidth = leftWidth;
    }
}

QList<QDockWidget*> NorSimpleGUI_QT::DockedDisplays() const {
    QList<QDockWidget*> docked;
    for (const QPointer<wImageDisplay>& display : m_imageDisplays) {
        if (display && !display->isFloating() && dockWidgetArea(display) == Qt::RightDockWidgetArea) {
            docked.append(display);
        }
    }
    return docked;
}

void NorSimpleGUI_QT::ShareHeight(wImageDisplay* newest) {
    const QList<QDockWidget*> docked = DockedDisplays();
    const int stacked = docked.size();
    const int share = centralWidget()->height() / std::max(stacked, 1);
    if (stacked > 1 && share < kLeastDisplayHeight) {
        tabifyDockWidget(docked.at(stacked - 2), newest);
        QTimer::singleShot(0, newest, &QWidget::raise);
        return;
    }
    QList<int> heights;
    std::fill_n(std::back_inserter(heights), stacked, share);
    resizeDocks(docked, heights, Qt::Vertical);
}

bool NorSimpleGUI_QT::eventFilter(QObject* watched, QEvent* event) {
    // A button is held while a person drags a separator, not while the window itself changes its size. The
    // kind of the event is asked first: others come while the device list is being destroyed.
    if (event->type() == QEvent::Resize && QGuiApplication::mouseButtons() != Qt::NoButton &&
        watched == m_deviceList && !m_deviceList->isFloating()) {
        m_leftWidth = m_deviceList->width();
    }
    return QMainWindow::eventFilter(watched, event);
}

void NorSimpleGUI_QT::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!std::exchange(m_shownBefore, true) && m_deviceList) {
        m_deviceList->OnRefreshDeviceList();
    }
}

void NorSimpleGUI_QT::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    // The layout follows this event. It would give a larger window's width to the empty middle and take a
    // smaller one's from the left docks; the width in between is for images.
    QTimer::singleShot(0, this, [this] {
        const QList<QDockWidget*> docked = DockedDisplays();
        if (m_leftWidth > 0 && m_deviceList && !m_deviceList->isFloating() && !docked.isEmpty()) {
            resizeDocks({m_deviceList, docked.first()}, {m_leftWidth, width() - m_leftWidth}, Qt::Horizontal);
        }
    });
}

void NorSimpleGUI_QT::OnRemoveImageDisplay(int serial) {
    const std::lock_guard lock(m_displayMutex);
    int index = FindDisplay(serial);
    if (index < 0) {
        return;
    }
    if (m_featureTabs && m_featureTabs->GetCurrentDeviceSerialNumber() == serial) {
        SwitchToNextDevice(index);
        index = FindDisplay(serial);
    }
    if (index < 0) {
        return;
    }
    const QPointer<wImageDisplay> display = m_imageDisplays.takeAt(index);
    m_displaysToDelete.append(display);
    if (display) {
        // It waits unseen, and its worker must not receive what the camera sends when it is opened anew.
        display->OnStopStream();
        display->hide();
    }
}

void NorSimpleGUI_QT::SwitchToNextDevice(int index) {
    const std::lock_guard lock(m_displayMutex);
    if (!m_deviceList) {
        return;
    }
    const auto alive = [&](int i) { return i >= 0 && i < m_imageDisplays.size() && m_imageDisplays[i]; };
    if (alive(index + 1)) {
        m_deviceList->SelectDevice(m_imageDisplays[index + 1]->getCamera());
    } else if (alive(index - 1)) {
        m_deviceList->SelectDevice(m_imageDisplays[index - 1]->getCamera());
    } else if (alive(index)) {
        m_deviceList->SelectInterface(m_imageDisplays[index]->getInterface());
    }
}

void NorSimpleGUI_QT::OnDeviceRemoval(int serial) {
    OnRemoveImageDisplay(serial);
    if (m_deviceList) {
        m_deviceList->OnDeviceRemoval(serial);
    }
    const std::lock_guard lock(m_displayMutex);
    for (const auto& display : qAsConst(m_displaysToDelete)) {
        if (display) {
            display->deleteWhenWritten();
        }
    }
    m_displaysToDelete.clear();
}

void NorSimpleGUI_QT::OnDeviceDisconnect(Norvane::CameraPtr camera) {
    if (!camera.IsValid()) {
        return;
    }
    const int serial = m_mapper.GetDeviceSerialNumber(camera);
    guarded("ending a camera's acquisition", [&] {
        if (camera->IsStreaming()) {
            camera->EndAcquisition();
        }
    });
    guarded("closing a camera", [&] {
        if (camera->IsInitialized()) {
            camera->DeInit();
        }
    });
    const std::lock_guard lock(m_displayMutex);
    OfferSurvey();
    OnRemoveImageDisplay(serial);
}

void NorSimpleGUI_QT::OfferSurvey() {
    QSettings settings(SettingsFilePath(), QSettings::IniFormat);
    const unsigned int starts = settings.value(wSurveyDialog::appOpensSettingsKey).toUInt();
    if (m_imageDisplays.size() != 1 || starts <= kStartsWithoutSurvey || m_surveyOffered || !m_surveyDialog ||
        m_surveyDialog->PreferNoPopup()) {
        return;
    }
    m_surveyOffered = true;
    m_surveyDialog->SetDoNotAskCheckBoxVisible(true);
    m_surveyDialog->exec();
}

void NorSimpleGUI_QT::OnDoubleClickStream(int serial) {
    const std::lock_guard lock(m_displayMutex);
    if (const int index = FindDisplay(serial); index >= 0) {
        m_imageDisplays[index]->OnStartStream();
    }
}

void NorSimpleGUI_QT::OnAcquisitionModeUpdated(const Norvane::CameraPtr& camera) {
    if (!camera.IsValid()) {
        return;
    }
    const std::lock_guard lock(m_displayMutex);
    for (const auto& display : qAsConst(m_imageDisplays)) {
        if (display && display->getCamera() == camera) {
            display->OnAcquisitionModeUpdated();
        }
    }
}

void NorSimpleGUI_QT::closeEvent(QCloseEvent* event) {
    const Norvane::InterfaceList interfaces = m_interfaceList;
    for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
        guarded("closing the cameras of an interface", [&] {
            const Norvane::CameraList cameras = interfaces.GetByIndex(i)->GetCameras(true);
            for (unsigned int j = 0; j < cameras.GetSize(); ++j) {
                OnDeviceDisconnect(cameras.GetByIndex(j));
            }
        });
    }
    QApplication::closeAllWindows();
    event->accept();
}

void NorSimpleGUI_QT::SetupMenuKey() {
    // Qt knows the Menu key only, which many keyboards lack.
    auto* key = new QShortcut(QKeySequence(QStringLiteral("Shift+F10")), this);
    key->setContext(Qt::ApplicationShortcut);
    connect(key, &QShortcut::activated, this, [this] {
        QWidget* widget = QApplication::focusWidget() ? QApplication::focusWidget() : this;
        const QPoint place = widget->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, widget->mapToGlobal(place));
        QApplication::sendEvent(widget, &event);
    });
}

void NorSimpleGUI_QT::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() != QContextMenuEvent::Keyboard) {
        QMainWindow::contextMenuEvent(event);
        return;
    }
    QMenu* menu = createPopupMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

QMenu* NorSimpleGUI_QT::createPopupMenu() {
    auto* menu = new QMenu(this);
    const auto add = [&](QDockWidget* dock, const QString& text, const char* toolTip) {
        if (dock) {
            QAction* action = dock->toggleViewAction();
            action->setText(text);
            action->setToolTip(mainWindowText(toolTip));
            menu->addAction(action);
        }
    };
    add(m_deviceList, mainWindowText("Device List"), "Shows or hides the device list.");
    add(m_featureTabs, mainWindowText("Tree View"), "Shows or hides the treeview.");
    return menu;
}
