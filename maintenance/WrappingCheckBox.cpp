#include "WrappingCheckBox.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace {

/// Characters that a line should hold at least.
constexpr int kLeastLine = 16;
/// Characters that a line holds where there is room.
constexpr int kUsualLine = 40;
constexpr int kTextFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

} // namespace

WrappingCheckBox::WrappingCheckBox(const QString& text, QWidget* parent) : QCheckBox(text, parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum, QSizePolicy::CheckBox);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int WrappingCheckBox::textLeft() const {
    return style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this) +
           style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, this);
}

QRect WrappingCheckBox::textRect(int width) const {
    const QRect room(textLeft(), 0, std::max(1, width - textLeft()), QWIDGETSIZE_MAX);
    return fontMetrics().boundingRect(room, kTextFlags, text().trimmed());
}

int WrappingCheckBox::heightForWidth(int width) const {
    return std::max(textRect(width).height(),
                    style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, this));
}

QSize WrappingCheckBox::sizeHint() const {
    const int width = textLeft() + kUsualLine * fontMetrics().averageCharWidth();
    return {width, heightForWidth(width)};
}

QSize WrappingCheckBox::minimumSizeHint() const {
    const int width = textLeft() + kLeastLine * fontMetrics().averageCharWidth();
    return {width, fontMetrics().height()};
}

void WrappingCheckBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawControl(QStyle::CE_CheckBox, option);
    QRect textRoom(textLeft(), 0, width() - textLeft(), height());
    const int spare = height() - textRect(width()).height();
    textRoom.setTop(std::max(0, spare / 2));
    painter.drawItemText(textRoom, kTextFlags, palette(), isEnabled(), text().trimmed(), foregroundRole());
}

bool WrappingCheckBox::hitButton(const QPoint& pos) const {
    return rect().contains(pos);
}
