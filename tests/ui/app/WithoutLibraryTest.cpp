#include "Modal.h"

#include "SettingsFile.h"
#include "StartUp.h"
#include "norsimplegui_qt.h"

#include "norvane/Exception.h"

#include <QDockWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <stdexcept>

// Stands in for the library's own, so that this program is one whose camera library does not start.
Norvane::SystemPtr Norvane::System::GetInstance() {
    throw Norvane::Exception(Norvane::Error::Unknown, "no producer found; install one");
}

namespace {

TEST(WithoutLibraryTest, StartUpTellsTheReasonOnceAndGoesOn) {
    QString text;
    WhenModal<QMessageBox> box([&](QMessageBox* shown) {
        EXPECT_EQ(shown->windowTitle(), "Norvane Error");
        EXPECT_EQ(shown->icon(), QMessageBox::Critical);
        EXPECT_EQ(shown->standardButtons(), QMessageBox::Ok);
        text = shown->text();
        shown->button(QMessageBox::Ok)->click();
        return true;
    });
    EXPECT_FALSE(obtainSystem().IsValid());
    EXPECT_EQ(box.taken, 1);
    EXPECT_EQ(text, "no producer found; install one");
}

TEST(WithoutLibraryTest, OtherExceptionsAreNotSwallowed) {
    EXPECT_THROW(obtainSystem([]() -> Norvane::SystemPtr { throw std::runtime_error("bug"); }),
                 std::runtime_error);
}

TEST(WithoutLibraryTest, WindowStillOpensAndEverySlotIsSafe) {
    NorSimpleGUI_QT window(nullptr);
    window.Initialize();
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(window.windowTitle(), "Tavorin");
    EXPECT_EQ(window.findChildren<QDockWidget*>().size(), 0);
    window.OnInterfaceArrivalRemoval("eth0");
    window.OnDeviceArrival(1);
    window.OnDeviceRemoval(1);
    window.OnDeviceDisconnect({});
    window.OnAddImageDisplay({}, {});
    window.OnRemoveImageDisplay(1);
    window.OnDoubleClickStream(1);
    window.OnAcquisitionModeUpdated({});
    std::unique_ptr<QMenu> menu(window.createPopupMenu());
    EXPECT_TRUE(window.close());
}

} // namespace
