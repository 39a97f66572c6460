#include "LogHandler.h"
#include "StartUp.h"
#include "norsimplegui_qt.h"

#include <QApplication>
#include <QPixmap>
#include <QSplashScreen>
#include <QTimer>

namespace {

constexpr int kSplashTimeMs = 2500;

}

int main(int argc, char** argv) {
    returnLargeMemory();
    qInstallMessageHandler(loggingOutput);
    Norvane::SetLogSink(forwardLibraryLog);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    QApplication application(argc, argv);
    initTavorinResources();

    // Lives until the process ends.
    static auto* splash = new QSplashScreen(QPixmap(), Qt::WindowFlags());
    splash->setPixmap(QPixmap(QStringLiteral(":images/splash.png")));
    splash->show();

    const Norvane::SystemPtr system = obtainSystem();
    NorSimpleGUI_QT window(nullptr);
    window.Initialize();
    QTimer::singleShot(kSplashTimeMs, splash, SLOT(close()));
    QTimer::singleShot(kSplashTimeMs, &window, SLOT(show()));
    return QApplication::exec();
}
