#pragma once

#include <QScrollArea>

/// A scroll area that leaves the wheel to its surroundings, where it zooms, and shows with a ring over the
/// image when the Tab key has brought the focus here. User-interface thread.
class ImageScrollArea : public QScrollArea {
    Q_OBJECT

public:
    explicit ImageScrollArea(QWidget* parent);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* m_focusRing; ///< over the viewport, because a frame around it would take room from the image
};
