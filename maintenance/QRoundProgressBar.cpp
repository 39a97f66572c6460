#include "QRoundProgressBar.h"

#include <QConicalGradient>
#include <QImage>
#include <QPainterPath>

#include <algorithm>

QRoundProgressBar::QRoundProgressBar(QWidget* parent) : QWidget(parent) {}

void QRoundProgressBar::setRange(double first, double second) {
    m_minimum = std::min(first, second);
    m_maximum = std::max(first, second);
    m_value = std::clamp(m_value, m_minimum, m_maximum);
    if (!m_dataColors.isEmpty()) {
        m_rebuildBrush = true;
    }
    update();
}

void QRoundProgressBar::setMinimum(double minimum) {
    setRange(minimum, m_maximum);
}

void QRoundProgressBar::setMaximum(double maximum) {
    setRange(m_minimum, maximum);
}

void QRoundProgressBar::setValue(double value) {
    if (m_value == value) {
        return;
    }
    m_value = value < m_minimum ? m_minimum : std::min(value, m_maximum);
    update();
}

void QRoundProgressBar::setValue(int value) {
    setValue(static_cast<double>(value));
}

void QRoundProgressBar::setNullPosition(double degrees) {
    if (m_nullPosition == degrees) {
        return;
    }
    m_nullPosition = degrees;
    if (!m_dataColors.isEmpty()) {
        m_rebuildBrush = true;
    }
    update();
}

void QRoundProgressBar::setBarStyle(BarStyle style) {
    if (m_barStyle == style) {
        return;
    }
    m_barStyle = style;
    update();
}

void QRoundProgressBar::setOutlinePenWidth(double pixels) {
    if (m_outlinePenWidth == pixels) {
        return;
    }
    m_outlinePenWidth = pixels;
    update();
}

void QRoundProgressBar::setDataPenWidth(double pixels) {
    if (m_dataPenWidth == pixels) {
        return;
    }
    m_dataPenWidth = pixels;
    update();
}

void QRoundProgressBar::setDataColors(const DataColors& stops) {
    if (m_dataColors == stops) {
        return;
    }
    m_dataColors = stops;
    m_rebuildBrush = true;
    update();
}

void QRoundProgressBar::setFormat(const QString& format) {
    if (m_format == format) {
        return;
    }
    m_format = format;
    valueFormatChanged();
}

void QRoundProgressBar::resetFormat() {
    m_format.clear();
    valueFormatChanged();
}

void QRoundProgressBar::setDecimals(int count) {
    if (count < 0 || m_decimals == count) {
        return;
    }
    m_decimals = count;
    valueFormatChanged();
}

void QRoundProgressBar::valueFormatChanged() {
    m_formatFlags = 0;
    if (m_format.contains(QLatin1String("%v"))) {
        m_formatFlags |= FormatHasValue;
    }
    if (m_format.contains(QLatin1String("%p"))) {
        m_formatFlags |= FormatHasPercent;
    }
    if (m_format.contains(QLatin1String("%m"))) {
        m_formatFlags |= FormatHasMaximum;
    }
    update();
}

QString QRoundProgressBar::valueToText(double value) const {
    QString text = m_format;
    const auto put = [&](const char* mark, double number) {
        text.replace(QLatin1String(mark), QString::number(number, 'f', m_decimals));
    };
    if (m_formatFlags & FormatHasValue) {
        put("%v", value);
    }
    if (m_formatFlags & FormatHasPercent) {
        const double range = m_maximum - m_minimum;
        put("%p", range > 0.0 ? (value - m_minimum) / range * 100.0 : 0.0);
    }
    if (m_formatFlags & FormatHasMaximum) {
        put("%m", m_maximum - m_minimum + 1.0);
    }
    return text;
}

void QRoundProgressBar::paintEvent(QPaintEvent*) {
    const double side = std::min(width(), height());
    const QRectF baseRect(1.0, 1.0, side - 2.0, side - 2.0);

    // The picture has the screen's own resolution, so that edges stay sharp on high-density screens.
    const double scale = devicePixelRatioF();
    QImage buffer(QSize(static_cast<int>(side), static_cast<int>(side)) * scale,
                  QImage::Format_ARGB32_Premultiplied);
    buffer.setDevicePixelRatio(scale);
    if (buffer.isNull()) {
        return;
    }
    buffer.fill(Qt::transparent);
    QPainter painter(&buffer);
    painter.setRenderHint(QPainter::Antialiasing);

    rebuildDataBrushIfNeeded();
    drawBackground(painter, QRectF(0.0, 0.0, side, side));
    drawBase(painter, baseRect);
    const double range = m_maximum - m_minimum;
    const double arcLength = range > 0.0 ? 360.0 / range * m_value : 0.0;
    drawValue(painter, baseRect, m_value, arcLength);
    QRectF innerRect;
    double innerRadius = 0.0;
    calculateInnerRect(baseRect, side, innerRect, innerRadius);
    drawInnerBackground(painter, innerRect);
    drawText(painter, innerRect, innerRadius, m_value);
    painter.end();

    QPainter screen(this);
    screen.fillRect(baseRect, palette().brush(QPalette::Window));
    screen.drawImage(0, 0, buffer);
}

void QRoundProgressBar::drawBackground(QPainter& painter, const QRectF& imageRect) {
    painter.fillRect(imageRect, palette().brush(QPalette::Window));
}

void QRoundProgressBar::drawBase(QPainter& painter, const QRectF& baseRect) {
    switch (m_barStyle) {
    case BarStyleDonut:
        painter.setPen(QPen(palette().color(QPalette::Shadow), m_outlinePenWidth));
        painter.setBrush(palette().brush(QPalette::Base));
        painter.drawEllipse(baseRect);
        break;
    case BarStylePie:
        painter.setPen(QPen(palette().color(QPalette::Base), m_outlinePenWidth));
        painter.setBrush(palette().brush(QPalette::Base));
        painter.drawEllipse(baseRect);
        break;
    case BarStyleLine: {
        const double inset = m_outlinePenWidth / 2.0;
        painter.setPen(QPen(palette().color(QPalette::Base), m_outlinePenWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(baseRect.adjusted(inset, inset, -inset, -inset));
        break;
    }
    }
}

QBrush QRoundProgressBar::valueBrush(const QRectF& baseRect) const {
    const QBrush& brush = palette().brush(QPalette::Highlight);
    if (!brush.gradient() || brush.gradient()->type() != QGradient::ConicalGradient) {
        return brush;
    }
    // The palette's gradient turns about the middle of whatever is drawn, and the middle of a sector is not
    // the circle's: a strip of the last colour would show beside the first.
    const auto* gradient = static_cast<const QConicalGradient*>(brush.gradient());
    QConicalGradient centred(baseRect.center(), gradient->angle());
    centred.setStops(gradient->stops());
    return centred;
}

void QRoundProgressBar::drawValue(QPainter& painter, const QRectF& baseRect, double value, double arcLength) {
    if (value == m_minimum) {
        return;
    }
    if (m_barStyle == BarStyleLine) {
        const double inset = m_dataPenWidth / 2.0;
        // A pen takes a brush as well as a colour, which lets the arc carry the gradient of the data colours.
        painter.setPen(QPen(valueBrush(baseRect), m_dataPenWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawArc(baseRect.adjusted(inset, inset, -inset, -inset),
                        static_cast<int>(m_nullPosition * 16), static_cast<int>(-arcLength * 16));
        return;
    }
    QPainterPath sector;
    sector.setFillRule(Qt::WindingFill);
    sector.moveTo(baseRect.center());
    sector.arcTo(baseRect, m_nullPosition, -arcLength);
    sector.lineTo(baseRect.center());
    painter.setBrush(valueBrush(baseRect));
    painter.setPen(QPen(palette().color(QPalette::Shadow), m_dataPenWidth));
    painter.drawPath(sector);
}

void QRoundProgressBar::calculateInnerRect(const QRectF&, double outerRadius, QRectF& innerRect,
                                           double& innerRadius) {
    innerRadius = m_barStyle == BarStyleLine ? outerRadius - m_outlinePenWidth : outerRadius * 0.75;
    const double offset = (outerRadius - innerRadius) / 2.0;
    innerRect = QRectF(offset, offset, innerRadius, innerRadius);
}

void QRoundProgressBar::drawInnerBackground(QPainter& painter, const QRectF& innerRect) {
    if (m_barStyle != BarStyleDonut) {
        return;
    }
    painter.setBrush(palette().brush(QPalette::AlternateBase));
    painter.drawEllipse(innerRect);
}

void QRoundProgressBar::drawText(QPainter& painter, const QRectF& innerRect, double innerRadius,
                                 double value) {
    if (m_format.isEmpty()) {
        return;
    }
    QFont textFont = font();
    const int size = static_cast<int>(std::max(0.05, 0.35 - m_decimals * 0.08) * innerRadius);
    textFont.setPixelSize(std::max(1, size));
    painter.setFont(textFont);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(innerRect, Qt::AlignCenter, valueToText(value));
}

void QRoundProgressBar::rebuildDataBrushIfNeeded() {
    if (!m_rebuildBrush) {
        return;
    }
    m_rebuildBrush = false;
    QConicalGradient gradient(0.5, 0.5, m_nullPosition);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    for (const auto& [position, color] : qAsConst(m_dataColors)) {
        // The gradient runs counter-clockwise, the bar clockwise.
        gradient.setColorAt(1.0 - position, color);
    }
    QPalette colors = palette();
    colors.setBrush(QPalette::Highlight, gradient);
    setPalette(colors);
}
