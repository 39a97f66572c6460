#include "wFeatureTree.h"

#include "CustomDelegate.h"
#include "EditDisabledDelegate.h"
#include "FeatureModel.h"
#include "FeaturePopulator.h"
#include "FeatureTreeView.h"
#include "Guarded.h"
#include "wPrmDialog.h"

#include <QAction>
#include <QButtonGroup>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QRegularExpression>
#include <QStyle>
#include <QTextDocument>
#include <QThread>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

using namespace Norvane::GenApi;

namespace {

/// Filling waits so long for a camera's registers; a window that stands still for longer seems to be dead.
constexpr std::chrono::milliseconds kPatience{300};
constexpr int kToolBarHeight = 36;
constexpr int kDescriptionHeight = 50;
constexpr int kIndentation = 13; // three levels in a narrow dock
constexpr char kTreeStyle[] =
    "QTreeView::item:!selected{ border: 1px solid gainsboro; border-left: none; border-top: none; }"
    "QTreeView::item:open {border: 1px solid gainsboro; background-color: rgb(230,240,250);}"
    "QTreeView::item:selected{}";

std::mutex instanceMutex; ///< guards wFeatureTree::m_pInstance

QString text(const gcstring& from) {
    return QString::fromUtf8(from.c_str());
}

void setTitle(QDockWidget& dock, const char* title) {
    dock.setWindowTitle(QCoreApplication::translate("mainWindow", title));
}

} // namespace

wFeatureTree* wFeatureTree::m_pInstance = nullptr;

wFeatureTree::wFeatureTree(QWidget* parent) : CustomTabInterface(parent) {
    setTitleBarWidget(new QWidget(this));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    setWidget(central);
    setupToolBar();
    setupCustomFeatureTree();
    setupDescLabel();
    qRegisterMetaType<INode*>("Norvane::GenApi::INode*");
    {
        const std::lock_guard lock(instanceMutex);
        m_pInstance = this;
    }
    connect(m_searchBox, SIGNAL(textChanged(QString)), this, SLOT(OnRefreshTree()));
    connect(this, SIGNAL(NodeUpdated(Norvane::GenApi::INode*)), this,
            SLOT(OnNodeChanged(Norvane::GenApi::INode*)));
}

wFeatureTree::~wFeatureTree() {
    const std::lock_guard lock(instanceMutex);
    if (m_pInstance == this) {
        m_pInstance = nullptr;
    }
}

void wFeatureTree::setupToolBar() {
    // Only a main window lays out a tool bar.
    auto* host = new QMainWindow(widget());
    host->setWindowFlags(Qt::Widget); // a main window is a window of its own unless told otherwise
    host->setContextMenuPolicy(Qt::NoContextMenu);
    auto* bar = new QToolBar(host);
    bar->setObjectName(QStringLiteral("toolBarSort"));
    bar->setMovable(false);
    host->addToolBar(bar);

    const auto makeButton = [bar](const char* name, const QString& toolTip, const char* icon) {
        auto* button = new QToolButton(bar);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(toolTip);
        button->setAccessibleName(toolTip);
        button->setIcon(QIcon(QLatin1String(icon)));
        return button;
    };
    m_sortButtons = new QButtonGroup(this);
    m_sortButtons->setExclusive(true);
    const auto addSortButton = [&](SortOrder id, QToolButton* button) {
        button->setCheckable(true);
        m_sortButtons->addButton(button, id);
        bar->addWidget(button);
    };
    addSortButton(ByXml, makeButton("actionSortXML", tr("Sort by XML hierarchy"), ":images/XML.png"));
    addSortButton(ByCategory,
                  makeButton("actionSortCategory", tr("Sort by category"), ":images/Category.png"));
    addSortButton(ByAlpha, makeButton("actionSortAlpha", tr("Sort by alphabetical"), ":images/Alpha.png"));
    m_sortButtons->button(ByXml)->setChecked(true);
    auto* expand = makeButton("actionExpandTree", tr("Expand/Collapse all nodes"), ":images/expand.png");
    bar->addWidget(expand);

    m_searchBox = new QLineEdit(bar);
    m_searchBox->setMaximumWidth(300);
    m_searchBox->setPlaceholderText(QStringLiteral("Search"));
    m_searchBox->setEnabled(true);
    // Not the line edit's own clear button, whose fading leaks when the window goes meanwhile.
    QAction* clear =
        m_searchBox->addAction(style()->standardIcon(QStyle::SP_LineEditClearButton, nullptr, m_searchBox),
                               QLineEdit::TrailingPosition);
    clear->setText(tr("Clear the search"));
    clear->setToolTip(clear->text());
    clear->setVisible(false);
    connect(clear, &QAction::triggered, m_searchBox, &QLineEdit::clear);
    // The style sheet gives the placeholder the colour of typed text unless it is told that it is one.
    const auto markEmpty = [this](const QString& text) {
        if (m_searchBox->property("empty") != text.isEmpty()) {
            m_searchBox->setProperty("empty", text.isEmpty());
            m_searchBox->style()->unpolish(m_searchBox);
            m_searchBox->style()->polish(m_searchBox);
        }
    };
    markEmpty({});
    connect(m_searchBox, &QLineEdit::textChanged, this, markEmpty);
    connect(m_searchBox, &QLineEdit::textChanged, clear,
            [clear](const QString& text) { clear->setVisible(!text.isEmpty()); });
    m_searchBox->setAccessibleName(tr("Search features"));
    m_searchBox->setToolTip(tr("Shows the features whose name matches this regular expression"));
    bar->addWidget(m_searchBox);
    bar->addSeparator();

    connect(m_sortButtons, SIGNAL(buttonClicked(int)), this, SLOT(OnButtonGroupClicked(int)));
    connect(expand, SIGNAL(clicked()), this, SLOT(OnActionExpandTree()));
    bar->ensurePolished();
    host->setFixedHeight(std::max(kToolBarHeight, bar->sizeHint().height()));
    widget()->layout()->addWidget(host);
}

void wFeatureTree::setupCustomFeatureTree() {
    m_model = new FeatureModel(this);
    m_filteredModel = new FeatureModel(this);
    m_treeView = new FeatureTreeView(widget());
    m_treeView->setEditTriggers(QAbstractItemView::CurrentChanged | QAbstractItemView::SelectedClicked |
                                QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_treeView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_treeView->setStyleSheet(QLatin1String(kTreeStyle));
    m_treeView->setUniformRowHeights(true);
    m_treeView->setIndentation(kIndentation);
    m_treeView->setAccessibleName(tr("Features"));
    m_treeView->showModel(m_model);
    m_treeView->setItemDelegateForColumn(0, new EditDisabledDelegate(this));
    auto* delegate = new CustomDelegate(this);
    m_treeView->setItemDelegateForColumn(1, delegate);
    m_model->setRowHeight(delegate->rowHeight());
    m_filteredModel->setRowHeight(delegate->rowHeight());
    connect(m_treeView, SIGNAL(doubleClicked(QModelIndex)), this, SLOT(OnDoubleClickParam(QModelIndex)));
    connect(m_treeView, SIGNAL(clicked(QModelIndex)), this, SLOT(OnSingleClickParam(QModelIndex)));
    connect(m_treeView, &FeatureTreeView::walkedTo, this, &wFeatureTree::singleClickUpdateLabels);
    widget()->layout()->addWidget(m_treeView);
}

void wFeatureTree::setupDescLabel() {
    auto* grid = new QGridLayout;
    grid->setContentsMargins(4, 0, 4, 2);
    grid->setVerticalSpacing(1);
    m_descTitleLabel = new QLabel(widget());
    QFont bold = m_descTitleLabel->font();
    bold.setBold(true);
    m_descTitleLabel->setFont(bold);
    m_descLabel = new QLabel(widget());
    m_descLabel->setWordWrap(true);
    m_descLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    grid->addWidget(m_descTitleLabel, 0, 0);
    grid->addWidget(m_descLabel, 1, 0);
    static_cast<QVBoxLayout*>(widget()->layout())->addLayout(grid);
    updateDescLabel();
}

void wFeatureTree::updateDescLabel() {
    m_descTitleLabel->setText(m_descTitle);
    m_descLabel->setTextFormat(Qt::RichText);
    // A description is text that may hold "<" on its own; only what is markup is taken as such.
    m_descLabel->setText(Qt::mightBeRichText(m_description) ? m_description : m_description.toHtmlEscaped());
    m_descLabel->setToolTip(m_description);
    m_descLabel->setFixedHeight(kDescriptionHeight);
}

void wFeatureTree::clearDescLabel() {
    m_descTitle.clear();
    m_description.clear();
    updateDescLabel();
}

void wFeatureTree::setColumnWidths() {
    const int columnWidth = width() / 2 - 25;
    m_treeView->setColumnWidth(0, columnWidth);
    m_treeView->setColumnWidth(1, columnWidth);
}

void wFeatureTree::resizeEvent(QResizeEvent* event) {
    CustomTabInterface::resizeEvent(event);
    setColumnWidths();
}

void wFeatureTree::clearTreeModel() {
    m_treeView->setUpdatesEnabled(false);
    m_model->clearRows();
    m_treeView->setSortingEnabled(false);
}

void wFeatureTree::clearFilteredTreeModel() {
    m_treeView->setUpdatesEnabled(false);
    m_filteredModel->clearRows();
}

void wFeatureTree::clearTreeView() {
    m_prefetch.reset();
    m_camera = nullptr;
    m_interface = nullptr;
    m_searchBox->clear();
    clearFilteredTreeModel();
    m_model->clearRows();
    clearCategories();
    finishView();
}

void wFeatureTree::clearCategories() {
    const std::lock_guard lock(m_categoryMutex);
    m_deviceCategories.clear();
    m_tlDeviceCategories.clear();
    m_streamCategories.clear();
    m_interfaceCategories.clear();
}

void wFeatureTree::OnTreeViewCleared() {
    clearTreeView();
}

QStandardItemModel* wFeatureTree::GetCurrentModel() const {
    return m_searchBox->text().isEmpty() ? m_model : m_filteredModel;
}

void wFeatureTree::finishView() {
    if (m_expanded) {
        m_treeView->expandAll();
    }
    m_treeView->setUpdatesEnabled(true);
    m_treeView->update();
    setColumnWidths();
}

void wFeatureTree::showHierarchyOrder() {
    // A rebuild of the hierarchy ends the alphabetical order; the buttons must not say otherwise.
    if (m_sortButtons->checkedId() == ByAlpha) {
        m_sortButtons->button(ByXml)->setChecked(true);
    }
}

// --- showing devices

FeaturePopulator wFeatureTree::populator() {
    return {*m_model, m_sameDevice ? nullptr : &wFeatureTree::Callback};
}

void wFeatureTree::displayCamera(const Norvane::CameraPtr& camera) {
    if (m_prefetch && camera == m_camera && camera->IsInitialized()) {
        showReading();
        return;
    }
    m_prefetch.reset();
    m_modelTitle = tr("Duskwing S");
    if (!camera->IsInitialized()) {
        camera->Init();
    }
    INodeMap& deviceMap = camera->GetNodeMap();
    guarded("model name", [&] {
        CStringPtr modelName(deviceMap.GetNode("DeviceModelName"));
        if (modelName.IsValid() && IsReadable(modelName->GetAccessMode())) {
            const gcstring model = modelName->GetValue();
            m_modelTitle = tr(model.c_str());
            setTitle(*this, model.c_str());
        }
    });
    clearTreeModel();
    clearFilteredTreeModel();
    clearDescLabel();
    showHierarchyOrder();
    m_sameDevice = camera == m_camera;
    m_camera = camera;
    m_interface = nullptr;
    if (!readAhead()) {
        showReading();
        return;
    }
    takeCategories();
    showMaps(true);
    m_sameDevice = true;
    OnUpdateFilteredModel();
}

void wFeatureTree::showReading() {
    clearCategories(); // telling which there are may take a register, too
    clearTreeModel();
    showHierarchyOrder();
    showMaps(false);
    m_description = tr("Reading the features of the camera ...");
    updateDescLabel();
    OnUpdateFilteredModel();
}

bool wFeatureTree::readAhead() {
    m_prefetch = std::make_unique<Prefetch>(
        std::vector<INodeMap*>{&m_camera->GetNodeMap(), &m_camera->GetTLDeviceNodeMap(),
                               &m_camera->GetTLStreamNodeMap()},
        m_camera.Shared(), [this] { QMetaObject::invokeMethod(this, "OnCameraRead", Qt::QueuedConnection); });
    if (!m_prefetch->WaitFor(kPatience)) {
        return false;
    }
    m_prefetch.reset();
    return true;
}

void wFeatureTree::OnCameraRead() {
    // The word of a reading that was given up, or waited for, is no news.
    if (!m_prefetch || !m_prefetch->WaitFor(std::chrono::milliseconds::zero())) {
        return;
    }
    m_prefetch.reset();
    clearDescLabel();
    guarded("feature tree of a camera", [this] {
        takeCategories();
        if (m_sortButtons->checkedId() != ByAlpha) {
            clearTreeModel();
            showMaps(true);
            OnUpdateFilteredModel();
        } else {
            OnSortTreeByAlpha();
        }
    });
    m_sameDevice = true;
    finishView();
}

void wFeatureTree::takeCategories() {
    const std::lock_guard lock(m_categoryMutex);
    GetCategoryNodesList(m_camera->GetNodeMap(), m_deviceCategories);
    GetCategoryNodesList(m_camera->GetTLDeviceNodeMap(), m_tlDeviceCategories);
    GetCategoryNodesList(m_camera->GetTLStreamNodeMap(), m_streamCategories);
}

void wFeatureTree::showMaps(bool withFeatures) {
    m_model->rebuild([&] {
        const auto showMap = [&](INodeMap& map, const QString& title) {
            QStandardItem* header = FeatureModel::makeHeaderItem(title);
            m_model->appendRow(header);
            if (withFeatures) {
                populator().addHierarchy(map, header);
            }
        };
        showMap(m_camera->GetNodeMap(), m_modelTitle);
        showMap(m_camera->GetTLDeviceNodeMap(), tr("Transport Layer"));
        showMap(m_camera->GetTLStreamNodeMap(), tr("Stream Parameters"));
    });
}

void wFeatureTree::UpdateTreeViewCamera(Norvane::CameraPtr camera) {
    const bool shown =
        camera.IsValid() && guarded("feature tree of a camera", [&] { displayCamera(camera); });
    if (!shown) {
        setTitle(*this, "Device Features");
        clearTreeView();
        clearDescLabel();
    }
    finishView();
}

void wFeatureTree::UpdateTreeViewInterface(Norvane::InterfacePtr iface) {
    m_prefetch.reset();
    clearTreeModel();
    clearFilteredTreeModel();
    clearDescLabel();
    showHierarchyOrder();
    m_camera = nullptr;
    if (iface.IsValid()) {
        guarded("feature tree of an interface", [&] {
            INodeMap& map = iface->GetTLNodeMap();
            m_sameDevice = iface == m_interface;
            m_interface = iface;
            {
                const std::lock_guard lock(m_categoryMutex);
                GetCategoryNodesList(map, m_interfaceCategories);
            }
            m_model->rebuild([&] { populator().addHierarchy(map, nullptr); });
            m_sameDevice = true;
        });
    } else {
        m_interface = nullptr;
    }
    OnUpdateFilteredModel();
    finishView();
}

void wFeatureTree::OnCameraUpdated(const Norvane::CameraPtr&) {}

void wFeatureTree::OnButtonGroupClicked(int id) {
    switch (id) {
    case ByXml:
        OnSortTreeByXML();
        break;
    case ByCategory:
        OnSortTreeByCategory();
        break;
    case ByAlpha:
        OnSortTreeByAlpha();
        break;
    default:
        break;
    }
}

void wFeatureTree::OnSortTreeByXML() {
    clearTreeModel();
    clearDescLabel();
    if (m_camera.IsValid()) {
        UpdateTreeViewCamera(m_camera);
    } else if (m_interface.IsValid()) {
        UpdateTreeViewInterface(m_interface);
    }
    finishView();
}

void wFeatureTree::OnSortTreeByCategory() {
    OnSortTreeByXML();
}

void wFeatureTree::OnSortTreeByAlpha() {
    if (m_prefetch) {
        return; // the camera's features come in this order as soon as it is read
    }
    clearTreeModel();
    clearDescLabel();
    guarded("sorted features", [&] {
        m_model->rebuild([&] {
            if (m_camera.IsValid()) {
                populator().addFlat(m_camera->GetNodeMap());
                populator().addFlat(m_camera->GetTLStreamNodeMap());
                populator().addFlat(m_camera->GetTLDeviceNodeMap());
            } else if (m_interface.IsValid()) {
                populator().addFlat(m_interface->GetTLNodeMap());
            }
            m_model->sort(0, Qt::AscendingOrder);
        });
    });
    // Enabling sorting sorts by the header's indicator, which would turn the order round.
    m_treeView->header()->setSortIndicator(0, Qt::AscendingOrder);
    m_treeView->setSortingEnabled(true);
    m_treeView->setUpdatesEnabled(true);
    setColumnWidths();
    m_treeView->update();
    OnUpdateFilteredModel();
}

void wFeatureTree::OnActionExpandTree() {
    if (m_expanded) {
        m_treeView->collapseAll();
    } else {
        m_treeView->expandAll();
    }
    m_expanded = !m_expanded;
}

// --- clicks

CNodePtr wFeatureTree::findNode(const QString& name) const {
    const gcstring key(name.toUtf8().constData());
    if (m_camera.IsValid()) {
        for (INodeMap* map :
             {&m_camera->GetNodeMap(), &m_camera->GetTLStreamNodeMap(), &m_camera->GetTLDeviceNodeMap()}) {
            if (INode* node = map->GetNode(key)) {
                return node;
            }
        }
        return nullptr;
    }
    return m_interface.IsValid() ? m_interface->GetTLNodeMap().GetNode(key) : nullptr;
}

void wFeatureTree::OnSingleClickParam(const QModelIndex& index) {
    singleClickUpdateLabels(index);
}

void wFeatureTree::singleClickUpdateLabels(const QModelIndex& index) {
    const QString name = FeatureModel::nodeName(index);
    if (name.isEmpty()) {
        return;
    }
    guarded("description", [&] {
        const CNodePtr node = findNode(name);
        m_descTitle = text(node->GetDisplayName());
        m_description = text(node->GetDescription());
        updateDescLabel();
    });
}

void wFeatureTree::OnDoubleClickParam(const QModelIndex& index) {
    const QString name = FeatureModel::nodeName(index);
    if (name.isEmpty()) {
        return;
    }
    delete m_nodeDialog;
    m_nodeDialog = new wPrmDialog(this);
    m_nodeDialog->setAttribute(Qt::WA_DeleteOnClose);
    if (guarded("node information", [&] { m_nodeDialog->fillParamData(findNode(name)); })) {
        m_nodeDialog->show();
    } else {
        delete m_nodeDialog;
    }
}

// --- changes of nodes

void wFeatureTree::Callback(INode* node) {
    std::unique_lock lock(instanceMutex);
    wFeatureTree* tree = m_pInstance;
    if (!tree) {
        return;
    }
    // A tree that nobody sees reads the camera only now and then: behind a slow link that would hold up what
    // is being done in the window's other parts.
    const bool sameThread = QThread::currentThread() == tree->thread();
    if (sameThread && tree->isVisible()) {
        // The slot runs at once and may make other nodes call back.
        lock.unlock();
        emit tree->NodeUpdated(node);
        return;
    }
    // A node that changes faster than the tree can show it fills no queue.
    {
        const std::lock_guard pendingLock(tree->m_pendingMutex);
        if (!tree->m_pending.insert(node).second) {
            return;
        }
    }
    if (sameThread) {
        QTimer::singleShot(0, tree, [tree, node] { emit tree->NodeUpdated(node); });
    } else {
        emit tree->NodeUpdated(node);
    }
}

void wFeatureTree::takePending(INode* node) {
    const std::lock_guard lock(m_pendingMutex);
    m_pending.erase(node);
}

void wFeatureTree::OnNodeChanged(INode* node) {
    takePending(node);
    guarded("changed feature", [&] {
        CNodePtr changed(node);
        auto* model = static_cast<FeatureModel*>(GetCurrentModel());
        if (model->refresh(*changed) && changed->GetName() == "AcquisitionMode") {
            emit AcquisitionModeUpdated(m_camera);
        }
    });
}

// --- search

void wFeatureTree::GetCategoryNodesList(INodeMap& map, CategoryList& list) {
    list.clear();
    guarded("categories", [&] {
        CCategoryPtr root(map.GetNode("Root"));
        if (!root.IsValid() || !IsReadable(root->GetAccessMode())) {
            return;
        }
        value_vector features;
        root->GetFeatures(features);
        for (IValue* feature : features) {
            if (CCategoryPtr(feature).IsValid()) {
                list.emplace_back(feature);
            }
        }
    });
}

std::set<gcstring> wFeatureTree::displayNames(const CategoryList& categories) {
    const std::lock_guard lock(m_categoryMutex);
    std::set<gcstring> names;
    for (const CNodePtr& category : categories) {
        names.insert(category->GetDisplayName());
    }
    return names;
}

void wFeatureTree::OnRefreshTree() {
    if (!m_searchBox->text().isEmpty()) {
        OnCreateFilteredTreeModel();
        finishView();
        return;
    }
    clearFilteredTreeModel();
    m_treeView->showModel(m_model);
    m_treeView->setEnabled(true);
    OnSortTreeByCategory();
}

void wFeatureTree::OnUpdateFilteredModel() {
    if (!m_searchBox->text().isEmpty()) {
        OnCreateFilteredTreeModel();
        finishView();
    }
}

void wFeatureTree::OnCreateFilteredTreeModel() {
    clearFilteredTreeModel();
    QRegularExpression pattern(m_searchBox->text(), QRegularExpression::CaseInsensitiveOption |
                                                        QRegularExpression::ExtendedPatternSyntaxOption);
    m_treeView->setEnabled(pattern.isValid());
    QStringList names;
    if (pattern.isValid()) {
        pattern.optimize();
        names = FeaturePopulator::matchingNames(*m_model, pattern);
    }
    guarded("filtered features", [&] {
        // The maps in which to look, each with the names that its categories show.
        std::vector<std::pair<INodeMap*, std::set<gcstring>>> maps;
        if (m_camera.IsValid()) {
            maps = {{&m_camera->GetNodeMap(), displayNames(m_deviceCategories)},
                    {&m_camera->GetTLDeviceNodeMap(), displayNames(m_tlDeviceCategories)},
                    {&m_camera->GetTLStreamNodeMap(), displayNames(m_streamCategories)}};
        } else if (m_interface.IsValid()) {
            maps = {{&m_interface->GetTLNodeMap(), displayNames(m_interfaceCategories)}};
        }
        m_filteredModel->rebuild([&] {
            FeaturePopulator populator(*m_filteredModel, nullptr);
            for (const QString& name : names) {
                const gcstring key(name.toUtf8().constData());
                for (const auto& [map, categories] : maps) {
                    populator.addFeature(*map, key, categories);
                }
            }
        });
    });
    m_treeView->showModel(m_filteredModel);
}
