#include "wFeaturesTabController.h"

#include "FileAccessTab.h"
#include "Guarded.h"
#include "NodeReading.h"
#include "wFeatureTree.h"

#include <QCoreApplication>
#include <QTabWidget>

#include <algorithm>

using namespace Norvane::GenApi;

namespace {

QString translated(const char* text) {
    return QCoreApplication::translate("mainWindow", text);
}

} // namespace

wFeaturesTabController::wFeaturesTabController(QWidget* parent, const FileAccessFactory& makeFileAccess)
    : QDockWidget(parent) {
    setWindowTitle(translated("Features"));
    m_featureTree = new wFeatureTree(this);
    m_fileAccess = makeFileAccess ? makeFileAccess(this) : nullptr;
    m_featureTree->hide();
    if (m_fileAccess) {
        m_fileAccess->hide();
    }
    m_tabs = {m_featureTree.data(), m_fileAccess.data()};
    m_titles = {tr("Features"), tr("File Access")};
    m_visible.assign(m_tabs.size(), false);
    m_tabWidget = new QTabWidget(this);
    m_tabWidget->setStyleSheet(QStringLiteral("QTabWidget::tab-bar{left : 0;}"));
    setWidget(m_tabWidget);
    updateVisibilityOfWidget(true, FeatureTreeTab);
}

wFeaturesTabController::~wFeaturesTabController() = default;

void wFeaturesTabController::Initialize() {
    for (const QPointer<CustomTabInterface>& tab : m_tabs) {
        if (tab) {
            connect(this, SIGNAL(notifyCameraPtrUpdate(Norvane::CameraPtr)), tab,
                    SLOT(OnCameraUpdated(Norvane::CameraPtr)), Qt::DirectConnection);
        }
    }
}

CustomTabInterface* wFeaturesTabController::GetWidget(int index) const {
    return index >= 0 && index < static_cast<int>(m_tabs.size()) ? m_tabs[index].data() : nullptr;
}

int wFeaturesTabController::GetCurrentDeviceSerialNumber() const {
    return m_camera.IsValid() ? m_mapper.GetDeviceSerialNumber(m_camera) : -1;
}

int wFeaturesTabController::positionOf(int index) const {
    return static_cast<int>(std::count(m_visible.begin(), m_visible.begin() + index, true));
}

void wFeaturesTabController::addTab(int index) {
    if (CustomTabInterface* tab = GetWidget(index)) {
        m_tabWidget->insertTab(positionOf(index), tab, m_titles[index]);
        m_visible[index] = true;
    }
}

void wFeaturesTabController::removeTab(int index) {
    if (GetWidget(index) && m_visible[index]) {
        m_tabWidget->removeTab(positionOf(index));
        m_visible[index] = false;
    }
}

void wFeaturesTabController::updateVisibilityOfWidget(bool show, int index) {
    if (!GetWidget(index)) {
        return;
    }
    const bool offered = index != FileAccessTabIndex || m_fileAccess->isFileAccessCapable();
    const bool wanted = show && offered;
    if (wanted && !m_visible[index]) {
        addTab(index);
    } else if (!wanted && m_visible[index]) {
        removeTab(index);
    }
}

void wFeaturesTabController::showAllTabs() {
    for (int index = 0; index < static_cast<int>(m_tabs.size()); ++index) {
        updateVisibilityOfWidget(true, index);
    }
}

void wFeaturesTabController::hideAllTabsExceptFeatureTree() {
    for (int index = 1; index < static_cast<int>(m_tabs.size()); ++index) {
        updateVisibilityOfWidget(false, index);
    }
}

bool wFeaturesTabController::isUnusable(Norvane::CameraPtr camera) const {
    bool unusable = false;
    guarded("markers of an unusable camera", [&] {
        INodeMap& map = camera->GetTLDeviceNodeMap();
        unusable = NodeReading::IsTrue(map, "GevDeviceIsWrongSubnet") ||
                   NodeReading::IsTrue(map, "DeviceIsUnusable");
    });
    return unusable;
}

bool wFeaturesTabController::openCamera(const Norvane::CameraPtr& camera) {
    if (isUnusable(camera)) {
        showNameOf(camera);
        return false;
    }
    bool controlled = false;
    const bool opened = guarded("opening a camera", [&] {
        if (!camera->IsInitialized()) {
            camera->Init();
        }
    });
    showNameOf(camera);
    guarded("access mode of a camera", [&] { controlled = opened && camera->GetAccessMode() != RO; });
    return controlled;
}

void wFeaturesTabController::showNameOf(const Norvane::CameraPtr& camera) {
    QString model;
    QString serial;
    guarded("name of a camera", [&] {
        INodeMap& map = camera->GetTLDeviceNodeMap();
        serial = NodeReading::Text(map, "DeviceSerialNumber");
        model = NodeReading::Text(map, "DeviceModelName");
    });
    setWindowTitle(model.isNull() || serial.isNull() ? translated("Couldn't get device information")
                                                     : translated((model + " - " + serial).toUtf8()));
}

void wFeaturesTabController::OnCameraUpdated(const Norvane::CameraPtr& camPtr) {
    if (!camPtr.IsValid()) {
        ClearFeaturesView();
        return;
    }
    const bool inUse = openCamera(camPtr);
    m_camera = inUse ? camPtr : Norvane::CameraPtr();
    m_featureTree->UpdateTreeViewCamera(m_camera);
    emit notifyCameraPtrUpdate(m_camera);
    // Last, because a tab tells whether it suits the camera only once it has it.
    if (inUse) {
        showAllTabs();
    } else {
        hideAllTabsExceptFeatureTree();
    }
}

void wFeaturesTabController::OnInterfaceUpdated(Norvane::InterfacePtr ifacePtr) {
    if (ifacePtr.IsValid()) {
        guarded("name of an interface", [&] {
            const QString name = NodeReading::Text(ifacePtr->GetTLNodeMap(), "InterfaceDisplayName");
            if (!name.isNull()) {
                setWindowTitle(translated(name.toUtf8()));
            }
        });
    } else {
        setWindowTitle(translated("Features"));
    }
    m_camera = nullptr;
    m_featureTree->UpdateTreeViewInterface(ifacePtr);
    emit notifyCameraPtrUpdate(Norvane::CameraPtr());
    hideAllTabsExceptFeatureTree();
}

void wFeaturesTabController::ClearFeaturesView() {
    setWindowTitle(translated("Features"));
    m_camera = nullptr;
    m_featureTree->UpdateTreeViewCamera(Norvane::CameraPtr());
    emit notifyCameraPtrUpdate(Norvane::CameraPtr());
    hideAllTabsExceptFeatureTree();
}
