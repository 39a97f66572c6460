#include "wGLImageDisplay.h"

#include "Guarded.h"
#include "ImageCapture.h"
#include "wInferenceDialog.h"

#include <QFile>
#include <QOpenGLContext>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

using Norvane::ImagePtr;

namespace {

constexpr float kZoomStep = 1.15F;
constexpr float kMaxZoomLevel = 10.0F;
/// Pixels of the surface that is drawn into; each takes 8 bytes with its depth and stencil.
constexpr double kMaxSurfaceArea = 100e6;

float factorOf(float zoomLevel) {
    return std::pow(kZoomStep, zoomLevel);
}

/// Whether all three colours would be the same.
bool isGrey(const ImagePtr& image, int algorithm) {
    constexpr unsigned kSingleComponent = 1; // the uppermost byte of the PFNC's value
    const Norvane::PixelFormatInfo* format = Norvane::FindPixelFormat(image->GetPixelFormat());
    return format && format->pfncCode >> 24 == kSingleComponent &&
           (format->bayer == Norvane::BayerPhase::None || algorithm == Norvane::NO_COLOR_PROCESSING);
}

QSize sizeOf(const ImagePtr& image) {
    return {static_cast<int>(image->GetWidth()), static_cast<int>(image->GetHeight())};
}

QSize scaled(const QSize& image, float factor) {
    const auto length = [factor](int pixels) {
        return std::max(static_cast<int>(static_cast<float>(pixels) * factor), 1);
    };
    return {length(image.width()), length(image.height())};
}

} // namespace

wGLImageDisplay::wGLImageDisplay(QWidget* parent) : QOpenGLWidget(parent) {
    // Otherwise the whole surface is cleared before each frame, however little of it is visible.
    setUpdateBehavior(PartialUpdate);
    // Otherwise the backgrounds of all that it lies on are painted first, whenever something else changed
    // too.
    setAttribute(Qt::WA_OpaquePaintEvent);
    const QImage logo(QStringLiteral(":images/logo.png"));
    const QString fineLogo = QStringLiteral(":images/logo@2x.png");
    const bool useFineLogo = devicePixelRatioF() > 1.0 && QFile::exists(fineLogo);
    m_logo = (useFineLogo ? QImage(fineLogo) : logo).convertToFormat(QImage::Format_RGBA8888).mirrored();
    setFixedSize(logo.isNull() ? QSize(640, 480) : logo.size());
    connect(this, &wGLImageDisplay::InferenceCornerLabelUpdate, this,
            &wGLImageDisplay::OnInferenceCornerLabelUpdated);
}

wGLImageDisplay::~wGLImageDisplay() {
    disconnect(m_contextConnection);
    makeCurrent();
    ReleaseGL();
    doneCurrent();
}

void wGLImageDisplay::setImageCaptureThread(ImageCapture* imageCapture) {
    m_imageCapture = imageCapture;
}

void wGLImageDisplay::connectToCamera(const Norvane::CameraPtr& camera) {
    if (!camera.IsValid()) {
        return;
    }
    m_camera = camera;
    m_overlay.UpdateMode(m_camera);
    if (m_inferenceDialog) {
        m_inferenceDialog->setCamProperty(m_camera);
    }
}

void wGLImageDisplay::setInferenceDialog(wInferenceDialog* dialog) {
    m_inferenceDialog = dialog;
}

void wGLImageDisplay::setColorProcessingAlgorithm(int code) {
    const std::lock_guard lock(m_mutex);
    m_colorProcessingAlgorithm = code;
    m_algorithmChanged = true;
    if (!m_displayTimer.isActive()) {
        ShowAgain();
    }
}

void wGLImageDisplay::setMaxDisplayFPS(float framesPerSecond) {
    const std::lock_guard lock(m_mutex);
    m_maxDisplayFPS = framesPerSecond;
    if (m_displayTimer.isActive()) {
        StartTimer();
    }
}

void wGLImageDisplay::StartTimer() {
    m_displayTimer.start(static_cast<int>(1000.0F / m_maxDisplayFPS), Qt::PreciseTimer, this);
}

void wGLImageDisplay::startProcessAndDisplay() {
    const std::lock_guard lock(m_mutex);
    m_rawImage = nullptr;
    m_displayImage = nullptr;
    m_overlay.UpdateMode(m_camera);
    StartTimer();
}

void wGLImageDisplay::stopProcessAndDisplay() {
    const std::lock_guard lock(m_mutex);
    m_displayTimer.stop();
    if (!m_rawImage.IsValid()) {
        return;
    }
    // A copy of our own stays on display, so that the stream gets its buffer back.
    guarded("Keeping the last image", [this] {
        ImagePtr copy = Norvane::Image::Create();
        copy->DeepCopy(m_rawImage);
        m_rawImage = copy;
    });
}

void wGLImageDisplay::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_displayTimer.timerId()) {
        QOpenGLWidget::timerEvent(event);
        return;
    }
    const std::lock_guard lock(m_mutex);
    if (m_imageCapture) {
        updateImageDisplayGL(m_imageCapture->getRawImagePtr(true));
    }
}

void wGLImageDisplay::updateImageDisplayGL(ImagePtr const& image) {
    if (!image.IsValid()) {
        return;
    }
    m_noImageYet = false;
    PixelBuffer& target = m_pixelBuffers[static_cast<std::size_t>(m_writeIndex)];
    m_imageSize = sizeOf(image);
    if (m_imageSize != QSize(target.width, target.height)) {
        setFixedSize(scaled(m_imageSize, m_zoomFactor));
    }
    const ImagePtr converted = ConvertInto(target, image);
    m_updateRateCalculator.UpdateFrameRate();
    Show(image, converted);
}

void wGLImageDisplay::NoteConversionError(const ImagePtr& image, const Norvane::Exception& error) {
    // Once, because every image of the stream would say the same, though perhaps with another number in it.
    const std::pair kind(image->GetPixelFormat(), error.GetError());
    if (m_notedConversionError != kind) {
        m_notedConversionError = kind;
        qWarning("Images of this camera cannot be shown: %s", error.what());
    }
}

ImagePtr wGLImageDisplay::ConvertInto(PixelBuffer& target, const ImagePtr& image) {
    makeCurrent();
    const auto width = static_cast<int>(image->GetWidth());
    const auto height = static_cast<int>(image->GetHeight());
    if (!target.buffer.isCreated() || !target.buffer.bind()) {
        return {};
    }
    // Grey stays one byte a pixel: three times as much would be written, and most drivers rearrange it.
    const bool grey = isGrey(image, m_colorProcessingAlgorithm);
    const auto pixels = grey ? QuadRenderer::Pixels::Grey : QuadRenderer::Pixels::Bgr;
    const qint64 bytes = qint64{width} * height * (grey ? 1 : 3);
    if (bytes > std::numeric_limits<int>::max()) {
        NoteConversionError(image, Norvane::Exception(Norvane::Error::InvalidBuffer,
                                                      "they are too large: " + std::to_string(width) + " x " +
                                                          std::to_string(height) + " pixels"));
        target.buffer.release();
        return {};
    }
    if (target.width != width || target.height != height || target.pixels != pixels) {
        target.byteSize = static_cast<int>(bytes);
        target.buffer.allocate(target.byteSize);
        target.pixels = pixels;
        target.width = width;
        target.height = height;
    }
    ImagePtr converted;
    if (void* memory = target.buffer.map(QOpenGLBuffer::WriteOnly)) {
        try {
            const ImagePtr destination = Norvane::Image::Create(
                image->GetWidth(), image->GetHeight(), image->GetXOffset(), image->GetYOffset(),
                grey ? Norvane::PixelFormat_Mono8 : Norvane::PixelFormat_BGR8, memory);
            image->Convert(destination,
                           static_cast<Norvane::ColorProcessingAlgorithm>(m_colorProcessingAlgorithm));
            converted = destination;
        } catch (const Norvane::Exception& error) {
            NoteConversionError(image, error);
        }
        target.buffer.unmap();
    }
    target.buffer.release();
    return converted;
}

void wGLImageDisplay::Show(const ImagePtr& image, const ImagePtr& converted) {
    if (m_painting || !converted.IsValid()) {
        return;
    }
    m_rawImage = image;
    m_displayImage = converted;
    m_readIndex = (m_readIndex + 1) % 2;
    m_writeIndex = (m_readIndex + 1) % 2;
    m_textureIsStale = true;
    m_algorithmChanged = false;
    update();
}

void wGLImageDisplay::ShowAgain() {
    if (m_rawImage.IsValid()) {
        const ImagePtr image = m_rawImage;
        Show(image, ConvertInto(m_pixelBuffers[static_cast<std::size_t>(m_writeIndex)], image));
    }
}

void wGLImageDisplay::initializeGL() {
    makeCurrent();
    initializeOpenGLFunctions();
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &m_maxSurfaceSide);
    m_contextConnection = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        ReleaseGL();
        doneCurrent();
    });
    glClearColor(1.0F, 1.0F, 1.0F, 0.0F);
    m_renderer.Create(*this, m_logo);
    for (PixelBuffer& pixelBuffer : m_pixelBuffers) {
        pixelBuffer.buffer.destroy();
        pixelBuffer = PixelBuffer();
        pixelBuffer.buffer.create();
        pixelBuffer.buffer.setUsagePattern(QOpenGLBuffer::StreamDraw);
    }
    // A dock that floats or docks gets a new context: the image on display moves along.
    ShowAgain();
}

void wGLImageDisplay::ReleaseGL() {
    if (!QOpenGLContext::currentContext()) {
        return;
    }
    for (PixelBuffer& pixelBuffer : m_pixelBuffers) {
        pixelBuffer.buffer.destroy();
        pixelBuffer = PixelBuffer();
    }
    m_renderer.Destroy(*this);
}

int wGLImageDisplay::metric(PaintDeviceMetric which) const {
    const int value = QOpenGLWidget::metric(which);
    if (which != PdmDevicePixelRatio && which != PdmDevicePixelRatioScaled) {
        return value;
    }
    const double ratio = which == PdmDevicePixelRatio ? value : value / devicePixelRatioFScale();
    const double side = std::max({width(), height(), 1});
    const double area = std::max(1.0 * width() * height(), 1.0);
    const double fitting = std::min({ratio, m_maxSurfaceSide / side, std::sqrt(kMaxSurfaceArea / area)});
    return which == PdmDevicePixelRatio ? std::max(static_cast<int>(fitting), 1)
                                        : static_cast<int>(fitting * devicePixelRatioFScale());
}

void wGLImageDisplay::resizeGL(int width, int height) {
    const qreal ratio = devicePixelRatioF();
    glViewport(0, 0, qRound(width * ratio), qRound(height * ratio));
    m_viewportResized = true;
}

void wGLImageDisplay::moveEvent(QMoveEvent* event) {
    QOpenGLWidget::moveEvent(event);
    update(); // scrolling shows parts that were left out, see RestrictToVisible
}

void wGLImageDisplay::RestrictToVisible() {
    // A zoomed image is many times larger than what the scroll area shows of it.
    const QRect visible = visibleRegion().boundingRect();
    if (visible.isEmpty()) {
        return;
    }
    const qreal ratio = devicePixelRatioF();
    const int left = static_cast<int>(std::floor(visible.left() * ratio));
    const int bottom = static_cast<int>(std::floor((height() - visible.bottom() - 1) * ratio));
    glEnable(GL_SCISSOR_TEST);
    glScissor(left, bottom, static_cast<int>(std::ceil(visible.width() * ratio)) + 1,
              static_cast<int>(std::ceil(visible.height() * ratio)) + 1);
}

void wGLImageDisplay::paintGL() {
    if (m_painting) {
        return;
    }
    if (m_noImageYet) {
        glClear(GL_COLOR_BUFFER_BIT);
        m_renderer.DrawLogo(*this);
        return;
    }
    m_painting = true;
    m_viewportResized = false;
    if (m_overlay.GetMode() == InferenceOverlay::NotEnabled) {
        updateCornerLabel(QStringLiteral("Inference is not fully enabled"));
    }
    const bool drawsBoxes = m_inferenceEnabled && m_overlay.GetMode() == InferenceOverlay::Detection;
    if (drawsBoxes) {
        createInferencePainter();
    }
    PaintImage();
    if (drawsBoxes) {
        m_painter->endNativePainting();
        inferenceHandleDetection();
        m_painter.reset();
    } else if (m_inferenceEnabled && m_overlay.GetMode() == InferenceOverlay::Classification) {
        drawInferenceClassification();
    }
    m_paintRateCalculator.UpdateFrameRate();
    m_painting = false;
}

void wGLImageDisplay::PaintImage() {
    RestrictToVisible();
    glClear(GL_COLOR_BUFFER_BIT);
    PixelBuffer& source = m_pixelBuffers[static_cast<std::size_t>(m_readIndex)];
    if (m_textureIsStale && source.width > 0) {
        m_renderer.Upload(*this, source.buffer, source.pixels, source.width, source.height);
        m_textureIsStale = false;
    }
    m_renderer.DrawImage(*this);
    glDisable(GL_SCISSOR_TEST);
}

void wGLImageDisplay::zoom(int direction) {
    if (m_noImageYet) {
        return;
    }
    if (direction >= 1) {
        if (m_zoomLevel < kMaxZoomLevel) {
            m_zoomLevel += 1.0F;
        }
    } else if (m_zoomLevel > -kMaxZoomLevel) {
        m_zoomLevel -= 1.0F;
    }
    ApplyZoom();
}

void wGLImageDisplay::ApplyZoom() {
    m_zoomFactor = factorOf(m_zoomLevel);
    setFixedSize(scaled(m_imageSize, m_zoomFactor));
}

void wGLImageDisplay::zoomScroll(QScrollArea* area, int delta, int x, int y) {
    if (m_noImageYet) {
        return;
    }
    zoom(delta);
    if (m_zoomLevel >= kMaxZoomLevel) {
        return;
    }
    const auto follow = [this](QScrollBar* bar, int position) {
        const int halfPage = bar->pageStep() / 2;
        const auto offset = static_cast<float>(position - halfPage);
        bar->setValue(
            static_cast<int>(static_cast<float>(bar->value()) * m_zoomFactor + offset * m_zoomFactor));
    };
    follow(area->horizontalScrollBar(), x);
    follow(area->verticalScrollBar(), y);
}

void wGLImageDisplay::stretchToFit(const QSize& container) {
    if (m_noImageYet || container.isEmpty()) {
        return;
    }
    const float scale =
        std::min(static_cast<float>(container.width()) / static_cast<float>(m_imageSize.width()),
                 static_cast<float>(container.height()) / static_cast<float>(m_imageSize.height()));
    m_zoomLevel = std::log(scale) / std::log(kZoomStep);
    m_zoomFactor = factorOf(m_zoomLevel);
    setFixedSize(scaled(m_imageSize, scale));
}

void wGLImageDisplay::changeInferenceEnabledStatus(bool on) {
    m_inferenceEnabled = on;
    update();
}

void wGLImageDisplay::OnInferenceClassificationConfidenceThresholdChanged(double fraction) {
    m_overlay.SetThreshold(fraction);
    update();
}

void wGLImageDisplay::OnInferenceLabelDisplaySettingChanged(bool useFixedFontSize, const QFont& font,
                                                            const QColor& color) {
    m_overlay.SetLabelDisplay(useFixedFontSize, font, color);
    update();
    updateCornerLabel(m_cornerLabelText);
}

void wGLImageDisplay::OnInferenceClassLabelLocationChanged(const QString& path) {
    m_overlay.SetClassLabelLocation(path);
    update();
}

void wGLImageDisplay::OnInferenceCornerLabelUpdated(const QFont&, const QColor&, const QString& text) {
    m_cornerLabelText = text;
}

void wGLImageDisplay::updateCornerLabel(const QString& text) {
    emit InferenceCornerLabelUpdate(m_overlay.LabelFont(), m_overlay.LabelColor(), text);
}

void wGLImageDisplay::createInferencePainter() {
    m_painter = std::make_shared<QPainter>(this);
    m_overlay.Prepare(*m_painter, m_zoomFactor);
    m_painter->beginNativePainting();
}

void wGLImageDisplay::inferenceHandleDetection() {
    if (m_rawImage.IsValid()) {
        updateCornerLabel(m_overlay.DrawDetection(*m_painter, m_rawImage, m_zoomFactor));
    }
}

void wGLImageDisplay::drawInferenceClassification() {
    if (m_rawImage.IsValid()) {
        updateCornerLabel(m_overlay.DescribeClassification(m_rawImage));
    }
}
