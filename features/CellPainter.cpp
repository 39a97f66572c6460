#include "CellPainter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>

namespace {

constexpr int kLockSize = 14;
constexpr int kTextMargin = 4;
const QColor kSelectedGround(230, 240, 250);
const QColor kLockedGround(250, 250, 250);
const QColor kGrid(220, 220, 220); // gainsboro, as the name column's style sheet has it

template <class Option>
Option controlOption(const QStyleOptionViewItem& cell, const QWidget* control) {
    Option option;
    option.initFrom(control);
    option.rect = cell.rect;
    option.state &= ~(QStyle::State_HasFocus | QStyle::State_MouseOver);
    option.state.setFlag(QStyle::State_Enabled, cell.state & QStyle::State_Enabled);
    option.state |= QStyle::State_Active;
    option.palette.setCurrentColorGroup(cell.state & QStyle::State_Enabled ? QPalette::Active
                                                                           : QPalette::Disabled);
    return option;
}

} // namespace

CellPainter::CellPainter() : m_lock(QStringLiteral(":images/lock.png")) {}

CellPainter::~CellPainter() = default;

QWidget* CellPainter::control(ControlType kind) const {
    std::unique_ptr<QWidget>& control = m_controls[kind];
    if (!control) {
        switch (kind) {
        case CT_CheckBox:
            control = std::make_unique<QCheckBox>();
            break;
        case CT_ComboBox:
            control = std::make_unique<QComboBox>();
            break;
        case CT_SpinBox:
            control = std::make_unique<QSpinBox>();
            break;
        case CT_Button:
            control = std::make_unique<QPushButton>();
            break;
        case CT_Slider:
            control = std::make_unique<QSlider>(Qt::Horizontal);
            break;
        default:
            control = std::make_unique<QLineEdit>();
            break;
        }
        control->ensurePolished();
    }
    return control.get();
}

QSize CellPainter::sizeHint(ControlType kind) const {
    return kind > CT_Slider ? QSize() : control(kind)->sizeHint();
}

int CellPainter::rowHeight() const {
    int height = 0;
    for (const ControlType kind : {CT_LineEdit, CT_CheckBox, CT_ComboBox, CT_Slider}) {
        height = std::max(height, sizeHint(kind).height());
    }
    return height + 1; // the grid line
}

void CellPainter::paint(QPainter& painter, const QStyleOptionViewItem& option, ControlType kind,
                        const QVariant& value, bool writable, bool edited) const {
    painter.save();
    QStyleOptionViewItem cell = option;
    if (option.state & QStyle::State_Selected) {
        painter.fillRect(option.rect, kSelectedGround);
    }
    if (!writable) {
        painter.fillRect(option.rect, kLockedGround);
        const int side = std::min(kLockSize, option.rect.height());
        const QRect square(option.rect.right() - side + 1,
                           option.rect.top() + (option.rect.height() - side) / 2, side, side);
        m_lock.paint(&painter, square, Qt::AlignCenter);
        cell.rect.setRight(square.left() - 2);
        cell.state &= ~QStyle::State_Enabled;
    }
    painter.fillRect(QRect(option.rect.bottomLeft(), QSize(option.rect.width(), 1)), kGrid);
    cell.rect.adjust(0, 0, 0, -1);
    if (!edited) {
        switch (kind) {
        case CT_Button:
            paintButton(painter, cell, value.toString());
            break;
        case CT_CheckBox:
            paintCheckBox(painter, cell, value.toBool());
            break;
        case CT_ComboBox:
            paintComboBox(painter, cell, value.value<ComboBoxValues>().currentText);
            break;
        case CT_SpinBox:
            paintSpinBox(painter, cell, value.toString());
            break;
        case CT_Slider:
            paintSlider(painter, cell, value);
            break;
        default:
            paintText(painter, cell, value.toString());
            break;
        }
    }
    painter.restore();
}

void CellPainter::paintButton(QPainter& painter, const QStyleOptionViewItem& cell,
                              const QString& text) const {
    const QWidget* button = control(CT_Button);
    auto option = controlOption<QStyleOptionButton>(cell, button);
    option.text = text;
    option.state |= QStyle::State_Raised;
    button->style()->drawControl(QStyle::CE_PushButton, &option, &painter, button);
}

void CellPainter::paintCheckBox(QPainter& painter, const QStyleOptionViewItem& cell, bool checked) const {
    const QWidget* box = control(CT_CheckBox);
    auto option = controlOption<QStyleOptionButton>(cell, box);
    option.state |= checked ? QStyle::State_On : QStyle::State_Off;
    box->style()->drawControl(QStyle::CE_CheckBox, &option, &painter, box);
}

void CellPainter::paintComboBox(QPainter& painter, const QStyleOptionViewItem& cell,
                                const QString& text) const {
    const QWidget* box = control(CT_ComboBox);
    auto option = controlOption<QStyleOptionComboBox>(cell, box);
    option.currentText = text;
    option.frame = true;
    option.subControls = QStyle::SC_All;
    box->style()->drawComplexControl(QStyle::CC_ComboBox, &option, &painter, box);
    box->style()->drawControl(QStyle::CE_ComboBoxLabel, &option, &painter, box);
}

void CellPainter::paintSpinBox(QPainter& painter, const QStyleOptionViewItem& cell,
                               const QString& text) const {
    const QWidget* box = control(CT_SpinBox);
    auto option = controlOption<QStyleOptionSpinBox>(cell, box);
    option.frame = true;
    option.subControls = QStyle::SC_All;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    box->style()->drawComplexControl(QStyle::CC_SpinBox, &option, &painter, box);
    QStyleOptionViewItem inner = cell;
    inner.rect = box->style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, box);
    paintText(painter, inner, text);
}

void CellPainter::paintSlider(QPainter& painter, const QStyleOptionViewItem& cell,
                              const QVariant& value) const {
    const QWidget* slider = control(CT_Slider);
    auto option = controlOption<QStyleOptionSlider>(cell, slider);
    // The groove alone tells nobody the value, so its number stands beside it.
    QStyleOptionViewItem number = cell;
    number.rect.setLeft(cell.rect.left() + cell.rect.width() * 6 / 10);
    option.rect.setRight(number.rect.left() - 1);
    option.orientation = Qt::Horizontal;
    option.state |= QStyle::State_Horizontal;
    option.minimum = 0;
    option.maximum = 100;
    option.sliderPosition = option.sliderValue = std::clamp(value.toInt(), 0, 100);
    option.subControls = QStyle::SC_SliderGroove | QStyle::SC_SliderHandle;
    slider->style()->drawComplexControl(QStyle::CC_Slider, &option, &painter, slider);
    paintText(painter, number, value.toString());
}

void CellPainter::paintText(QPainter& painter, const QStyleOptionViewItem& cell, const QString& text) const {
    const QRect area = cell.rect.adjusted(kTextMargin, 0, -kTextMargin, 0);
    painter.setFont(cell.font);
    // Never the colour for selected text: the ground of a selected value stays light.
    painter.setPen(cell.palette.color(QPalette::Active, QPalette::Text));
    painter.drawText(area, static_cast<int>(Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine),
                     cell.fontMetrics.elidedText(text, Qt::ElideRight, area.width()));
}
