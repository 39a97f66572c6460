#include "Handles.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Ends the program with an error when memory is lost; null in a build without the leak checker.
extern "C" void __lsan_do_leak_check() __attribute__((weak));

/// Every widget test runs in a home and a working directory of its own, so that it neither reads nor leaves
/// settings, log files or emulator descriptions of the person who runs it.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qunsetenv("XDG_CONFIG_HOME");
    QDir::setCurrent(home.path());
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    // The desktop's own dialogs cannot be worked by a test.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    qRegisterMetaType<Norvane::CameraPtr>("Norvane::CameraPtr");
    qRegisterMetaType<Norvane::InterfacePtr>("Norvane::InterfacePtr");
    const int result = RUN_ALL_TESTS();
    // Checked now, because the graphics driver goes with the application, and what it leaves behind can then
    // no longer be told from a loss.
    if (__lsan_do_leak_check) {
        __lsan_do_leak_check();
    }
    return result;
}
