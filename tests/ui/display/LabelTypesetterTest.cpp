#include "LabelTypesetter.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

/// One frame with one label in a box of `size`, drawn by a typesetter that may have drawn others before.
QImage frame(LabelTypesetter& typesetter, const QString& text, const QSize& size, qreal ratio = 1) {
    QImage picture(QSize(200, 100) * ratio, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setPen(Qt::red);
    QFont font("DejaVu Sans");
    font.setPixelSize(16);
    typesetter.SetFont(font, painter);
    typesetter.Add(QRect(QPoint(20, 10), size), text);
    typesetter.Draw(painter);
    return picture;
}

QRect inked(const QImage& picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) != QColor(Qt::white)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

TEST(LabelTypesetterTest, TextStaysInItsBoxAndBreaksBetweenWords) {
    LabelTypesetter typesetter;
    const QRect wide = inked(frame(typesetter, "Confidence: 87.50%", {170, 80}));
    EXPECT_TRUE(QRect(18, 10, 172, 24).contains(wide)) << wide.x() << " " << wide.width();
    const QRect narrow = inked(frame(typesetter, "Confidence: 87.50%", {100, 80}));
    EXPECT_GT(narrow.height(), wide.height() + 10);
    EXPECT_LE(narrow.right(), 120);
    EXPECT_TRUE(inked(frame(typesetter, "Confidence: 87.50%", {100, 5})).isEmpty());
    const QRect cut = inked(frame(typesetter, "Unbreakable", {30, 80}));
    EXPECT_FALSE(cut.isEmpty());
    EXPECT_LE(cut.right(), 50);
}

TEST(LabelTypesetterTest, MoreWordsThanTheSheetHoldsAreAllDrawn) {
    LabelTypesetter busy;
    for (int i = 0; i < 1000; ++i) {
        const QString text = QString("class%1 %2").arg(i).arg(i * 7 % 1000);
        const QImage later = frame(busy, text, {170, 80});
        if (i % 50 == 0 || (i > 560 && i < 700)) {
            LabelTypesetter fresh;
            ASSERT_EQ(later, frame(fresh, text, {170, 80})) << text.toStdString();
        }
    }
}

TEST(LabelTypesetterTest, HighDensityScreensGetTheirOwnPixels) {
    LabelTypesetter typesetter;
    const QRect once = inked(frame(typesetter, "Class Id: 7", {170, 80}));
    const QRect twice = inked(frame(typesetter, "Class Id: 7", {170, 80}, 2));
    EXPECT_NEAR(twice.width(), 2 * once.width(), 6);
    EXPECT_NEAR(twice.left(), 2 * once.left(), 4);
}

} // namespace
