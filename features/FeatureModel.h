#pragma once

#include "Mapper.h"

#include <QMultiHash>
#include <QStandardItemModel>

#include <functional>

/// The rows of the feature tree: names in column 0, values in column 1. It knows how a row is built from a
/// node and finds rows by their names. Owned by wFeatureTree; user-interface thread.
class FeatureModel : public QStandardItemModel {
    Q_OBJECT

public:
    enum Role {
        NodeInfoRole = Qt::UserRole,
        /// EAccessMode of the node when its value was written, so that painting asks no camera.
        AccessModeRole = Qt::UserRole + 1,
    };

    explicit FeatureModel(QObject* parent);

    /// Back to two columns with empty headers and no row.
    void clearRows();
    /// Lets `build` change any number of rows; views and other listeners see one reset.
    void rebuild(const std::function<void()>& build);
    /// The height, in pixels, that every row asks for; 0 leaves it to the delegates.
    void setRowHeight(int height) { m_rowHeight = height; }

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    static QStandardItem* makeHeaderItem(const QString& title);
    static QStandardItem* makeCategoryItem(Norvane::GenApi::INode& node);
    /// Name and value items of one feature. `access` is the node's access mode, asked once by the caller. A
    /// value that cannot be read shows 0.
    static QList<QStandardItem*> makeFeatureRow(Norvane::GenApi::INode& node,
                                                Norvane::GenApi::EAccessMode access);
    /// The background of rows at the top level.
    static void setTopLevelLook(QStandardItem* item);
    /// The name of the node that a row shows; empty for a node map's header.
    static QString nodeName(const QModelIndex& index);

    /// Writes the node's value and access mode into every row that shows its display name.
    /// @return false when there is none.
    bool refresh(Norvane::GenApi::INode& node);

private:
    void addToIndex(QStandardItem* parent);

    QMultiHash<QString, QStandardItem*> m_byText; ///< column 0, all levels
    bool m_indexed = false;
    int m_rowHeight = 0;
};
