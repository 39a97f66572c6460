// Opens the main window as the viewer does, streams the first GigE Vision camera that it lists into it,
// stretched to fit, and goes on until it is ended. Says once a second how many images were painted; the
// script beside it looks at the processor time of the whole process meanwhile. Usage: bench_ui_show [SIDE],
// SIDE being the picture's height on the screen in pixels.

#include "StartUp.h"
#include "norsimplegui_qt.h"
#include "wGLImageDisplay.h"
#include "wImageDisplay.h"

#include "norvane/Norvane.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kWaitMs = 20000;

/// Brings a camera on display by a click on its row, the first below an interface.
wImageDisplay* OpenFirstCamera(const NorSimpleGUI_QT& window) {
    auto* tree = window.findChild<QTreeWidget*>(QStringLiteral("treeWidget"));
    const auto firstCamera = [tree]() -> QTreeWidgetItem* {
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            if (tree->topLevelItem(i)->childCount() > 0) {
                return tree->topLevelItem(i)->child(0);
            }
        }
        return nullptr;
    };
    const auto display = [&window] { return window.findChild<wImageDisplay*>(); };
    if (!QTest::qWaitFor([&] { return firstCamera() != nullptr; }, kWaitMs)) {
        return nullptr;
    }
    tree->scrollToItem(firstCamera());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(firstCamera()).center());
    return QTest::qWaitFor([&] { return display() != nullptr; }, kWaitMs) ? display() : nullptr;
}

} // namespace

int main(int argc, char** argv) {
    returnLargeMemory();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    const QApplication application(argc, argv);
    initTavorinResources();
    const int side = argc > 1 ? std::atoi(argv[1]) : 800;

    const Norvane::SystemPtr system = obtainSystem();
    NorSimpleGUI_QT window(nullptr);
    window.Initialize();
    window.resize(1600, 1000);
    window.show();
    wImageDisplay* display = OpenFirstCamera(window);
    if (!display) {
        std::fprintf(stderr, "no camera was found\n");
        return 1;
    }
    auto* view = display->findChild<wGLImageDisplay*>();
    display->OnStartStream();
    if (!QTest::qWaitFor([view] { return view->hasImage(); }, kWaitMs)) {
        std::fprintf(stderr, "the camera sends no images\n");
        return 1;
    }
    display->setStretchToFit(true);
    const bool fits = QTest::qWaitFor(
        [&] {
            window.resize(window.width(), window.height() + side - view->height());
            return view->height() == side;
        },
        kWaitMs);
    if (!fits) {
        std::fprintf(stderr, "the picture stays %d pixels tall\n", view->height());
        return 1;
    }
    std::printf("showing %d x %d\n", view->width(), view->height());
    std::fflush(stdout);

    int painted = 0;
    QObject::connect(view, &QOpenGLWidget::frameSwapped, [&painted] { ++painted; });
    QTimer second;
    QObject::connect(&second, &QTimer::timeout, [&painted] {
        std::printf("painted %d\n", painted);
        std::fflush(stdout);
        painted = 0;
    });
    second.start(1000);
    return QApplication::exec();
}
