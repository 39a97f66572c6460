#pragma once

#include <QStyledItemDelegate>

/// The delegate of the name column: names are never edited.
class EditDisabledDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
};
