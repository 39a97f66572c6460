#include "FeatureModel.h"

#include "Guarded.h"

#include <QBrush>
#include <QScopeGuard>
#include <QSignalBlocker>

using namespace Norvane::GenApi;

FeatureModel::FeatureModel(QObject* parent) : QStandardItemModel(0, 2, parent) {
    const auto forget = [this] { m_indexed = false; };
    connect(this, &QAbstractItemModel::rowsInserted, this, forget);
    connect(this, &QAbstractItemModel::rowsAboutToBeRemoved, this, forget);
    connect(this, &QAbstractItemModel::modelAboutToBeReset, this, forget);
    clearRows();
}

void FeatureModel::clearRows() {
    clear();
    setColumnCount(2);
    setHorizontalHeaderLabels({QString(), QString()});
    m_indexed = false;
}

void FeatureModel::rebuild(const std::function<void()>& build) {
    beginResetModel();
    const auto finish = qScopeGuard([this] {
        m_indexed = false;
        endResetModel();
    });
    const QSignalBlocker blocker(this);
    build();
}

QVariant FeatureModel::data(const QModelIndex& index, int role) const {
    if (role == Qt::SizeHintRole && m_rowHeight > 0 && index.column() == 0) {
        return QSize(0, m_rowHeight);
    }
    return QStandardItemModel::data(index, role);
}

QStandardItem* FeatureModel::makeHeaderItem(const QString& title) {
    auto* item = new QStandardItem(title);
    item->setEditable(false);
    setTopLevelLook(item);
    return item;
}

QStandardItem* FeatureModel::makeCategoryItem(INode& node) {
    auto* item = new QStandardItem(tr(node.GetDisplayName().c_str()));
    item->setData(QString::fromUtf8(node.GetName().c_str()), Qt::WhatsThisRole);
    item->setEditable(false);
    return item;
}

QList<QStandardItem*> FeatureModel::makeFeatureRow(INode& node, EAccessMode access) {
    QStandardItem* name = makeCategoryItem(node);
    auto* value = new QStandardItem;
    NodeInfo info;
    info.node = &node;
    QVariant shown = 0;
    const bool known = guarded("feature value", [&] {
        info.controlType = Mapper::ControlTypeFor(node, access);
        shown = Mapper::CellValue(node, access);
    });
    value->setData(shown, Qt::EditRole);
    value->setData(QVariant::fromValue(info), NodeInfoRole);
    value->setData(static_cast<int>(known ? access : NA), AccessModeRole);
    return {name, value};
}

void FeatureModel::setTopLevelLook(QStandardItem* item) {
    item->setData(QBrush(QColor(220, 220, 220, 255)), Qt::BackgroundRole);
}

QString FeatureModel::nodeName(const QModelIndex& index) {
    return index.sibling(index.row(), 0).data(Qt::WhatsThisRole).toString();
}

bool FeatureModel::refresh(INode& node) {
    if (!m_indexed) {
        m_byText.clear();
        addToIndex(invisibleRootItem());
        m_indexed = true;
    }
    const QList<QStandardItem*> rows = m_byText.values(tr(node.GetDisplayName().c_str()));
    if (rows.isEmpty()) {
        return false;
    }
    const EAccessMode access = node.GetAccessMode();
    const QVariant value = Mapper::CellValue(node, access);
    for (const QStandardItem* row : rows) {
        const QModelIndex cell = row->index().sibling(row->row(), 1);
        if (cell.data(NodeInfoRole).isNull()) {
            continue;
        }
        setData(cell, static_cast<int>(access), AccessModeRole);
        if (value.isValid()) {
            setData(cell, value, Qt::EditRole);
        }
    }
    return true;
}

void FeatureModel::addToIndex(QStandardItem* parent) {
    for (int row = 0; row < parent->rowCount(); ++row) {
        QStandardItem* item = parent->child(row);
        m_byText.insert(item->text(), item);
        addToIndex(item);
    }
}
