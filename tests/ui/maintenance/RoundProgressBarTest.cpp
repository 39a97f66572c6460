#include "QRoundProgressBar.h"

#include <QImage>
#include <QtMath>

#include <gtest/gtest.h>

namespace {

const QColor kBar(200, 0, 0);
const QColor kDisc(0, 200, 0);
const QColor kInside(0, 0, 200);
const QColor kWindow(250, 250, 250);

class Bar : public QRoundProgressBar {
public:
    Bar() {
        QPalette colors;
        colors.setColor(QPalette::Highlight, kBar);
        colors.setColor(QPalette::Base, kDisc);
        colors.setColor(QPalette::AlternateBase, kInside);
        colors.setColor(QPalette::Window, kWindow);
        colors.setColor(QPalette::Shadow, Qt::black);
        setPalette(colors);
        resize(200, 200);
        setFormat(QString());
    }

    QString Text() const { return valueToText(value()); }

    /// The colour on the ring `degrees` clockwise from the top, at `radius` of the widget's half side.
    QColor At(double degrees, double radius) {
        const QImage image = Picture();
        const double side = qMin(width(), height());
        const double angle = qDegreesToRadians(degrees - 90.0);
        return image.pixelColor(static_cast<int>(side / 2 * (1 + radius * std::cos(angle))),
                                static_cast<int>(side / 2 * (1 + radius * std::sin(angle))));
    }

    QImage Picture() { return grab().toImage(); }
};

TEST(RoundProgressBarTest, EveryStyleAtEverySizeShowsTheShare) {
    struct Case {
        QRoundProgressBar::BarStyle style;
        double radius; ///< where the bar is seen
        QColor rest;
    };
    for (const Case& c : {Case{QRoundProgressBar::BarStyleDonut, 0.87, kDisc},
                          Case{QRoundProgressBar::BarStylePie, 0.5, kDisc},
                          Case{QRoundProgressBar::BarStyleLine, 0.78, kWindow}}) {
        for (const int side : {32, 100, 400}) {
            SCOPED_TRACE(testing::Message() << "style " << c.style << ", " << side << " pixels");
            Bar bar;
            bar.resize(side, side + 50);
            bar.setBarStyle(c.style);
            bar.setDataPenWidth(c.style == QRoundProgressBar::BarStyleLine ? side / 8.0 : 1.0);
            bar.setValue(50);
            EXPECT_EQ(bar.At(90, c.radius), kBar);
            EXPECT_EQ(bar.At(270, c.radius), c.rest);
            bar.setNullPosition(270);
            EXPECT_EQ(bar.At(90, c.radius), c.rest);
            EXPECT_EQ(bar.At(270, c.radius), kBar);
        }
    }
}

TEST(RoundProgressBarTest, ValuesStayInTheRange) {
    Bar bar;
    EXPECT_EQ(bar.value(), 25.0);
    bar.setValue(1000);
    EXPECT_EQ(bar.value(), 100.0);
    bar.setValue(-5);
    EXPECT_EQ(bar.value(), 0.0);
    bar.setValue(80.0);
    bar.setMaximum(50);
    EXPECT_EQ(bar.value(), 50.0);
    bar.setMinimum(60);
    EXPECT_EQ(bar.minimum(), 50.0);
    EXPECT_EQ(bar.maximum(), 60.0);
}

TEST(RoundProgressBarTest, TextFollowsFormatAndDecimals) {
    Bar bar;
    bar.setRange(10, 30);
    bar.setValue(15.0);
    bar.setDecimals(2);
    bar.setFormat("%v of %m = %p%");
    EXPECT_EQ(bar.Text(), "15.00 of 21.00 = 25.00%");
    bar.setDecimals(-1);
    EXPECT_EQ(bar.decimals(), 2);
    bar.setFormat("busy");
    EXPECT_EQ(bar.Text(), "busy");
    bar.setFormat("%V %P");
    EXPECT_EQ(bar.Text(), "%V %P");
    bar.resetFormat();
    EXPECT_EQ(bar.Text(), "");
    bar.setRange(5, 5);
    bar.setFormat("%p");
    EXPECT_EQ(bar.Text(), "0.00");
    EXPECT_FALSE(bar.Picture().isNull());
}

TEST(RoundProgressBarTest, DataColoursRunClockwiseFromTheStart) {
    for (const auto style : {QRoundProgressBar::BarStylePie, QRoundProgressBar::BarStyleLine}) {
        Bar bar;
        bar.setBarStyle(style);
        bar.setDataPenWidth(style == QRoundProgressBar::BarStyleLine ? 20 : 1);
        bar.setValue(100);
        bar.setDataColors({{0.0, Qt::red}, {1.0, Qt::blue}});
        const QColor early = bar.At(30, 0.9);
        const QColor late = bar.At(330, 0.9);
        EXPECT_GT(early.red(), 200) << style;
        EXPECT_GT(late.blue(), 200) << style;
        bar.setNullPosition(270);
        EXPECT_GT(bar.At(210, 0.9).red(), 200) << style;
    }
}

} // namespace
