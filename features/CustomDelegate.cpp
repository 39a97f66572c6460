#include "CustomDelegate.h"

#include "FeatureModel.h"
#include "FeatureTreeView.h"
#include "Guarded.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPersistentModelIndex>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

using namespace Norvane::GenApi;

namespace {

/// Set on a check box until the click that opened it has been taken into account.
constexpr char kAwaitsClick[] = "awaitsClick";

NodeInfo nodeInfo(const QModelIndex& index) {
    return index.data(FeatureModel::NodeInfoRole).value<NodeInfo>();
}

bool isWritableNow(const NodeInfo& info) {
    bool writable = false;
    guarded("access mode", [&] { writable = IsWritable(static_cast<const IBase*>(info.node.Get())); });
    return writable;
}

QStandardItemModel* modelOf(const QModelIndex& index) {
    return qobject_cast<QStandardItemModel*>(const_cast<QAbstractItemModel*>(index.model()));
}

bool wasClicked(const QWidget* viewport) {
    const auto* view = viewport ? qobject_cast<const FeatureTreeView*>(viewport->parentWidget()) : nullptr;
    return !view || view->isOpenedByClick();
}

void showEntries(QComboBox& box, const ComboBoxValues& values) {
    QStringList shown;
    for (int i = 0; i < box.count(); ++i) {
        shown << box.itemText(i);
    }
    if (shown != values.entries) {
        box.clear();
        box.addItems(values.entries);
    }
    box.setCurrentIndex(values.entries.indexOf(values.currentText));
}

} // namespace

CustomDelegate::CustomDelegate(QObject* parent) : QStyledItemDelegate(parent) {
    // Escape leaves the camera as it is: a line edit that loses the focus would still report its text.
    connect(this, &QAbstractItemDelegate::closeEditor, this, [](QWidget* editor, EndEditHint hint) {
        if (hint == RevertModelCache) {
            editor->blockSignals(true);
        }
    });
}

QWidget* CustomDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
    const NodeInfo info = nodeInfo(index);
    const bool writable = isWritableNow(info);
    if (index.column() != 1) {
        return QStyledItemDelegate::createEditor(parent, option, index);
    }
    QWidget* editor = nullptr;
    switch (info.controlType) {
    case CT_LineEdit:
        return makeTextEditor(parent, info, writable, index);
    case CT_CheckBox:
        editor = makeCheckBox(parent, info, index);
        break;
    case CT_ComboBox:
        editor = makeComboBox(parent, info, index);
        break;
    case CT_SpinBox:
        editor = makeSpinBox(parent, info, index);
        break;
    case CT_Button:
        commitButtonPress(info.node);
        return nullptr;
    case CT_Slider:
        editor = makeSlider(parent, info, index);
        break;
    default:
        editor = QStyledItemDelegate::createEditor(parent, option, index);
        if (editor) {
            editor->setEnabled(false);
        }
        return editor;
    }
    editor->setEnabled(writable);
    return editor;
}

QWidget* CustomDelegate::makeTextEditor(QWidget* parent, const NodeInfo& info, bool writable,
                                        const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (!writable) {
        auto* label = new QLabel(text, parent);
        label->setTextFormat(Qt::PlainText);
        label->setContentsMargins(2, 2, 2, 2);
        return label;
    }
    auto* edit = new QLineEdit(text, parent);
    edit->setFrame(true);
    edit->setReadOnly(false);
    edit->setContentsMargins(2, 2, 2, 2);
    edit->setAccessibleName(index.sibling(index.row(), 0).data().toString());
    const QPersistentModelIndex cell(index);
    connect(edit, &QLineEdit::editingFinished, this,
            [this, node = info.node, edit, model = modelOf(index), cell] {
                // Leaving a field that nobody touched is no wish to write: a shown text can be shorter than
                // the value.
                if (!edit->isModified() && edit->text() == cell.data(Qt::EditRole).toString()) {
                    return;
                }
                edit->setModified(false);
                commitLineEdit(node, edit->text(), model, cell);
                // What the camera holds now: closing the editor reports once more.
                edit->setText(cell.data(Qt::EditRole).toString());
            });
    return edit;
}

QWidget* CustomDelegate::makeCheckBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const {
    auto* box = new QCheckBox(parent);
    box->setChecked(index.data(Qt::EditRole).toBool());
    box->setProperty(kAwaitsClick, wasClicked(parent));
    box->setAccessibleName(index.sibling(index.row(), 0).data().toString());
    const QPersistentModelIndex cell(index);
    connect(box, &QCheckBox::stateChanged, this, [this, node = info.node, box, model = modelOf(index), cell] {
        commitCheckBox(node, box->isChecked(), model, cell);
    });
    return box;
}

QWidget* CustomDelegate::makeComboBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const {
    auto* box = new QComboBox(parent);
    showEntries(*box, index.data(Qt::EditRole).value<ComboBoxValues>());
    box->setAccessibleName(index.sibling(index.row(), 0).data().toString());
    const QPersistentModelIndex cell(index);
    connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this, node = info.node, box, model = modelOf(index), cell] {
                commitComboBox(node, box->currentText(), model, cell);
            });
    return box;
}

QWidget* CustomDelegate::makeSpinBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const {
    auto* box = new QSpinBox(parent);
    box->setValue(index.data(Qt::EditRole).toInt());
    box->setAccessibleName(index.sibling(index.row(), 0).data().toString());
    const QPersistentModelIndex cell(index);
    connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this, node = info.node, model = modelOf(index), cell](int value) {
                commitSpinBox(node, value, model, cell);
            });
    return box;
}

QWidget* CustomDelegate::makeSlider(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const {
    auto* slider = new QSlider(Qt::Horizontal, parent);
    slider->setRange(0, 100);
    slider->setValue(index.data(Qt::EditRole).toInt());
    slider->setAutoFillBackground(true);
    slider->setAccessibleName(index.sibling(index.row(), 0).data().toString());
    const QPersistentModelIndex cell(index);
    connect(slider, &QSlider::valueChanged, this,
            [this, node = info.node, model = modelOf(index), cell](int value) {
                commitSliderRelease(node, value, model, cell);
            });
    return slider;
}

void CustomDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QVariant data = index.data(FeatureModel::NodeInfoRole);
    if (!data.canConvert<NodeInfo>()) {
        QStyledItemDelegate::setEditorData(editor, index);
        return;
    }
    const NodeInfo info = data.value<NodeInfo>();
    const bool writable = info.controlType <= CT_Slider && isWritableNow(info);
    if (editor->isEnabled() != writable) {
        editor->setEnabled(writable);
    }
    // This is also called whenever the camera's value changes while the editor is open.
    const QVariant value = index.data(Qt::EditRole);
    if (auto* box = qobject_cast<QCheckBox*>(editor)) {
        if (box->property(kAwaitsClick).toBool()) {
            box->setProperty(kAwaitsClick, false);
            if (writable && box->rect().contains(box->mapFromGlobal(QCursor::pos()))) {
                box->toggle();
            }
            return;
        }
        const QSignalBlocker blocker(box);
        box->setChecked(value.toBool());
    } else if (auto* combo = qobject_cast<QComboBox*>(editor)) {
        const QSignalBlocker blocker(combo);
        showEntries(*combo, value.value<ComboBoxValues>());
    } else if (auto* edit = qobject_cast<QLineEdit*>(editor)) {
        if (!edit->isModified() && edit->text() != value.toString()) {
            edit->setText(value.toString());
        }
    } else if (auto* label = qobject_cast<QLabel*>(editor)) {
        label->setText(value.toString());
    }
}

void CustomDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                  const QModelIndex& index) const {
    if (!index.data(FeatureModel::NodeInfoRole).canConvert<NodeInfo>()) {
        QStyledItemDelegate::setModelData(editor, model, index);
    }
}

void CustomDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                          const QModelIndex&) const {
    editor->setGeometry(option.rect);
}

void CustomDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    const NodeInfo info = nodeInfo(index);
    if (!info.node.IsValid()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QVariant access = index.data(FeatureModel::AccessModeRole);
    const bool writable =
        access.isValid() ? IsWritable(static_cast<EAccessMode>(access.toInt())) : isWritableNow(info);
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    const bool edited = view && view->isPersistentEditorOpen(index);
    QStyleOptionViewItem cell = option;
    cell.state |= QStyle::State_Enabled;
    m_painter.paint(*painter, cell, info.controlType, index.data(Qt::EditRole), writable, edited);
}

QSize CustomDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QVariant data = index.data(FeatureModel::NodeInfoRole);
    const QSize size =
        data.canConvert<NodeInfo>() ? m_painter.sizeHint(data.value<NodeInfo>().controlType) : QSize();
    return size.isValid() ? size : QStyledItemDelegate::sizeHint(option, index);
}

bool CustomDelegate::eventFilter(QObject* editor, QEvent* event) {
    if (event->type() == QEvent::Wheel) {
        event->ignore();
        return true;
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}

void CustomDelegate::commitLineEdit(CNodePtr node, const QString& value, QStandardItemModel* model,
                                    QModelIndex index) const {
    commitData(node, QVariant(value), model, index);
}

void CustomDelegate::commitCheckBox(CNodePtr node, bool checked, QStandardItemModel* model,
                                    QModelIndex index) const {
    commitData(node, QVariant(checked), model, index);
}

void CustomDelegate::commitComboBox(CNodePtr node, const QString& value, QStandardItemModel* model,
                                    QModelIndex index) const {
    commitLineEdit(node, value, model, index);
}

void CustomDelegate::commitSpinBox(CNodePtr node, int value, QStandardItemModel* model,
                                   QModelIndex index) const {
    commitData(node, QVariant(value), model, index);
}

void CustomDelegate::commitButtonPress(CNodePtr node) const {
    guarded("execute", [&] {
        CCommandPtr command(node);
        if (command.IsValid() && IsAvailable(command->GetAccessMode())) {
            command->Execute(true);
        }
    });
}

void CustomDelegate::commitSliderRelease(CNodePtr node, int value, QStandardItemModel* model,
                                         QModelIndex index) const {
    commitSpinBox(node, value, model, index);
}

void CustomDelegate::commitData(CNodePtr node, const QVariant& value, QStandardItemModel* model,
                                QModelIndex index) const {
    guarded("write", [&] {
        if (!node.IsValid() || node->GetAccessMode() != RW) {
            return;
        }
        ControlType type = CT_None;
        m_mapper.GetControlType(node, type);
        m_mapper.SetNodeValue(node, value);
        if (model) {
            m_mapper.SetModelData(node, type, model, index);
        }
    });
}
