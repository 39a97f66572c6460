#pragma once

#include "CustomTabInterface.h"
#include "Mapper.h"

#include "norvane/Camera.h"
#include "norvane/Interface.h"

#include <QDockWidget>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

class FileAccessTab;
class QTabWidget;
class wFeatureTree;

/// Makes the file access tab as a child of the given widget; may be empty or return null, then there is none.
using FileAccessFactory = std::function<FileAccessTab*(QWidget*)>;

/// The dock with the feature panels of the selected device: the feature tree, always there, and the camera
/// file access, there while the camera offers it. Owned by the main window; user-interface thread. A failing
/// camera never throws out of its slots.
class wFeaturesTabController : public QDockWidget {
    Q_OBJECT

public:
    enum TabIndex { FeatureTreeTab = 0, FileAccessTabIndex = 1 };

    wFeaturesTabController(QWidget* parent, const FileAccessFactory& makeFileAccess);
    ~wFeaturesTabController() override;

    /// Joins the tabs to notifyCameraPtrUpdate; called once after construction.
    void Initialize();
    /// The tab at an index, shown or not; null when there is none.
    CustomTabInterface* GetWidget(int index) const;
    /// -1 when no camera is in use.
    int GetCurrentDeviceSerialNumber() const;

    void addTab(int index);
    void removeTab(int index);
    void updateVisibilityOfWidget(bool show, int index);
    void showAllTabs();
    void hideAllTabsExceptFeatureTree();
    /// Whether the camera marks itself as one that cannot be worked with (wrong subnet, or unusable).
    bool isUnusable(Norvane::CameraPtr camera) const;

public slots:
    void OnInterfaceUpdated(Norvane::InterfacePtr ifacePtr);
    void OnCameraUpdated(const Norvane::CameraPtr& camPtr);
    void ClearFeaturesView();

signals:
    void notifyCameraPtrUpdate(Norvane::CameraPtr camPtr);

private:
    int positionOf(int index) const;
    bool openCamera(const Norvane::CameraPtr& camera);
    void showNameOf(const Norvane::CameraPtr& camera);

    Norvane::CameraPtr m_camera;
    Mapper m_mapper;
    QPointer<wFeatureTree> m_featureTree;
    QPointer<FileAccessTab> m_fileAccess;
    // By tab number, side by side.
    std::vector<QPointer<CustomTabInterface>> m_tabs;
    std::vector<QString> m_titles;
    std::vector<bool> m_visible;
    QTabWidget* m_tabWidget = nullptr;
};
