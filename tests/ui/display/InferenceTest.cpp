#include "DisplayFixture.h"

#include "imaging/ChunkValues.h"
#include "imaging/ImageFactory.h"
#include "wInferenceDialog.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QFontDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

using Norvane::Test::SetText;

namespace {

TEST(InferenceOverlay, LabelFilesNameTheClasses) {
    struct Row {
        const char* name;
        QByteArray content;
        QStringList labels; // of classes 0, 1, 2, 3
    };
    const Row rows[] = {
        {"plain", "cat\ndog\nbird\n", {"cat", "dog", "bird", "3"}},
        {"empty line", "cat\n\nbird", {"cat", "1", "bird", "3"}},
        {"Windows line ends", "cat\r\ndog\r\n", {"cat", "dog", "2", "3"}},
        {"UTF-8 with mark", "\xEF\xBB\xBFK\xC3\xA4se\nB\xC3\xA4r\n", {"K\u00e4se", "B\u00e4r", "2", "3"}},
        {"very long line", QByteArray(1'000'000, 'x') + "\ndog\n", {QString(4096, 'x'), "dog", "2", "3"}},
        {"empty", "", {"0", "1", "2", "3"}},
    };
    const QTemporaryDir folder;
    for (const Row& row : rows) {
        QFile file(folder.path() + "/" + row.name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.content);
        file.close();
        InferenceOverlay overlay;
        overlay.SetClassLabelLocation(file.fileName());
        for (int i = 0; i < row.labels.size(); ++i) {
            EXPECT_EQ(overlay.ClassLabel(i), row.labels[i]) << row.name << ", class " << i;
        }
        overlay.SetClassLabelLocation(folder.path()); // a folder: what was read before is forgotten
        EXPECT_EQ(overlay.ClassLabel(0), "0") << row.name;
    }
}

Norvane::ImagePtr imageWith(const Norvane::ChunkData::Values& values) {
    static std::uint8_t pixels[16 * 16];
    Norvane::Imaging::ImageLayout layout;
    layout.format = Norvane::PixelFormat_Mono8;
    layout.width = 16;
    layout.height = 16;
    return Norvane::Imaging::MakeImage(
        layout, pixels, sizeof pixels, nullptr,
        Norvane::ChunkData(std::make_shared<Norvane::ChunkData::Values>(values)));
}

/// The smallest rectangle around everything that the overlay draws for one box; empty for nothing.
QRect drawnFor(const Norvane::InferenceBoundingBox& box, float zoomFactor) {
    Norvane::ChunkData::Values values;
    values.boundingBoxes = Norvane::InferenceBoundingBoxResult({box});
    QImage canvas(300, 200, QImage::Format_RGB32);
    canvas.fill(Qt::white);
    InferenceOverlay overlay;
    QPainter painter(&canvas);
    overlay.Prepare(painter, zoomFactor);
    EXPECT_EQ(overlay.DrawDetection(painter, imageWith(values), zoomFactor), "");
    painter.end();
    QRect drawn;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            drawn |= canvas.pixel(x, y) == qRgb(255, 255, 255) ? QRect() : QRect(x, y, 1, 1);
        }
    }
    return drawn;
}

TEST(InferenceOverlay, BoxesStandWhereTheCameraSawThemAndBadOnesDoNoHarm) {
    using Box = Norvane::InferenceBoundingBox;
    constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
    constexpr float kSecondZoomLevel = 1.15F * 1.15F;
    const QRect drawn = drawnFor({Box::Rectangle, 0, 0.5F, 10, 20, 110, 70}, kSecondZoomLevel);
    const QRect expected(13, 26, 133, 67); // an outline of 132 x 66 takes one pixel more
    EXPECT_TRUE(drawn.adjusted(-1, -1, 1, 1).contains(expected) &&
                expected.adjusted(-1, -1, 1, 1).contains(drawn))
        << drawn.x() << ' ' << drawn.y() << ' ' << drawn.width() << ' ' << drawn.height();

    EXPECT_TRUE(drawnFor({Box::Circle, 0, 0.5F, 10, 20, 110, 70}, 1).isEmpty());
    EXPECT_TRUE(drawnFor({static_cast<Box::BoxType>(777), 0, 0.5F, 10, 20, 110, 70}, 1).isEmpty());
    EXPECT_TRUE(drawnFor({Box::Rectangle, 0, 0.5F, 5000, 5000, 6000, 6000}, 1).isEmpty());
    drawnFor({Box::Rectangle, -5, 7e30F, 110, 70, 10, 20}, 1); // reversed corners, confidence beyond all
    drawnFor({Box::Rectangle, 0, kNothing, -32768, -32768, 32767, 32767}, 4);
}

TEST(InferenceOverlay, TheClassificationsTextFollowsThreshold) {
    struct Row {
        double threshold, confidence;
        const char* text;
    };
    const Row rows[] = {
        {0.5, 0.499, "Classification Threshold Not Met"},    {0.5, 0.5, "Class: 7<br>Confidence: 50.00%"},
        {0.0, -1.0, "Classification Threshold Not Met"},     {1.0, 3.0, "Class: 7<br>Confidence: 300.00%"},
        {0.5, std::nan(""), "Class: 7<br>Confidence: nan%"}, // no threshold is greater than that
    };
    for (const Row& row : rows) {
        Norvane::ChunkData::Values values;
        values.inferenceResult = 7;
        values.inferenceConfidence = row.confidence;
        InferenceOverlay overlay;
        overlay.SetThreshold(row.threshold);
        EXPECT_EQ(overlay.DescribeClassification(imageWith(values)), row.text);
    }
}

class InferenceDialogTest : public testing::Test {
protected:
    InferenceDialogTest() {
        m_dialog.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&m_dialog));
        m_dialog.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_dialog));
    }
    template <class Control>
    Control* Get(const char* name) {
        return m_dialog.findChild<Control*>(name);
    }
    void Press(QDialogButtonBox::StandardButton button) {
        QTest::mouseClick(Get<QDialogButtonBox>("buttonBox")->button(button), Qt::LeftButton);
    }
    void Type(const char* edit, const QString& text) {
        auto* line = Get<QLineEdit>(edit);
        line->selectAll();
        QTest::keyClicks(line, text);
    }

    wInferenceDialog m_dialog;
};

TEST_F(InferenceDialogTest, ApplySendsEverythingAndWarnsOfAMissingFile) {
    EXPECT_EQ(m_dialog.windowTitle(), "Inference Label Configuration - No Camera Connected");
    EXPECT_EQ(m_dialog.size(), QSize(280, 400));
    QSignalSpy location(&m_dialog, &wInferenceDialog::InferenceClassLabelLocationChanged);
    QSignalSpy threshold(&m_dialog, &wInferenceDialog::InferenceClassificationConfidenceThresholdChanged);
    QSignalSpy display(&m_dialog, &wInferenceDialog::InferenceLabelDisplaySettingsChanged);
    Type("editBox_Confidence", "150");
    EXPECT_EQ(Get<QLineEdit>("editBox_Confidence")->text(), "100");
    Type("editBox_Confidence", "50");
    Type("editBox_Filename", "/tmp");
    Get<QSpinBox>("spinBox_FontSize")->setValue(23);
    Get<QCheckBox>("checkBox_AutoFont")->click();
    Press(QDialogButtonBox::Ok);

    ASSERT_EQ(location.count(), 1);
    EXPECT_EQ(location.first().first().toString(), "/tmp");
    EXPECT_EQ(threshold.first().first().toDouble(), 0.5);
    EXPECT_FALSE(display.first().at(0).toBool());
    EXPECT_EQ(display.first().at(1).value<QFont>().pointSize(), 23);
    EXPECT_EQ(display.first().at(2).value<QColor>(), QColor(Qt::darkGreen));
    auto* box = Get<QMessageBox>("");
    ASSERT_TRUE(box);
    EXPECT_EQ(box->text(), "Warning: File '/tmp' does not exist");
    EXPECT_TRUE(m_dialog.isVisible());
}

TEST_F(InferenceDialogTest, CancelGoesBackToWhatWasApplied) {
    const QTemporaryDir folder;
    QFile labels(folder.path() + "/labels.txt");
    ASSERT_TRUE(labels.open(QIODevice::WriteOnly));
    Type("editBox_Filename", labels.fileName());
    Type("editBox_Confidence", "25");
    Get<QSpinBox>("spinBox_FontSize")->setValue(17);
    Press(QDialogButtonBox::Ok);

    QSignalSpy hidden(&m_dialog, &wInferenceDialog::InferenceDialogHidden);
    Type("editBox_Filename", "elsewhere");
    Type("editBox_Confidence", "99");
    Get<QSpinBox>("spinBox_FontSize")->setValue(40);
    Get<QCheckBox>("checkBox_AutoFont")->click();
    Press(QDialogButtonBox::Cancel);
    EXPECT_EQ(hidden.count(), 1);
    EXPECT_EQ(Get<QLineEdit>("editBox_Filename")->text(), labels.fileName());
    EXPECT_EQ(Get<QLineEdit>("editBox_Confidence")->text(), "25");
    EXPECT_EQ(Get<QSpinBox>("spinBox_FontSize")->value(), 17);
    EXPECT_TRUE(Get<QCheckBox>("checkBox_AutoFont")->isChecked());
}

class OverlayTest : public DisplayFixture {};

TEST_F(OverlayTest, ClassificationStandsInTheCorner) {
    Open("inference = classification");
    SetText(m_camera->GetNodeMap(), "InferenceEnable", "true");
    StreamUntilShown();
    EXPECT_SOON(CornerLabel().contains("Class: ") && CornerLabel().contains("<br>Confidence: "));
    EXPECT_TRUE(CornerLabel().startsWith("<font color= #008000>")) << CornerLabel().toStdString();

    Choose("Configure Inference Label");
    auto* dialog = m_display->findChild<wInferenceDialog*>();
    ASSERT_TRUE(dialog && dialog->isVisible());
    EXPECT_EQ(dialog->windowTitle(), "Inference Label Configuration - 1001");
    emit dialog->InferenceClassificationConfidenceThresholdChanged(1.0);
    EXPECT_SOON(CornerLabel().contains("Classification Threshold Not Met"));
    dialog->close();
    EXPECT_FALSE(dialog->isVisible());

    // Turning inference off on the camera shows from the next start on.
    Click("actionStopStream");
    SetText(m_camera->GetNodeMap(), "InferenceEnable", "false");
    Click("actionStartStream");
    EXPECT_SOON(CornerLabel().contains("Inference is not fully enabled"));
}

TEST_F(OverlayTest, DetectionDrawsBoxesOverTheImage) {
    Open("inference = detection\nwidth = 640\nheight = 480");
    SetText(m_camera->GetNodeMap(), "InferenceEnable", "true");
    StreamUntilShown();
    ASSERT_SOON(CornerLabel() == "<font color= #008000></font>");
    Click("actionStopStream");
    const Norvane::InferenceBoundingBoxResult boxes =
        Gl()->getRawImage()->GetChunkData().GetInferenceBoundingBoxResult();
    ASSERT_GT(boxes.GetBoxCount(), 0);
    const QImage drawn = Gl()->grabFramebuffer();
    int green = 0;
    for (unsigned short i = 0; i < boxes.GetBoxCount(); ++i) {
        const Norvane::InferenceBoundingBox box = boxes.GetBoxAt(i);
        const QPoint edge(box.topLeftX, (box.topLeftY + box.bottomRightY) / 2);
        for (int x = -1; x <= 1 && drawn.rect().contains(edge); ++x) {
            const QColor color = drawn.pixelColor(edge + QPoint(x, 0));
            green += color.green() > 100 && color.red() < 60 && color.blue() < 60 ? 1 : 0;
        }
    }
    EXPECT_GT(green, 0) << "no box edge was drawn where the camera sees objects";

    Choose("Show Inference Label");
    EXPECT_FALSE(m_display->findChild<QLabel*>("inferenceLabel")->isVisible());
    EXPECT_NE(Gl()->grabFramebuffer(), drawn);
}

} // namespace
