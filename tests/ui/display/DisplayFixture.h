#pragma once

#include "EmulatorFixture.h"

#include "wGLImageDisplay.h"
#include "wImageDisplay.h"

#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>

#include <memory>

/// An emulated camera's display in a window, worked as a person does.
class DisplayFixture : public Norvane::Test::EmulatorFixture {
protected:
    DisplayFixture();
    ~DisplayFixture() override;

    /// Plugs a camera in and opens its display. @param keys  lines of its description section.
    void Open(const std::string& keys = "");
    /// Deletes the display, as the main window does.
    void CloseDisplay();

    QToolButton* Button(const char* name) const { return m_display->findChild<QToolButton*>(name); }
    void Click(const char* button) const { QTest::mouseClick(Button(button), Qt::LeftButton); }
    wGLImageDisplay* Gl() const { return m_display->findChild<wGLImageDisplay*>(); }
    QString StatusLine() const { return m_display->findChild<QStatusBar*>()->currentMessage(); }
    QString CornerLabel() const { return m_display->findChild<QLabel*>("inferenceLabel")->text(); }
    /// Opens the context menu over the image; its entries are children of it.
    QMenu* OpenMenu() const;
    QAction* Entry(QMenu* menu, const QString& text) const;
    /// Chooses an entry of a fresh context menu.
    void Choose(const QString& text) const;
    void StreamUntilShown();

    Norvane::InterfacePtr m_interface;
    Norvane::CameraPtr m_camera;
    QMainWindow m_window;
    QPointer<wImageDisplay> m_display;
};

/// Waits until `condition` holds while events are handled; false after ten seconds.
#define EXPECT_SOON(condition) EXPECT_TRUE(QTest::qWaitFor([&] { return (condition); }, 10'000)) << #condition
#define ASSERT_SOON(condition) ASSERT_TRUE(QTest::qWaitFor([&] { return (condition); }, 10'000)) << #condition
