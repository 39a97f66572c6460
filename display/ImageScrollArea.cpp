#include "ImageScrollArea.h"

#include <QFocusEvent>
#include <QPalette>
#include <QResizeEvent>
#include <QWheelEvent>

namespace {

constexpr int kRingWidth = 2;
constexpr QRgb kRingColor = 0xff2f7fd6; // as the style sheet marks the focus elsewhere

bool isByKey(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
}

} // namespace

ImageScrollArea::ImageScrollArea(QWidget* parent) : QScrollArea(parent), m_focusRing(new QWidget(this)) {
    m_focusRing->setAttribute(Qt::WA_TransparentForMouseEvents);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(kRingColor));
    m_focusRing->setPalette(palette);
    m_focusRing->setAutoFillBackground(true);
    m_focusRing->hide();
}

void ImageScrollArea::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void ImageScrollArea::focusInEvent(QFocusEvent* event) {
    QScrollArea::focusInEvent(event);
    if (isByKey(event->reason())) {
        m_focusRing->show();
        m_focusRing->raise();
    }
}

void ImageScrollArea::focusOutEvent(QFocusEvent* event) {
    QScrollArea::focusOutEvent(event);
    // The context menu, or another window, gives it back.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
        m_focusRing->hide();
    }
}

void ImageScrollArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    m_focusRing->setGeometry(rect());
    m_focusRing->setMask(QRegion(rect()) - rect().adjusted(kRingWidth, kRingWidth, -kRingWidth, -kRingWidth));
}
