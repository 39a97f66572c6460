#include "GraphicsView.h"

#include "wImageDisplay.h"

#include <QWheelEvent>

void GraphicsView::wheelEvent(QWheelEvent* event) {
    if (event->angleDelta().y() < 1) {
        m_display->OnZoomOut();
    } else {
        m_display->OnZoomIn();
    }
    event->accept();
}
