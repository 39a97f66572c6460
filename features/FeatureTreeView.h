#pragma once

#include "Mapper.h"

#include <QTreeView>

/// The tree of features. It decides which click or key opens an editor, because opening one can act on the
/// camera: a click runs a command once, and walking through the rows with the keyboard neither runs commands
/// nor takes the arrow keys away; Enter, F2, Space or typing edits then, Alt+Enter is a double-click. Owned
/// by wFeatureTree.
class FeatureTreeView : public QTreeView {
    Q_OBJECT

public:
    using QTreeView::QTreeView;

    /// Shows a model; the selection of the model shown before goes with it.
    void showModel(QAbstractItemModel* model);
    /// True while the editor that is being made was asked for by a click.
    bool isOpenedByClick() const { return m_openedByClick; }

signals:
    /// The keyboard, or a press that opened an editor, made another row the current one.
    void walkedTo(const QModelIndex& index);

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// A tool tip with the whole text of a cell that shows only a part of it.
    bool viewportEvent(QEvent* event) override;
    /// The ground of a row as its first item has it: with a style sheet for items the style draws none.
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;

private:
    bool open(const QModelIndex& index, bool byClick);

    bool m_pressing = false;
    bool m_typing = false;
    bool m_openedByClick = false;
    bool m_actedOnPress = false;
};
