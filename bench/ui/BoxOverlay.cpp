// What the boxes and labels of an object-detecting camera cost the user-interface thread: 200 of them over an
// image, each frame with other places and confidences, in software rendering.

#include "ChunkValues.h"
#include "ImageFactory.h"
#include "InferenceOverlay.h"

#include <QApplication>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

constexpr int kBoxes = 200;
constexpr int kFrames = 200;

double ThreadMs() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

Norvane::ImagePtr ImageWithBoxes(int frame, std::vector<std::uint8_t>& pixels) {
    std::vector<Norvane::InferenceBoundingBox> boxes;
    for (int i = 0; i < kBoxes; ++i) {
        Norvane::InferenceBoundingBox box;
        box.classId = static_cast<std::int16_t>(i % 80);
        box.confidence = static_cast<float>((i * 37 + frame * 11) % 10000) / 10000.0F;
        box.topLeftX = static_cast<std::int16_t>((i % 16) * 78 + frame % 20);
        box.topLeftY = static_cast<std::int16_t>((i / 16) * 74 + frame % 15);
        box.bottomRightX = static_cast<std::int16_t>(box.topLeftX + 110);
        box.bottomRightY = static_cast<std::int16_t>(box.topLeftY + 60);
        boxes.push_back(box);
    }
    auto values = std::make_shared<Norvane::ChunkData::Values>();
    values->boundingBoxes = Norvane::InferenceBoundingBoxResult(std::move(boxes));
    Norvane::Imaging::ImageLayout layout;
    layout.format = Norvane::PixelFormat_Mono8;
    layout.width = 16;
    layout.height = 16;
    return Norvane::Imaging::MakeImage(layout, pixels.data(), pixels.size(), nullptr,
                                       Norvane::ChunkData(std::move(values)));
}

class Canvas : public QOpenGLWidget {
public:
    std::vector<double> costs; // ms of this thread, one per frame

protected:
    void paintGL() override {
        const Norvane::ImagePtr image = ImageWithBoxes(static_cast<int>(costs.size()), m_pixels);
        const double before = ThreadMs();
        {
            QPainter painter(this);
            m_overlay.Prepare(painter, 1.0F);
            painter.beginNativePainting();
            context()->functions()->glClearColor(0.2F, 0.2F, 0.2F, 1.0F);
            context()->functions()->glClear(GL_COLOR_BUFFER_BIT);
            painter.endNativePainting();
            m_overlay.DrawDetection(painter, image, 1.0F);
        }
        costs.push_back(ThreadMs() - before);
        update();
    }

private:
    InferenceOverlay m_overlay;
    std::vector<std::uint8_t> m_pixels = std::vector<std::uint8_t>(256);
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    Canvas canvas;
    canvas.resize(1280, 1024);
    canvas.show();
    while (canvas.costs.size() < kFrames) {
        application.processEvents(QEventLoop::WaitForMoreEvents);
    }
    if (argc > 1) {
        canvas.grabFramebuffer().save(QString::fromLocal8Bit(argv[1]));
    }
    std::sort(canvas.costs.begin(), canvas.costs.end());
    std::printf("%d boxes with labels: median %.2f ms, 99th percentile %.2f ms of the user-interface thread "
                "a frame\n",
                kBoxes, canvas.costs[kFrames / 2], canvas.costs[kFrames * 99 / 100]);
    return 0;
}
