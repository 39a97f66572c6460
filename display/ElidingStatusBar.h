#pragma once

#include <QStatusBar>

/// A status bar whose message may be longer than the bar is wide: it breaks into as many lines as the bar was
/// made for, one more in a smaller type where that saves the end of it, and the last one ends in an ellipsis;
/// the tool tip shows all of it. User-interface thread.
class ElidingStatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit ElidingStatusBar(QWidget* parent = nullptr);

    /// How many lines the bar is tall.
    void setLineCount(int lines);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// How a message is set: the type, and how many lines of it.
    struct Setting {
        QFont font;
        int lines;
    };

    QRect textRect() const;
    Setting settingFor(const QString& message) const;
    static bool fits(const QString& message, const Setting& setting, int width);
    void updateToolTip();

    int m_lines = 1;
};
