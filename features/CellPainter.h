#pragma once

#include "Mapper.h"

#include <QIcon>
#include <QSize>
#include <QStyleOptionViewItem>

#include <map>
#include <memory>

class QPainter;
class QWidget;

/// Draws value cells as controls through the application's style. For each kind it keeps one hidden control,
/// which carries style and font and gives the size: making one per cell would cost more than the drawing.
/// User-interface thread.
class CellPainter {
public:
    CellPainter();
    ~CellPainter();

    /// Draws one cell. `value` is its edit data. While the cell is being edited only its ground is drawn.
    void paint(QPainter& painter, const QStyleOptionViewItem& option, ControlType kind, const QVariant& value,
               bool writable, bool edited) const;
    /// The size of the kind's control; invalid for CT_None.
    QSize sizeHint(ControlType kind) const;
    int rowHeight() const;

private:
    QWidget* control(ControlType kind) const;
    void paintButton(QPainter& painter, const QStyleOptionViewItem& cell, const QString& text) const;
    void paintCheckBox(QPainter& painter, const QStyleOptionViewItem& cell, bool checked) const;
    void paintComboBox(QPainter& painter, const QStyleOptionViewItem& cell, const QString& text) const;
    void paintSpinBox(QPainter& painter, const QStyleOptionViewItem& cell, const QString& text) const;
    void paintSlider(QPainter& painter, const QStyleOptionViewItem& cell, const QVariant& value) const;
    void paintText(QPainter& painter, const QStyleOptionViewItem& cell, const QString& text) const;

    mutable std::map<ControlType, std::unique_ptr<QWidget>> m_controls;
    QIcon m_lock;
};
