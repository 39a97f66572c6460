#pragma once

#include <QScrollArea>
#include <QWheelEvent>

/// A scroll area that leaves the wheel to its surroundings, where it zooms. User-interface thread.
class ImageScrollArea : public QScrollArea {
    Q_OBJECT

public:
    using QScrollArea::QScrollArea;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};
