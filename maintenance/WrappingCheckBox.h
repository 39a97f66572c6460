#pragma once

#include <QCheckBox>

/// A check box whose text breaks into as many lines as its width asks for, as a `QLabel` does; a plain check
/// box keeps one line and makes a narrow dock scroll sideways. Line breaks at the text's ends are not shown.
/// A widget like any other: user-interface thread.
class WrappingCheckBox : public QCheckBox {
    Q_OBJECT

public:
    explicit WrappingCheckBox(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;

private:
    /// Pixels from the left edge to the text.
    int textLeft() const;
    QRect textRect(int width) const;
};
