#pragma once

#include <QGraphicsView>

class wImageDisplay;

/// A graphics view whose wheel zooms the image display that it belongs to. User-interface thread.
class GraphicsView : public QGraphicsView {
    Q_OBJECT

public:
    explicit GraphicsView(wImageDisplay* display, QWidget* parent = nullptr)
        : QGraphicsView(parent), m_display(display) {}

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    wImageDisplay* m_display;
};
