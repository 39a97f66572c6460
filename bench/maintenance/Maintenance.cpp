// What a person waits for when looking after cameras, in the viewer's whole window: refreshing the list of 64
// cameras, and sending a camera a file of 8 MiB. Beside each stands the same without widgets: fetching the
// cameras and their texts, and the same register accesses in a bare loop. The two of a pair run in turn.

#include "norsimplegui_qt.h"
#include "wFileAccess.h"

#include "norvane/Norvane.h"
#include "norvane/genapi/GenApi.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using namespace Norvane::GenApi;

constexpr int kCameras = 64;
constexpr int kPlainCamera = 1, kSlowCamera = 2; ///< serial numbers
constexpr int kRegisterDelayUs = 100;            ///< about a GigE camera's
constexpr int kFileBytes = 8 << 20;
constexpr int kRefreshPairs = 21, kUploadPairs = 9, kSlowUploadPairs = 3;

double Milliseconds(const std::function<void()>& work) {
    QElapsedTimer clock;
    clock.start();
    work();
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Report(const char* what, const std::vector<double>& window, const std::vector<double>& bare) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < window.size(); ++i) {
        ratios.push_back(window[i] / bare[i]);
    }
    std::printf("%-44s %9.2f ms in the window, %9.2f ms without, ratio %.2f (medians of %zu pairs)\n", what,
                Median(window), Median(bare), Median(ratios), ratios.size());
}

QByteArray Description() {
    QByteArray text("[interface GigE-0]\ntype = GEV\naddress = 169.254.10.1\nnetmask = 255.255.0.0\n");
    for (int serial = 1; serial <= kCameras; ++serial) {
        const QByteArray number = QByteArray::number(serial);
        text += "[camera " + number + "]\ninterface = GigE-0\naddress = 169.254.20." + number +
                "\nwidth = 640\nheight = 480\n";
        if (serial == kSlowCamera) {
            text += "register-delay-us = " + QByteArray::number(kRegisterDelayUs) + "\n";
        }
    }
    return text;
}

/// The viewer's window and what a person uses of it.
class Viewer {
public:
    Viewer() {
        m_window.Initialize();
        m_window.resize(1280, 900);
        m_window.show();
        m_tree = m_window.findChild<QTreeWidget*>(QStringLiteral("treeWidget"));
        m_refresh = m_window.findChild<QToolButton*>(QStringLiteral("actionRefresh"));
        m_fileAccess = m_window.findChild<wFileAccess*>();
    }

    int Rows() const { return m_tree->topLevelItemCount() == 0 ? 0 : m_tree->topLevelItem(0)->childCount(); }

    /// Includes the painting.
    void Refresh() {
        m_refresh->click();
        Settle();
    }

    /// Shows the interface, so that nothing in the window listens to a camera.
    void SelectInterface() {
        emit m_tree->itemClicked(m_tree->topLevelItem(0), 0);
        Settle();
    }

    void Select(int serial) {
        const auto rows =
            m_tree->findItems(QString::number(serial), Qt::MatchExactly | Qt::MatchRecursive, 1);
        emit m_tree->itemClicked(rows.value(0), 0);
        for (auto* tabs : m_window.findChildren<QTabWidget*>()) {
            tabs->setCurrentWidget(m_fileAccess); // only one of them holds it
        }
        Settle();
    }

    /// From the choice of the file to the message that it has arrived.
    double Upload(const QString& path) {
        QElapsedTimer clock;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                QObject::connect(dialog, &QFileDialog::fileSelected, [&] { clock.start(); });
                dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
                QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
                watch.stop();
            }
        });
        watch.start(10);
        m_fileAccess->findChild<QPushButton*>(QStringLiteral("m_buttonUpload"))->click();
        const double took = static_cast<double>(clock.nsecsElapsed()) / 1e6;
        const QString status = m_fileAccess->findChild<QLabel*>(QStringLiteral("m_statusLabel"))->text();
        if (status != QStringLiteral("Upload completed. Wrote %1 bytes.").arg(kFileBytes)) {
            qFatal("the upload ended with: %s", qPrintable(status));
        }
        return took;
    }

    static void Settle() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

private:
    NorSimpleGUI_QT m_window{nullptr};
    QTreeWidget* m_tree;
    QToolButton* m_refresh;
    wFileAccess* m_fileAccess;
};

Norvane::CameraPtr Find(int serial) {
    const Norvane::CameraList cameras = Norvane::System::GetInstance()->GetCameras(false);
    for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
        if (cameras.GetByIndex(i)->GetDeviceNumber() == static_cast<unsigned int>(serial)) {
            return cameras.GetByIndex(i);
        }
    }
    qFatal("there is no camera %d", serial);
}

/// What a row of the list is made of.
void ReadTexts(Norvane::ICameraBase& camera) {
    INodeMap& map = camera.GetTLDeviceNodeMap();
    for (const char* name :
         {"DeviceModelName", "DeviceSerialNumber", "GevDeviceIPAddress", "GevDeviceIsWrongSubnet",
          "DeviceUserID", "DeviceVendorName", "DeviceID", "DeviceAccessStatus"}) {
        if (CValuePtr(map.GetNode(name))->ToString().empty() && name == std::string("DeviceID")) {
            qFatal("a camera without an identifier");
        }
    }
}

void FetchWithoutWindow() {
    const Norvane::InterfaceList interfaces = Norvane::System::GetInstance()->GetInterfaces(true);
    for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
        const Norvane::CameraList cameras = interfaces.GetByIndex(i)->GetCameras(true);
        for (unsigned int j = 0; j < cameras.GetSize(); ++j) {
            ReadTexts(*cameras.GetByIndex(j));
        }
    }
}

/// The file access features of one camera, without a dialog around them.
class BareFile {
public:
    explicit BareFile(INodeMap& map)
        : m_operation(map.GetNode("FileOperationSelector")), m_openMode(map.GetNode("FileOpenMode")),
          m_execute(map.GetNode("FileOperationExecute")), m_status(map.GetNode("FileOperationStatus")),
          m_result(map.GetNode("FileOperationResult")), m_length(map.GetNode("FileAccessLength")),
          m_buffer(map.GetNode("FileAccessBuffer")) {}

    void Upload(const QByteArray& content) {
        m_openMode->SetIntValue(1, true);
        execute(0);
        const std::int64_t chunk = m_buffer->GetLength();
        m_length->SetValue(chunk, true);
        for (std::int64_t sent = 0; sent < content.size(); sent += m_result->GetValue(false, true)) {
            m_buffer->Set(reinterpret_cast<const std::uint8_t*>(content.constData()) + sent, chunk, true);
            execute(3);
        }
        execute(1);
    }

private:
    void execute(std::int64_t operation) {
        m_operation->SetIntValue(operation, true);
        m_execute->Execute(true);
        while (!m_execute->IsDone()) {
        }
        if (m_status->GetIntValue(false, true) != 0) {
            qFatal("file operation %d failed", static_cast<int>(operation));
        }
    }

    CEnumerationPtr m_operation, m_openMode;
    CCommandPtr m_execute;
    CEnumerationPtr m_status;
    CIntegerPtr m_result, m_length;
    CRegisterPtr m_buffer;
};

void MeasureRefresh(Viewer& viewer) {
    std::vector<double> window, bare;
    for (int i = 0; i < kRefreshPairs; ++i) {
        window.push_back(Milliseconds([&] { viewer.Refresh(); }));
        bare.push_back(Milliseconds(&FetchWithoutWindow));
    }
    Report("refreshing a list of 64 cameras", window, bare);
    std::printf("  the slowest refresh: %.2f ms\n", *std::max_element(window.begin(), window.end()));
}

void MeasureUpload(Viewer& viewer, int serial, int pairs, const char* what, const QString& path,
                   const QByteArray& content) {
    std::vector<double> window, bare;
    for (int i = 0; i < pairs; ++i) {
        viewer.Select(serial);
        window.push_back(viewer.Upload(path));
        viewer.SelectInterface();
        BareFile file(Find(serial)->GetNodeMap());
        bare.push_back(Milliseconds([&] { file.Upload(content); }));
    }
    Report(what, window, bare);
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir folder;
    QFile description(folder.filePath(QStringLiteral("emulator.ini")));
    QFile upload(folder.filePath(QStringLiteral("upload.bin")));
    QByteArray content(kFileBytes, Qt::Uninitialized);
    for (int i = 0; i < kFileBytes; ++i) {
        content[i] = static_cast<char>((static_cast<unsigned int>(i) * 2654435761U) >> 24U);
    }
    if (!description.open(QIODevice::WriteOnly) || description.write(Description()) < 0 ||
        !upload.open(QIODevice::WriteOnly) || upload.write(content) != kFileBytes) {
        return 1;
    }
    description.close();
    upload.close();
    qputenv("NORVANE_EMULATOR", description.fileName().toUtf8());
    qputenv("HOME", folder.path().toUtf8());

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    const QApplication application(argc, argv);
    Q_INIT_RESOURCE(tavorin);
    Viewer viewer;
    for (int attempt = 0; viewer.Rows() != kCameras; ++attempt, QThread::msleep(50)) {
        if (attempt == 200) {
            std::fprintf(stderr, "%d of %d emulated cameras appeared\n", viewer.Rows(), kCameras);
            return 1;
        }
        viewer.Refresh();
    }
    MeasureRefresh(viewer);
    MeasureUpload(viewer, kPlainCamera, kUploadPairs, "8 MiB to the emulator", upload.fileName(), content);
    MeasureUpload(viewer, kSlowCamera, kSlowUploadPairs, "8 MiB, 100 us for each register access",
                  upload.fileName(), content);
    return 0;
}
