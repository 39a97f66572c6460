#pragma once

#include <QColor>
#include <QPainter>
#include <QPair>
#include <QString>
#include <QVector>
#include <QWidget>

/// A circular progress indicator: the value as a sector or an arc, with a text in the middle. Every colour
/// comes from the widget's palette, so the application's style decides how it looks; data colours replace the
/// palette's Highlight by a conical gradient. A widget like any other: user-interface thread.
class QRoundProgressBar : public QWidget {
    Q_OBJECT

public:
    enum BarStyle {
        BarStyleDonut = 0, ///< a sector on a disc, with an inner disc that carries the text
        BarStylePie = 1,   ///< a sector on a disc
        BarStyleLine = 2,  ///< an arc only
    };
    using DataColors = QVector<QPair<double, QColor>>; ///< gradient stops: position 0 to 1, colour

    explicit QRoundProgressBar(QWidget* parent = nullptr);

    double nullPosition() const { return m_nullPosition; }
    /// Where the bar starts, in degrees as Qt counts them: 0 at three o'clock, counter-clockwise.
    void setNullPosition(double degrees);
    BarStyle barStyle() const { return m_barStyle; }
    void setBarStyle(BarStyle style);
    double outlinePenWidth() const { return m_outlinePenWidth; }
    void setOutlinePenWidth(double pixels);
    double dataPenWidth() const { return m_dataPenWidth; }
    void setDataPenWidth(double pixels);
    void setDataColors(const DataColors& stops);
    QString format() const { return m_format; }
    /// The text in the middle: "%v" stands for the value, "%p" for the percentage, "%m" for the number of
    /// steps. An empty format draws no text.
    void setFormat(const QString& format);
    void resetFormat();
    int decimals() const { return m_decimals; }
    /// Digits after the point in the text; negative numbers are ignored.
    void setDecimals(int count);

    double value() const { return m_value; }
    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }

    QSize minimumSizeHint() const override { return {32, 32}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width; }

public slots:
    /// Bounds in either order; the value is clamped into them.
    void setRange(double first, double second);
    void setMinimum(double minimum);
    void setMaximum(double maximum);
    void setValue(double value);
    void setValue(int value);

protected:
    void paintEvent(QPaintEvent* event) override;

    virtual void drawBackground(QPainter& painter, const QRectF& imageRect);
    virtual void drawBase(QPainter& painter, const QRectF& baseRect);
    /// @param arcLength  degrees, clockwise from the null position.
    virtual void drawValue(QPainter& painter, const QRectF& baseRect, double value, double arcLength);
    virtual void calculateInnerRect(const QRectF& baseRect, double outerRadius, QRectF& innerRect,
                                    double& innerRadius);
    virtual void drawInnerBackground(QPainter& painter, const QRectF& innerRect);
    virtual void drawText(QPainter& painter, const QRectF& innerRect, double innerRadius, double value);
    virtual QString valueToText(double value) const;
    virtual void valueFormatChanged();

private:
    /// What fills the sector or draws the arc of the circle in `baseRect`.
    QBrush valueBrush(const QRectF& baseRect) const;
    enum FormatFlag { FormatHasValue = 1, FormatHasPercent = 2, FormatHasMaximum = 4 };

    void rebuildDataBrushIfNeeded();

    double m_minimum = 0.0;
    double m_maximum = 100.0;
    double m_value = 25.0;
    double m_nullPosition = 90.0;
    BarStyle m_barStyle = BarStyleDonut;
    double m_outlinePenWidth = 1.0;
    double m_dataPenWidth = 1.0;
    DataColors m_dataColors;
    bool m_rebuildBrush = false;
    QString m_format = QStringLiteral("%p%");
    int m_decimals = 1;
    int m_formatFlags = FormatHasPercent;
};
