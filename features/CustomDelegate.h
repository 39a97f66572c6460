#pragma once

#include "CellPainter.h"
#include "Mapper.h"

#include <QStyledItemDelegate>

class QStandardItemModel;

/// The delegate of the value column: paints each value as the control that suits its node, makes the editor
/// in place, and writes every change to the camera at once. What it needs comes from the cell (FeatureModel's
/// roles). User-interface thread; a slow camera holds it up for the time of a write. A write that the camera
/// refuses is dropped and the cell keeps its value.
class CustomDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit CustomDelegate(QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    /// The first call after a click opened a check box flips it: that click is meant for the box.
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// High enough for every kind of control, for views whose rows are all of one height.
    int rowHeight() const { return m_painter.rowHeight(); }

public slots:
    void commitLineEdit(Norvane::GenApi::CNodePtr node, const QString& value, QStandardItemModel* model,
                        QModelIndex index) const;
    void commitCheckBox(Norvane::GenApi::CNodePtr node, bool checked, QStandardItemModel* model,
                        QModelIndex index) const;
    void commitComboBox(Norvane::GenApi::CNodePtr node, const QString& value, QStandardItemModel* model,
                        QModelIndex index) const;
    void commitSpinBox(Norvane::GenApi::CNodePtr node, int value, QStandardItemModel* model,
                       QModelIndex index) const;
    void commitButtonPress(Norvane::GenApi::CNodePtr node) const;
    void commitSliderRelease(Norvane::GenApi::CNodePtr node, int value, QStandardItemModel* model,
                             QModelIndex index) const;

public:
    /// The one way by which a value reaches the camera; the cell then shows what the camera holds.
    void commitData(Norvane::GenApi::CNodePtr node, const QVariant& value, QStandardItemModel* model,
                    QModelIndex index) const;

protected:
    /// The wheel scrolls the tree, also over an open editor, and never changes the camera.
    bool eventFilter(QObject* editor, QEvent* event) override;

private:
    QWidget* makeTextEditor(QWidget* parent, const NodeInfo& info, bool writable,
                            const QModelIndex& index) const;
    QWidget* makeCheckBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const;
    QWidget* makeComboBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const;
    QWidget* makeSpinBox(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const;
    QWidget* makeSlider(QWidget* parent, const NodeInfo& info, const QModelIndex& index) const;

    Mapper m_mapper;
    CellPainter m_painter;
};
