// What a person waits for in the feature tree: selecting a camera, and a keystroke in the search box. Beside
// each stands the floor below which no tree can come: reading the same values from the same node maps,
// without widgets. Painting is part of the time.
#include "GeneratedDescription.h"
#include "Mapper.h"
#include "wFeatureTree.h"

#include "norvane/Norvane.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeView>

#include <benchmark/benchmark.h>

namespace {

using namespace Norvane::GenApi;

constexpr int kFeatures = 2000;
constexpr int kRegisterDelayUs = 500;

/// Emulated cameras for the life of the program: one with many features, one as they come but behind a slow
/// link.
class Cameras {
public:
    Cameras() {
        write("big.xml", GeneratedDescription(kFeatures).c_str());
        write("emulator.ini",
              QByteArray("[interface GigE-0]\ntype = GEV\naddress = 169.254.10.1\n"
                         "netmask = 255.255.0.0\n"
                         "[camera 1]\ninterface = GigE-0\nmodel = Big\naddress = 169.254.10.20\n"
                         "description = big.xml\n"
                         "[camera 2]\ninterface = GigE-0\nmodel = Slow\naddress = 169.254.10.21\n"
                         "register-delay-us = ") +
                  QByteArray::number(kRegisterDelayUs) + "\n");
        qputenv("NORVANE_EMULATOR", m_folder.filePath("emulator.ini").toLocal8Bit());
        m_system = Norvane::System::GetInstance();
    }

    Norvane::CameraPtr find(int number) const {
        for (int attempt = 0; attempt < 100; ++attempt, QThread::msleep(50)) {
            const Norvane::CameraList cameras = m_system->GetCameras();
            for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
                if (Mapper().GetDeviceSerialNumber(cameras.GetByIndex(i)) == number) {
                    cameras.GetByIndex(i)->Init();
                    return cameras.GetByIndex(i);
                }
            }
        }
        qFatal("the emulated camera does not appear");
    }

private:
    void write(const char* name, const QByteArray& content) const {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
    }

    QTemporaryDir m_folder;
    Norvane::SystemPtr m_system;
};

Cameras& cameras() {
    static Cameras instance;
    return instance;
}

/// A tree in a window as wide as in the viewer.
class Window {
public:
    Window() : m_tree(nullptr) {
        m_tree.resize(400, 800);
        m_tree.show();
        settle();
    }
    void show(const Norvane::CameraPtr& camera) {
        m_tree.UpdateTreeViewCamera(camera);
        settle();
    }
    void search(const QString& text) {
        m_tree.findChild<QLineEdit*>()->setText(text);
        settle();
    }
    int rows() const { return m_tree.GetCurrentModel()->rowCount(); }
    static void settle() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

private:
    wFeatureTree m_tree;
};

/// Forgets what is cached, as if the camera had just been opened.
void forget(Norvane::ICameraBase& camera) {
    camera.GetNodeMap().InvalidateNodes();
    camera.GetTLDeviceNodeMap().InvalidateNodes();
    camera.GetTLStreamNodeMap().InvalidateNodes();
}

void readAll(INodeMap& map) {
    node_vector nodes;
    map.GetNodes(nodes);
    for (INode* node : nodes) {
        if (!node->IsFeature()) {
            continue;
        }
        const EAccessMode access = node->GetAccessMode();
        try {
            benchmark::DoNotOptimize(Mapper::CellValue(*node, access));
        } catch (const Norvane::Exception&) {
            // Not every generated value is one that its node takes.
        }
    }
}

void ReadValuesWithoutTree(benchmark::State& state) {
    const Norvane::CameraPtr camera = cameras().find(1);
    for (auto _ : state) {
        state.PauseTiming();
        forget(*camera);
        state.ResumeTiming();
        readAll(camera->GetNodeMap());
        readAll(camera->GetTLDeviceNodeMap());
        readAll(camera->GetTLStreamNodeMap());
    }
}

void SelectCamera(benchmark::State& state) {
    Window window;
    const Norvane::CameraPtr camera = cameras().find(1);
    for (auto _ : state) {
        state.PauseTiming();
        window.show({});
        forget(*camera);
        state.ResumeTiming();
        window.show(camera);
    }
}

void Keystroke(benchmark::State& state, const char* before, const char* after) {
    Window window;
    window.show(cameras().find(1));
    for (auto _ : state) {
        state.PauseTiming();
        window.search(before);
        state.ResumeTiming();
        window.search(after);
    }
    state.counters["rows"] = window.rows();
}

void SelectCameraBehindSlowLink(benchmark::State& state) {
    Window window;
    const Norvane::CameraPtr camera = cameras().find(2);
    node_vector nodes;
    camera->GetNodeMap().GetNodes(nodes);
    int registers = 0;
    for (INode* node : nodes) {
        registers += CRegisterPtr(node).IsValid();
    }
    for (auto _ : state) {
        state.PauseTiming();
        window.show({});
        forget(*camera);
        state.ResumeTiming();
        window.show(camera);
    }
    state.counters["registers"] = registers;
    state.counters["limit_ms"] = 2.0 * registers * kRegisterDelayUs / 1000;
}

BENCHMARK(ReadValuesWithoutTree)->Unit(benchmark::kMillisecond);
BENCHMARK(SelectCamera)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Keystroke, all_rows, "Featur", "Feature")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Keystroke, first_letter, "", "F")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Keystroke, few_rows, "Feature1", "Feature17")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Keystroke, last_letter_deleted, "F", "")->Unit(benchmark::kMillisecond);
BENCHMARK(SelectCameraBehindSlowLink)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Q_INIT_RESOURCE(tavorin);
    const QApplication application(argc, argv);
    QFile style(QStringLiteral(":qss/stylesheet.qss"));
    if (style.open(QIODevice::ReadOnly)) {
        qApp->setStyleSheet(QString::fromLatin1(style.readAll()));
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
