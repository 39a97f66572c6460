#include "ElidingStatusBar.h"

#include <QPainter>
#include <QStyleOption>
#include <QTextLayout>

#include <algorithm>

namespace {
constexpr int kMargin = 6;       // pixels left and right of the text
constexpr int kPadding = 2;      // above and below
constexpr int kSmallestType = 9; // pixels
} // namespace

ElidingStatusBar::ElidingStatusBar(QWidget* parent) : QStatusBar(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setLineCount(1);
    connect(this, &QStatusBar::messageChanged, this, &ElidingStatusBar::updateToolTip);
}

void ElidingStatusBar::setLineCount(int lines) {
    m_lines = lines;
    // More than one line takes all the height there is, so that a smaller type has room for another.
    setMinimumHeight(lines == 1 ? fontMetrics().lineSpacing() + 2 * kPadding : maximumHeight());
    update();
}

QRect ElidingStatusBar::textRect() const {
    return rect().adjusted(kMargin, kPadding, -kMargin, -kPadding);
}

bool ElidingStatusBar::fits(const QString& message, const Setting& setting, int width) {
    QTextLayout layout(message, setting.font);
    layout.beginLayout();
    int end = 0;
    for (int i = 0; i < setting.lines; ++i) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(width);
        end = line.textStart() + line.textLength();
    }
    layout.endLayout();
    return end >= message.trimmed().size();
}

ElidingStatusBar::Setting ElidingStatusBar::settingFor(const QString& message) const {
    Setting plain{font(), m_lines};
    if (m_lines == 1 || fits(message, plain, textRect().width())) {
        return plain;
    }
    Setting smaller{font(), m_lines + 1};
    for (int pixels = fontInfo().pixelSize(); pixels >= kSmallestType; --pixels) {
        smaller.font.setPixelSize(pixels);
        if (QFontMetrics(smaller.font).lineSpacing() * smaller.lines <= textRect().height()) {
            return smaller;
        }
    }
    return plain;
}

void ElidingStatusBar::updateToolTip() {
    const QString message = currentMessage();
    const QString text = fits(message, settingFor(message), textRect().width()) ? QString() : message;
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
    const Setting setting = settingFor(message);
    const QFontMetrics metrics(setting.font);
    painter.setFont(setting.font);
    QTextLayout layout(message, setting.font);
    layout.beginLayout();
    int top = area.top();
    const int lineHeight = metrics.lineSpacing();
    for (int i = 0; i < setting.lines; ++i) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(area.width());
        QString text = message.mid(line.textStart(), i + 1 < setting.lines ? line.textLength() : -1);
        text = metrics.elidedText(text.trimmed(), Qt::ElideRight, area.width());
        painter.drawText(QRect(area.left(), top, area.width(), lineHeight), Qt::AlignVCenter, text);
        top += lineHeight;
    }
    layout.endLayout();
}
