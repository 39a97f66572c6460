#include "DisplayFixture.h"

#include "imaging/ImageFactory.h"

#include "norvane/genapi/GenApi.h"

#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWheelEvent>

#include <cmath>
#include <vector>

using Norvane::Test::SetText;
using Norvane::Test::TextOf;

namespace {

class ImageDisplayTest : public DisplayFixture {
protected:
    QComboBox* ModeCombo() const { return m_display->findChild<QComboBox*>(); }
    QScrollArea* Scroll() const { return m_display->findChild<QScrollArea*>(); }

    /// The camera image on display as the library converts it.
    QImage Expected() const {
        const Norvane::ImagePtr bgr = Gl()->getRawImage()->Convert(
            Norvane::PixelFormat_BGR8,
            static_cast<Norvane::ColorProcessingAlgorithm>(Gl()->getColorProcessingAlgorithm()));
        const auto width = static_cast<int>(bgr->GetWidth());
        return QImage(static_cast<const uchar*>(bgr->GetData()), width, static_cast<int>(bgr->GetHeight()),
                      3 * width, QImage::Format_RGB888)
            .rgbSwapped();
    }
    void Wheel(int delta, QPoint place) const {
        QWidget* image = Gl();
        QWheelEvent event(place, image->mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        // Only a user's wheel goes on to the widgets around, and sendEvent() makes every event the program's.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(image, &event);
    }
};

TEST_F(ImageDisplayTest, BeginsIdleWithTheCamerasNameAndModes) {
    Open();
    EXPECT_EQ(m_display->windowTitle(), "Duskwing S 1001");
    int serial = 0;
    m_display->getDeviceSerial(serial);
    EXPECT_EQ(serial, 1001);
    EXPECT_EQ(ModeCombo()->count(), 3);
    EXPECT_EQ(ModeCombo()->currentText(), "Continuous");
    const std::pair<const char*, bool> buttons[] = {{"actionStartStream", true}, {"actionSingleImage", true},
                                                    {"actionStopStream", false}, {"actionSave", false},
                                                    {"actionZoomIn", false},     {"actionZoomOut", false},
                                                    {"actionImCopy", false},     {"actionRecord", true}};
    for (const auto& [name, enabled] : buttons) {
        EXPECT_EQ(Button(name)->isEnabled(), enabled) << name;
        EXPECT_FALSE(Button(name)->icon().isNull()) << name;
        EXPECT_FALSE(Button(name)->accessibleName().isEmpty()) << name;
    }
    Gl()->zoom(1);
    EXPECT_EQ(Gl()->getZoomLevel(), 0.0F) << "there is nothing to zoom yet";
}

TEST_F(ImageDisplayTest, StreamsAndKeepsTheLastImageWhenItStops) {
    // An odd width: rows of the image, of the texture and of the clipboard are padded differently.
    Open("width = 321\nheight = 243\npixel-format = BayerRG8");
    StreamUntilShown();
    EXPECT_FALSE(Button("actionStartStream")->isEnabled());
    EXPECT_TRUE(Button("actionStopStream")->isEnabled());
    EXPECT_FALSE(ModeCombo()->isEnabled());
    m_window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
    Button("actionStopStream")->setFocus();
    QTest::keyClick(Button("actionStopStream"), Qt::Key_Space);
    EXPECT_TRUE(Button("actionStartStream")->isEnabled());
    EXPECT_TRUE(Button("actionStartStream")->hasFocus()) << "the next key would do something else";
    EXPECT_TRUE(ModeCombo()->isEnabled());
    EXPECT_FALSE(m_camera->IsStreaming());

    EXPECT_EQ(Gl()->size(), QSize(321, 243));
    const QImage expected = Expected();
    EXPECT_EQ(Gl()->grabFramebuffer().convertToFormat(QImage::Format_RGB888), expected)
        << "what is drawn is not the camera's image";
    Click("actionImCopy");
    EXPECT_EQ(QApplication::clipboard()->image().convertToFormat(QImage::Format_RGB888), expected);

    // Grey and coloured pixels take turns in the buffers and in the texture.
    for (const int algorithm : {Norvane::NO_COLOR_PROCESSING, Norvane::BILINEAR}) {
        Gl()->setColorProcessingAlgorithm(algorithm);
        EXPECT_EQ(Gl()->grabFramebuffer().convertToFormat(QImage::Format_RGB888), Expected());
    }
}

QStringList warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtWarningMsg) {
        warnings.append(text);
    }
}

TEST_F(ImageDisplayTest, ImagesThatCannotBeShownAreToldOnceAndLeaveThePicture) {
    Open();
    StreamUntilShown();
    Click("actionStopStream");
    const QImage before = Gl()->grabFramebuffer();
    const Norvane::ImagePtr shown = Gl()->getRawImage();
    Norvane::Imaging::ImageLayout layout;
    layout.pfncCode = 0x812345AB;
    layout.width = static_cast<std::uint32_t>(shown->GetWidth());
    layout.height = static_cast<std::uint32_t>(shown->GetHeight());
    std::vector<std::uint8_t> pixels(layout.width * layout.height);

    warnings.clear();
    const QtMessageHandler former = qInstallMessageHandler(collectWarnings);
    for (int i = 0; i < 5; ++i) {
        ++layout.frameId;
        Gl()->updateImageDisplayGL(
            Norvane::Imaging::MakeImage(layout, pixels.data(), pixels.size(), nullptr));
        QCoreApplication::processEvents();
    }
    qInstallMessageHandler(former);
    ASSERT_EQ(warnings.size(), 1) << warnings.join("; ").toStdString();
    EXPECT_TRUE(warnings[0].contains("cannot be shown") && warnings[0].contains("0x812345AB"))
        << warnings[0].toStdString();
    EXPECT_EQ(Gl()->grabFramebuffer(), before);

    Gl()->updateImageDisplayGL(shown);
    EXPECT_EQ(Gl()->grabFramebuffer(), before) << "a good image is shown again";

    warnings.clear();
    qInstallMessageHandler(collectWarnings);
    layout.pfncCode = 0;
    layout.format = Norvane::PixelFormat_BayerRG8;
    layout.width = layout.height = 30'000; // more bytes of colour than one buffer of the display takes
    for (int i = 0; i < 5; ++i) {
        Gl()->updateImageDisplayGL(
            Norvane::Imaging::MakeImage(layout, pixels.data(), pixels.size(), nullptr));
    }
    qInstallMessageHandler(former);
    ASSERT_EQ(warnings.size(), 1) << warnings.join("; ").toStdString();
    EXPECT_TRUE(warnings[0].contains("too large: 30000 x 30000")) << warnings[0].toStdString();
}

TEST_F(ImageDisplayTest, AnImageLargerThanATextureIsShownWhole) {
    Open();
    StreamUntilShown();
    Click("actionStopStream");
    Gl()->makeCurrent();
    GLint limit = 0;
    QOpenGLContext::currentContext()->functions()->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    const auto large = static_cast<std::uint32_t>(limit + 500);
    for (const auto& [width, height] : {std::pair(large, 40U), {40U, large}}) {
        // Brighter and brighter along the long side.
        const auto pixels = std::make_shared<std::vector<std::uint8_t>>(std::size_t{width} * height);
        for (std::size_t i = 0; i < pixels->size(); ++i) {
            (*pixels)[i] = static_cast<std::uint8_t>((width == large ? i % width : i / width) * 250 / large);
        }
        Norvane::Imaging::ImageLayout layout;
        layout.format = Norvane::PixelFormat_BayerRG8;
        layout.width = width;
        layout.height = height;
        const auto image = Norvane::Imaging::MakeImage(layout, pixels->data(), pixels->size(), pixels);
        for (const int algorithm : {Norvane::NO_COLOR_PROCESSING, Norvane::NEAREST_NEIGHBOR}) {
            Gl()->setColorProcessingAlgorithm(algorithm);
            Gl()->updateImageDisplayGL(image);
            Gl()->stretchToFit(QSize(250, 250));
            QCoreApplication::processEvents();
            const QImage seen = Gl()->grabFramebuffer();
            ASSERT_EQ(std::max(seen.width(), seen.height()), 250);
            for (int place = 0; place < 250; ++place) {
                const QRgb color = width == large ? seen.pixel(place, 0) : seen.pixel(0, place);
                ASSERT_NEAR(qRed(color), place, 1) << width << " x " << height << " with " << algorithm;
            }
        }
    }
}

TEST_F(ImageDisplayTest, SaveWritesTheCamerasImageInTheChosenFormat) {
    Open("width = 321\nheight = 243");
    StreamUntilShown();
    Click("actionStopStream");
    const QTemporaryDir folder;
    const QString name = folder.path() + "/ein Bild \u00e4.png";
    for (const char* filter : {"RAW (*.raw)", "PNG (*.png)"}) {
        Click("actionSave");
        auto* dialog = m_display->findChild<QFileDialog*>();
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->windowTitle(), "Save Image");
        EXPECT_EQ(QFileInfo(dialog->selectedFiles().value(0)).fileName(), "untitled.raw");
        dialog->selectNameFilter(filter);
        dialog->findChild<QLineEdit*>()->setText(name);
        QFile::remove(name);
        QMetaObject::invokeMethod(dialog, "accept");
        EXPECT_SOON(QFileInfo(name).size() > 0);
        if (QLatin1String(filter).startsWith(QLatin1String("RAW"))) {
            EXPECT_SOON(QFileInfo(name).size() == 321 * 243);
        } else {
            EXPECT_SOON(QImage(name, "PNG").size() == QSize(321, 243));
        }
        EXPECT_SOON(!m_display->findChild<QFileDialog*>());
    }
}

TEST_F(ImageDisplayTest, ZoomStaysInItsRangeAndFollowsTheWheel) {
    Open();
    StreamUntilShown();
    for (int i = 0; i < 11; ++i) {
        Click("actionZoomIn");
    }
    EXPECT_EQ(Gl()->getZoomLevel(), 10.0F);
    EXPECT_NEAR(Gl()->getZoomFactor(), 4.046, 0.001);
    EXPECT_EQ(Gl()->width(), static_cast<int>(320 * Gl()->getZoomFactor()));
    for (int i = 0; i < 22; ++i) {
        Wheel(-120, QPoint(10, 10));
    }
    EXPECT_EQ(Gl()->getZoomLevel(), -10.0F);
    for (int i = 0; i < 17; ++i) {
        Wheel(120, QPoint(10, 10));
    }
    EXPECT_EQ(Gl()->getZoomLevel(), 7.0F);

    // Dragging moves the picture with the pointer.
    QScrollBar* across = Scroll()->horizontalScrollBar();
    across->setValue(100);
    QTest::mousePress(Gl(), Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
    EXPECT_EQ(m_display->view()->cursor().shape(), Qt::ClosedHandCursor);
    QMouseEvent move(QEvent::MouseMove, QPointF(m_display->view()->rect().center()), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QMouseEvent press(QEvent::MouseButtonPress, move.localPos() + QPointF(30, 0), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_display->view(), &press);
    QApplication::sendEvent(m_display->view(), &move);
    EXPECT_EQ(across->value(), 130);
    QTest::mouseRelease(Gl(), Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
    EXPECT_EQ(m_display->view()->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ImageDisplayTest, StretchFitsUntilTheUserZooms) {
    Open();
    StreamUntilShown();
    Choose("Stretch To Fit");
    const auto fits = [this] {
        const QSize area = m_display->view()->size();
        return std::abs(Gl()->width() - std::min(area.width(), area.height() * 320 / 240)) <= 1;
    };
    EXPECT_TRUE(fits());
    m_window.resize(900, 600);
    EXPECT_SOON(fits());
    Wheel(120, QPoint(10, 10));
    EXPECT_FALSE(Entry(OpenMenu(), "Stretch To Fit")->isChecked());
}

TEST_F(ImageDisplayTest, AChangeOfTheImageSizeKeepsTheZoom) {
    Open();
    StreamUntilShown();
    Click("actionZoomIn");
    Click("actionStopStream");
    SetText(m_camera->GetNodeMap(), "Width", "160");
    Click("actionStartStream");
    EXPECT_SOON(Gl()->width() == static_cast<int>(160 * 1.15F));
}

TEST_F(ImageDisplayTest, SingleImagePutsTheAcquisitionModeBack) {
    Open();
    Click("actionSingleImage");
    ASSERT_SOON(Gl()->getRawImage().IsValid());
    EXPECT_TRUE(Button("actionSave")->isEnabled());
    EXPECT_TRUE(Button("actionZoomIn")->isEnabled());
    EXPECT_SOON(!m_camera->IsStreaming() && ModeCombo()->currentText() == "Continuous");
    EXPECT_EQ(TextOf(m_camera->GetNodeMap(), "AcquisitionMode"), "Continuous");
}

TEST_F(ImageDisplayTest, ModeComboAndCameraFollowEachOther) {
    Open();
    ModeCombo()->setCurrentIndex(2);
    EXPECT_EQ(TextOf(m_camera->GetNodeMap(), "AcquisitionMode"), "MultiFrame");
    SetText(m_camera->GetNodeMap(), "AcquisitionMode", "SingleFrame");
    m_display->OnAcquisitionModeUpdated();
    EXPECT_EQ(ModeCombo()->currentIndex(), 1);
}

TEST_F(ImageDisplayTest, MenuOffersColourProcessingForColourOnly) {
    Open("pixel-format = BayerRG8");
    QMenu* menu = OpenMenu();
    ASSERT_TRUE(Entry(menu, "HQ Linear"));
    EXPECT_TRUE(Entry(menu, "Bilinear")->isChecked());
    Entry(menu, "HQ Linear")->trigger();
    EXPECT_EQ(Gl()->getColorProcessingAlgorithm(), Norvane::HQ_LINEAR);
    menu->close();
    SetText(m_camera->GetNodeMap(), "PixelFormat", "Mono8");
    menu = OpenMenu();
    EXPECT_FALSE(Entry(menu, "HQ Linear"));
    EXPECT_FALSE(Entry(menu, "Show Inference Label")) << "this camera infers nothing";
}

TEST_F(ImageDisplayTest, StatusLineShowsWhatTheMenuSelects) {
    Open();
    StreamUntilShown();
    EXPECT_SOON(StatusLine().startsWith("Camera FPS: ") && StatusLine().contains("Processed FPS: "));
    Choose("Show Camera Frame Rate");
    EXPECT_EQ(StatusLine(), "") << "switching a part off clears the line at once";
    Choose("Show Processed Frame Rate");
    Choose("Show Image Status");
    EXPECT_SOON(StatusLine().startsWith("W: 320  H: 240  Format: Mono  BPP: 8  ID: "));
    EXPECT_TRUE(StatusLine().contains("Zoom: 100%  TimeStamp: ")) << StatusLine().toStdString();
    EXPECT_TRUE(StatusLine().contains("MissedPackets: "));
}

TEST_F(ImageDisplayTest, DisplayRateIsLimited) {
    Open();
    Choose("Limit Displayed FPS");
    auto* dialog = m_display->findChild<QInputDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->doubleValue(), 120.0);
    dialog->setDoubleValue(10.0);
    dialog->accept();
    EXPECT_EQ(Gl()->getMaxDisplayFPS(), 10.0F);
    StreamUntilShown();
    EXPECT_SOON(Gl()->getUpdateRate() > 8.0 && Gl()->getUpdateRate() < 11.0);
}

/// Every way to lose a display while something waits for the camera; a hang ends in CTest's time limit.
class ClosingTest : public ImageDisplayTest {};

TEST_F(ClosingTest, InMidStream) {
    Open();
    StreamUntilShown();
    CloseDisplay();
    EXPECT_FALSE(m_camera->IsStreaming());
}

TEST_F(ClosingTest, ByTheKeyboard) {
    Open();
    const QSignalSpy closed(m_display, SIGNAL(disconnectImDisplay(Norvane::CameraPtr)));
    m_window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
    Button("actionStartStream")->setFocus();
    QTest::keySequence(Button("actionStartStream"), QKeySequence::Close);
    EXPECT_EQ(closed.count(), 1);
    EXPECT_FALSE(m_display->isVisible());
}

TEST_F(ClosingTest, WhileASingleImageNeverComes) {
    Open();
    SetText(m_camera->GetNodeMap(), "TriggerMode", "On");
    Click("actionSingleImage");
    ASSERT_SOON(m_camera->IsStreaming());
    CloseDisplay();
    EXPECT_FALSE(m_camera->IsStreaming());
}

TEST_F(ClosingTest, RightAfterASingleImageWasAskedFor) {
    Open();
    SetText(m_camera->GetNodeMap(), "TriggerMode", "On");
    Click("actionSingleImage");
    CloseDisplay();
    EXPECT_FALSE(m_camera->IsStreaming());
}

TEST_F(ClosingTest, AfterTheCameraWasUnpluggedInMidStream) {
    Open();
    StreamUntilShown();
    Unplug("1001");
    EXPECT_SOON(!m_camera->IsValid());
    Click("actionStopStream");
    Click("actionStartStream");
    CloseDisplay();
}

TEST_F(ClosingTest, AfterTheCameraWasUnpluggedInMidSingleGrab) {
    Open();
    SetText(m_camera->GetNodeMap(), "TriggerMode", "On");
    Click("actionSingleImage");
    ASSERT_SOON(m_camera->IsStreaming());
    Unplug("1001");
    EXPECT_SOON(!m_camera->IsValid());
    CloseDisplay();
}

TEST_F(ImageDisplayTest, AnImageLargerThanTheGraphicsSystemDrawsIsStillSeen) {
    Open("width = 5000\nheight = 64\npixel-format = Mono8");
    StreamUntilShown();
    Click("actionStopStream");
    for (int i = 0; i < 10; ++i) {
        Click("actionZoomIn");
    }
    EXPECT_EQ(Gl()->width(),
              static_cast<int>(5000 * Gl()->getZoomFactor())); // 20227: no surface is that wide
    QApplication::processEvents();
    const QImage seen = Gl()->grabFramebuffer();
    ASSERT_FALSE(seen.isNull());
    int bright = 0;
    for (int x = 0; x < seen.width(); ++x) {
        bright += seen.pixelColor(x, seen.height() / 2).lightness() > 20 ? 1 : 0;
    }
    EXPECT_GT(bright, 0);
}

} // namespace
