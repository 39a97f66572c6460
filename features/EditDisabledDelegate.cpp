#include "EditDisabledDelegate.h"

QWidget* EditDisabledDelegate::createEditor(QWidget*, const QStyleOptionViewItem&, const QModelIndex&) const {
    return nullptr;
}
