#pragma once

#include "CustomTabInterface.h"

#include "norvane/Camera.h"
#include "norvane/Interface.h"
#include "norvane/genapi/GenApi.h"
#include "norvane/genapi/Prefetch.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <mutex>
#include <set>
#include <vector>

class FeatureModel;
class FeaturePopulator;
class FeatureTreeView;
class QButtonGroup;
class QLabel;
class QLineEdit;
class QModelIndex;
class QStandardItemModel;
class wPrmDialog;

/// Every feature of the shown camera or interface as a tree of names and values, searchable, editable in
/// place, and live: the library's node callbacks rewrite the rows of what changed. A camera behind a slow
/// link has its three header rows at once and the rows below them when the library has read it. Owned by
/// wFeaturesTabController; all on the user-interface thread but Callback(). There is one; its callbacks stay
/// registered for the life of the node maps: a device that is shown once more is registered with once more,
/// which costs the library nothing.
class wFeatureTree : public CustomTabInterface {
    Q_OBJECT

public:
    explicit wFeatureTree(QWidget* parent);
    ~wFeatureTree() override;

    void clearTreeModel();
    void clearFilteredTreeModel();
    void clearTreeView();
    void clearDescLabel();
    /// The filtered model while there is search text, else the main one.
    QStandardItemModel* GetCurrentModel() const;
    void setColumnWidths();

    /// The node callback given to the library: any thread, inside the node map's lock. It only emits
    /// NodeUpdated on the one tree, once while the tree has not yet taken the node's last change.
    static void Callback(Norvane::GenApi::INode* node);

public slots:
    /// Nothing: the controller gives the tree its devices.
    void OnCameraUpdated(const Norvane::CameraPtr& camPtr) override;
    void UpdateTreeViewCamera(Norvane::CameraPtr camera);
    void UpdateTreeViewInterface(Norvane::InterfacePtr iface);
    void OnSortTreeByXML();
    void OnSortTreeByCategory();
    void OnSortTreeByAlpha();
    void OnButtonGroupClicked(int id);
    void OnActionExpandTree();
    void OnRefreshTree();
    void OnCreateFilteredTreeModel();
    void OnUpdateFilteredModel();
    void OnSingleClickParam(const QModelIndex& index);
    void OnDoubleClickParam(const QModelIndex& index);
    void OnNodeChanged(Norvane::GenApi::INode* node);
    void OnTreeViewCleared();

private slots:
    void OnCameraRead();

signals:
    void NodeUpdated(Norvane::GenApi::INode* node);
    void AcquisitionModeUpdated(Norvane::CameraPtr camera);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    enum SortOrder { ByXml = 0, ByCategory = 1, ByAlpha = 2 };
    using CategoryList = std::vector<Norvane::GenApi::CNodePtr>;

    void setupToolBar();
    void setupCustomFeatureTree();
    void setupDescLabel();
    void updateDescLabel();
    void singleClickUpdateLabels(const QModelIndex& index);
    void finishView();
    void showHierarchyOrder();

    FeaturePopulator populator();
    void displayCamera(const Norvane::CameraPtr& camera);
    /// Lets the library read the shown camera's registers into its cache. True when that was a matter of a
    /// moment; if false, OnCameraRead follows.
    bool readAhead();
    /// What is shown until then.
    void showReading();
    void takeCategories();
    void clearCategories();
    /// The three header rows, with the features below them or without.
    void showMaps(bool withFeatures);

    static void GetCategoryNodesList(Norvane::GenApi::INodeMap& map, CategoryList& list);
    std::set<Norvane::GenApi::gcstring> displayNames(const CategoryList& categories);
    Norvane::GenApi::CNodePtr findNode(const QString& name) const;

    void takePending(Norvane::GenApi::INode* node);

    Norvane::CameraPtr m_camera;
    Norvane::InterfacePtr m_interface;

    std::mutex m_categoryMutex; ///< guards the four lists
    CategoryList m_deviceCategories;
    CategoryList m_tlDeviceCategories;
    CategoryList m_streamCategories;
    CategoryList m_interfaceCategories;

    bool m_expanded = false;
    bool m_sameDevice = false; ///< the device being shown has its callbacks already
    QString m_modelTitle;
    std::unique_ptr<Norvane::GenApi::Prefetch> m_prefetch; ///< while the shown camera is being read

    std::mutex m_pendingMutex;
    std::set<Norvane::GenApi::INode*> m_pending; ///< on their way to OnNodeChanged

    FeatureModel* m_model = nullptr;
    FeatureModel* m_filteredModel = nullptr;
    FeatureTreeView* m_treeView = nullptr;
    QButtonGroup* m_sortButtons = nullptr;
    QLineEdit* m_searchBox = nullptr;
    QLabel* m_descTitleLabel = nullptr;
    QLabel* m_descLabel = nullptr;
    QString m_descTitle;
    QString m_description;
    QPointer<wPrmDialog> m_nodeDialog;

    static wFeatureTree* m_pInstance;
};
