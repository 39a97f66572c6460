#include "FeatureTreeView.h"

#include "FeatureModel.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>

#include <algorithm>

namespace {

constexpr int kCellMargins = 8;

bool isTyped(const QEvent* event, std::initializer_list<int> keys) {
    if (!event || event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

} // namespace

void FeatureTreeView::showModel(QAbstractItemModel* shown) {
    if (shown == model()) {
        return;
    }
    // A view leaves the selection of an earlier model alive and listening.
    QItemSelectionModel* old = selectionModel();
    setModel(shown);
    delete old;
}

bool FeatureTreeView::open(const QModelIndex& index, bool byClick) {
    const QScopedValueRollback<bool> rollback(m_openedByClick, byClick);
    return QTreeView::edit(index, AllEditTriggers, nullptr);
}

bool FeatureTreeView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    const bool asked = trigger == EditKeyPressed || isTyped(event, {Qt::Key_Space});
    QModelIndex cell = index;
    if (index.isValid() && index.column() == 0 && asked) {
        cell = index.sibling(index.row(), 1);
    }
    const QVariant info = cell.data(FeatureModel::NodeInfoRole);
    if (!info.canConvert<NodeInfo>()) {
        return false;
    }
    const ControlType kind = info.value<NodeInfo>().controlType;
    const bool actsAtOnce = kind == CT_Button || kind == CT_CheckBox;

    if (trigger == SelectedClicked && actsAtOnce) {
        // The press acted already when it made this cell the current one; else act now, not after the time of
        // a double click.
        return m_actedOnPress || open(cell, true);
    }
    if (trigger == CurrentChanged && m_pressing) {
        m_actedOnPress = actsAtOnce;
        return open(cell, true);
    }
    if (kind == CT_Button) {
        const bool run = trigger == AllEditTriggers || asked;
        return run && open(cell, false);
    }
    if (trigger == CurrentChanged && m_typing && kind != CT_LineEdit && kind != CT_CheckBox) {
        return false;
    }
    if (trigger == CurrentChanged || (asked && kind == CT_CheckBox)) {
        return open(cell, false);
    }
    return QTreeView::edit(cell, trigger, event);
}

void FeatureTreeView::mousePressEvent(QMouseEvent* event) {
    m_actedOnPress = false;
    const QScopedValueRollback<bool> rollback(m_pressing, event->button() == Qt::LeftButton);
    QTreeView::mousePressEvent(event);
    if (state() == EditingState) {
        emit walkedTo(currentIndex()); // where an editor has opened, the release is no click
    }
}

void FeatureTreeView::mouseReleaseEvent(QMouseEvent* event) {
    QTreeView::mouseReleaseEvent(event);
    m_actedOnPress = false;
}

void FeatureTreeView::keyPressEvent(QKeyEvent* event) {
    const QScopedValueRollback<bool> rollback(m_typing, true);
    const QModelIndex current = currentIndex();
    if (current.isValid() && event->modifiers() == Qt::AltModifier && event->key() == Qt::Key_Return) {
        emit doubleClicked(current);
        return;
    }
    if (current.isValid() && event->modifiers() == Qt::NoModifier) {
        const bool leaf = !model()->hasChildren(current.sibling(current.row(), 0));
        switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (edit(current, EditKeyPressed, event)) {
                return;
            }
            break;
        case Qt::Key_Right:
            if (leaf && current.column() == 0) {
                setCurrentIndex(current.sibling(current.row(), 1));
                return;
            }
            break;
        case Qt::Key_Left:
            if (current.column() == 1) {
                setCurrentIndex(current.sibling(current.row(), 0));
                return;
            }
            break;
        default:
            break;
        }
    }
    QTreeView::keyPressEvent(event);
    if (currentIndex().row() != current.row() || currentIndex().parent() != current.parent()) {
        emit walkedTo(currentIndex());
    }
}

bool FeatureTreeView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QTreeView::viewportEvent(event);
    }
    const auto* help = static_cast<QHelpEvent*>(event);
    const QModelIndex index = indexAt(help->pos());
    const QString text = index.data().toString();
    const QRect cell = visualRect(index);
    const bool cut = fontMetrics().horizontalAdvance(text) > cell.width() - kCellMargins;
    QToolTip::showText(help->globalPos(), cut ? text.toHtmlEscaped() : QString(), viewport(), cell);
    return true;
}

void FeatureTreeView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const QVariant ground = index.sibling(index.row(), 0).data(Qt::BackgroundRole);
    if (ground.isValid()) {
        painter->fillRect(option.rect, ground.value<QBrush>());
    }
    QTreeView::drawRow(painter, option, index);
}
