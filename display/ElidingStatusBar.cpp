#include "ElidingStatusBar.h"

#include <QPainter>
#include <QStyleOption>
#include <QTextLayout>

#include <algorithm>

namespace {
constexpr int kMargin = 6;  // pixels left and right of the text
constexpr int kPadding = 2; // above and below
} // namespace

ElidingStatusBar::ElidingStatusBar(QWidget* parent) : QStatusBar(parent) {
    setLineCount(1);
    connect(this, &QStatusBar::messageChanged, this, &ElidingStatusBar::updateToolTip);
}

void ElidingStatusBar::setLineCount(int lines) {
    m_lines = lines;
    setMinimumHeight(std::min(lines * fontMetrics().lineSpacing() + 2 * kPadding, maximumHeight()));
    update();
}

QRect ElidingStatusBar::textRect() const {
    return rect().adjusted(kMargin, kPadding, -kMargin, -kPadding);
}

void ElidingStatusBar::updateToolTip() {
    const QString message = currentMessage();
    const bool fits = fontMetrics().horizontalAdvance(message) <= textRect().width() * m_lines;
    const QString text = fits ? QString() : message;
    if (text.isEmpty() != toolTip().isEmpty() || underMouse()) {
        setToolTip(text);
    }
}

void ElidingStatusBar::resizeEvent(QResizeEvent* event) {
    QStatusBar::resizeEvent(event);
    updateToolTip();
}

void ElidingStatusBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_PanelStatusBar, &option, &painter, this);

    const QString message = currentMessage();
    const QRect area = textRect();
    painter.setPen(palette().color(foregroundRole()));
    QTextLayout layout(message, font());
    layout.beginLayout();
    int top = area.top();
    const int lineHeight = fontMetrics().lineSpacing();
    for (int i = 0; i < m_lines; ++i) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(area.width());
        QString text = message.mid(line.textStart(), i + 1 < m_lines ? line.textLength() : -1);
        text = fontMetrics().elidedText(text.trimmed(), Qt::ElideRight, area.width());
        painter.drawText(QRect(area.left(), top, area.width(), lineHeight), Qt::AlignVCenter, text);
        top += lineHeight;
    }
    layout.endLayout();
}
