// Takes the pictures of the user's help from the running program: starts the viewer on emulated cameras,
// works it as a person would, and keeps what its windows show. `./dev docs` runs it under a virtual screen.
#include "StartUp.h"
#include "norsimplegui_qt.h"
#include "wImageDisplay.h"
#include "wInferenceDialog.h"
#include "wRecordingDialog.h"

#include <QApplication>
#include <QColorDialog>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeView>
#include <QTreeWidget>

#include <functional>
#include <stdexcept>

namespace {

constexpr int kPatienceMs = 20'000;
constexpr int kSettleMs = 600; // queued repaints and the status line's figures
constexpr QSize kWindowSize(1180, 780);
constexpr QSize kLargeSize(1440, 960);
constexpr int kReadableWidth = 470; // pixels, of the docks whose columns are to be read

constexpr char kCameras[] = R"([interface GigE-0]
type = GEV
name = Gigabit Ethernet eth0
address = 169.254.10.1
netmask = 255.255.0.0

[interface USB-0]
type = U3V
name = USB 3 Controller

[camera 21034567]
interface = GigE-0
model = Duskwing S DWS-16S5C
vendor = Altrona
address = 169.254.10.20
width = 640
height = 480
pixel-format = BayerRG8
frame-rate = 30

[camera 21035012]
interface = GigE-0
model = Duskwing N DWN-16S4C
vendor = Altrona
address = 169.254.10.21
width = 1280
height = 960
pixel-format = BayerRG8
frame-rate = 20
inference = detection

[camera 21036100]
interface = GigE-0
model = Duskwing S DWS-50S5M
vendor = Altrona
address = 192.168.40.7
width = 640
height = 480
pixel-format = Mono8

[camera 21034590]
interface = USB-0
model = Duskwing U DWU-13S2M
vendor = Altrona
width = 640
height = 480
pixel-format = Mono8
frame-rate = 60
)";

void waitFor(const char* what, const std::function<bool()>& condition) {
    if (!QTest::qWaitFor(condition, kPatienceMs)) {
        throw std::runtime_error(std::string("waited in vain for ") + what);
    }
}

/// Works the main window and keeps pictures of it in one folder.
class Photographer {
public:
    Photographer(NorSimpleGUI_QT& window, const QString& folder) : m_window(window), m_folder(folder) {}

    QTreeWidgetItem* Row(const QString& serial) const {
        auto* tree = m_window.findChild<QTreeWidget*>("treeWidget");
        return tree ? tree->findItems(serial, Qt::MatchExactly | Qt::MatchRecursive, 1).value(0) : nullptr;
    }

    /// Clicks a camera's row and answers the display that opens.
    wImageDisplay* Open(const QString& serial) const {
        waitFor("a camera in the list", [&] { return Row(serial) != nullptr; });
        QTreeWidget* tree = Row(serial)->treeWidget();
        tree->scrollToItem(Row(serial));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(Row(serial)).center());
        wImageDisplay* display = nullptr;
        waitFor("a display", [&] {
            for (auto* each : m_window.findChildren<wImageDisplay*>()) {
                if (each->isVisible() && each->windowTitle().endsWith(serial)) {
                    display = each;
                }
            }
            return display != nullptr;
        });
        return display;
    }

    static void Start(wImageDisplay* display) {
        display->setStretchToFit(true);
        QTest::mouseClick(display->findChild<QToolButton*>("actionStartStream"), Qt::LeftButton);
        QTest::qWait(kSettleMs);
        display->setStretchToFit(true);
    }

    static void Stop(wImageDisplay* display) {
        QTest::mouseClick(display->findChild<QToolButton*>("actionStopStream"), Qt::LeftButton);
    }

    static void Choose(wImageDisplay* display, const QString& entry) {
        const QPoint place = display->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, display->mapToGlobal(place));
        QApplication::sendEvent(display, &event);
        for (QAction* action : display->getContextMenu()->findChildren<QAction*>()) {
            if (action->text() == entry) {
                action->trigger();
            }
        }
        display->getContextMenu()->close();
    }

    /// Keeps what the screen shows of a widget: a grab of the widget itself would leave out what is painted
    /// over the image.
    void Keep(QWidget* widget, const char* name) const {
        QTest::qWait(kSettleMs);
        const QString path = m_folder + '/' + name + ".png";
        const QRect place(widget->mapToGlobal(QPoint()), widget->size());
        const QPixmap picture =
            widget->screen()->grabWindow(0, place.x(), place.y(), place.width(), place.height());
        if (!picture.save(path, "PNG")) {
            throw std::runtime_error("cannot write " + path.toStdString());
        }
    }

private:
    NorSimpleGUI_QT& m_window;
    const QString m_folder;
};

/// Takes a colour in the colour dialog that is open.
void pickColor(const QColor& color) {
    QColorDialog* dialog = nullptr;
    waitFor("the colour dialog", [&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* each = qobject_cast<QColorDialog*>(window);
            dialog = each && each->isVisible() ? each : dialog;
        }
        return dialog != nullptr;
    });
    dialog->setCurrentColor(color);
    dialog->accept();
}

void takeInference(const Photographer& photographer, const QString& labelFile) {
    wImageDisplay* display = photographer.Open("21035012");
    Photographer::Choose(display, "Configure Inference Label");
    auto* dialog = display->findChild<wInferenceDialog*>();
    waitFor("the inference dialog", [&] { return dialog && dialog->isVisible(); });
    dialog->findChild<QLineEdit*>("editBox_Filename")->setText(labelFile);
    dialog->findChild<QLineEdit*>("editBox_Confidence")->setText("50");
    dialog->findChild<QSpinBox*>("spinBox_FontSize")->setValue(7);
    auto* color = dialog->findChild<QPushButton*>("button_ColorPicker");
    QTest::mouseClick(color, Qt::LeftButton);
    pickColor(QColor(255, 220, 0));
    QTest::mouseClick(dialog->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok),
                      Qt::LeftButton);
    dialog->findChild<QLineEdit*>("editBox_Filename")->setText("/home/you/shapes.txt");
    photographer.Keep(dialog, "inference-dialog");
    dialog->close();
    Photographer::Start(display);
    photographer.Keep(display, "inference");
    Photographer::Stop(display);
    display->close();
}

void takeAll(NorSimpleGUI_QT& window, const QString& folder, const QString& labelFile) {
    const Photographer photographer(window, folder);
    waitFor("the cameras", [&] { return photographer.Row("21034590") && photographer.Row("21036100"); });
    window.resize(kLargeSize); // room for labels that can be read
    takeInference(photographer, labelFile);
    window.resize(kWindowSize);

    wImageDisplay* display = photographer.Open("21034567");
    Photographer::Start(display);
    photographer.Keep(&window, "overview");
    auto* list = window.findChild<QDockWidget*>("wDeviceList");
    window.resizeDocks({list}, {kReadableWidth}, Qt::Horizontal);
    QTest::qWait(kSettleMs);
    for (int column = 0; column < list->findChild<QTreeWidget*>()->columnCount(); ++column) {
        list->findChild<QTreeWidget*>()->resizeColumnToContents(column);
    }
    photographer.Keep(list, "device-list");

    for (auto* search : window.findChildren<QLineEdit*>()) {
        if (search->placeholderText() == "Search" && search->isVisible()) {
            QTest::keyClicks(search, "exposure|gain");
            QTest::qWait(kSettleMs);
            QWidget* features = search;
            while (!qobject_cast<QDockWidget*>(features)) {
                features = features->parentWidget();
            }
            photographer.Keep(features, "features");
            search->clear();
        }
    }
    QTest::mouseClick(display->findChild<QToolButton*>("actionRecord"), Qt::LeftButton);
    auto* recording = display->findChild<wRecordingDialog*>();
    recording->findChild<QLineEdit*>("editBox_Filename")->setText("/home/you/Videos");
    photographer.Keep(recording, "recording");
    Photographer::Stop(display);
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home; // nobody's own settings enter a picture
    const QDir folder(argc == 2 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (argc != 2 || !folder.exists()) {
        qCritical("usage: tavorin_screenshots FOLDER   (an existing one, for the pictures)");
        return 2;
    }
    const auto write = [&](const char* name, const QByteArray& content) {
        QFile file(home.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
        return file.fileName();
    };
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("NORVANE_EMULATOR", write("cameras.ini", kCameras).toLocal8Bit());
    const QString labelFile = write("shapes.txt", "disc\nsquare\ntriangle\n");

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QApplication application(argc, argv);
    initTavorinResources();
    const Norvane::SystemPtr system = obtainSystem();
    try {
        NorSimpleGUI_QT window(nullptr);
        window.Initialize();
        window.resize(kWindowSize);
        window.show();
        waitFor("the window", [&] { return window.isVisible() && window.windowHandle()->isExposed(); });
        takeAll(window, folder.absolutePath(), labelFile);
    } catch (const std::exception& error) {
        qCritical("%s", error.what());
        return 1;
    }
    return 0;
}
