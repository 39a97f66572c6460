#pragma once

#include "FrameRateCalculator.h"
#include "InferenceOverlay.h"
#include "QuadRenderer.h"
#include "norvane/Camera.h"
#include "norvane/Image.h"

#include <QBasicTimer>
#include <QByteArray>
#include <QImage>
#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>
#include <QPointer>

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

class ImageCapture;
class QScrollArea;
class wInferenceDialog;

/// Shows a camera's images. It pulls the newest one from the acquisition worker at a limited rate, converts
/// it straight into a pixel buffer of the graphics system, and draws it as one quad over the whole widget, so
/// that zooming is a change of the widget's size. The inference result is painted on top.
///
/// Owned by the image display. User-interface thread only.
class wGLImageDisplay : public QOpenGLWidget, private QOpenGLFunctions {
    Q_OBJECT

public:
    explicit wGLImageDisplay(QWidget* parent = nullptr);
    ~wGLImageDisplay() override;

    void setImageCaptureThread(ImageCapture* imageCapture);
    /// An invalid handle is ignored.
    void connectToCamera(const Norvane::CameraPtr& camera);
    void setInferenceDialog(wInferenceDialog* dialog);

    /// A Norvane::ColorProcessingAlgorithm. A stopped display shows its image anew.
    int getColorProcessingAlgorithm() const { return m_colorProcessingAlgorithm; }
    void setColorProcessingAlgorithm(int code);
    /// Images a second that are shown at most.
    float getMaxDisplayFPS() const { return m_maxDisplayFPS; }
    void setMaxDisplayFPS(float framesPerSecond);

    /// The camera's image that is on display; null before the first.
    Norvane::ImagePtr getRawImage() const { return m_rawImage; }
    /// Its converted twin: geometry and format only, the pixels belong to the graphics system.
    Norvane::ImagePtr getDisplayImage() const { return m_displayImage; }
    bool hasImage() const { return !m_noImageYet; }

    float getZoomLevel() const { return m_zoomLevel; }
    float getZoomFactor() const { return m_zoomFactor; }
    /// Images converted and images painted per second.
    double getUpdateRate() const { return m_updateRateCalculator.GetFrameRate(); }
    double getPaintRate() const { return m_paintRateCalculator.GetFrameRate(); }

    /// One step in for 1 or more, one step out for less. Ignored before the first image.
    void zoom(int direction);
    /// The same at a point of the scroll area, which moves along.
    void zoomScroll(QScrollArea* area, int delta, int x, int y);
    /// Makes the image as large as the container lets it be. Ignored before the first image.
    void stretchToFit(const QSize& container);

public slots:
    void updateImageDisplayGL(Norvane::ImagePtr const& image);
    void startProcessAndDisplay();
    void stopProcessAndDisplay();
    void changeInferenceEnabledStatus(bool on);
    void OnInferenceClassificationConfidenceThresholdChanged(double fraction);
    void OnInferenceLabelDisplaySettingChanged(bool useFixedFontSize, const QFont& font, const QColor& color);
    void OnInferenceCornerLabelUpdated(const QFont& font, const QColor& color, const QString& text);
    void OnInferenceClassLabelLocationChanged(const QString& path);

signals:
    void InferenceCornerLabelUpdate(QFont font, QColor color, QString text);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    /// A zoomed image may be larger than the graphics system can draw at the screen's density; it is then
    /// drawn coarser and enlarged.
    int metric(PaintDeviceMetric which) const override;
    void timerEvent(QTimerEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    /// One of the two buffers that images are converted into by turns.
    struct PixelBuffer {
        QOpenGLBuffer buffer{QOpenGLBuffer::PixelUnpackBuffer};
        QuadRenderer::Pixels pixels = QuadRenderer::Pixels::Bgr;
        int byteSize = 0;
        int width = 0;
        int height = 0;
    };

    Norvane::ImagePtr ConvertInto(PixelBuffer& target, const Norvane::ImagePtr& image);
    void NoteConversionError(const Norvane::ImagePtr& image, const Norvane::Exception& error);
    void Show(const Norvane::ImagePtr& image, const Norvane::ImagePtr& converted);
    void ShowAgain();
    void ReleaseGL();
    void PaintImage();
    void RestrictToVisible();
    void ApplyZoom();
    void StartTimer();
    void createInferencePainter();
    void inferenceHandleDetection();
    void drawInferenceClassification();
    void updateCornerLabel(const QString& text);

    QPointer<ImageCapture> m_imageCapture;
    std::mutex m_mutex; // guards the image handles and the timer
    float m_maxDisplayFPS = 120.0F;
    QBasicTimer m_displayTimer;
    Norvane::ImagePtr m_rawImage;
    Norvane::ImagePtr m_displayImage;
    QSize m_imageSize; // pixels of the image shown last
    bool m_noImageYet = true;
    bool m_painting = false;
    bool m_inferenceEnabled = false;
    bool m_viewportResized = false;
    std::array<PixelBuffer, 2> m_pixelBuffers;
    int m_readIndex = 0;
    int m_writeIndex = 1;
    QuadRenderer m_renderer;
    bool m_textureIsStale = false; // the read buffer holds an image that the texture does not
    int m_colorProcessingAlgorithm = Norvane::BILINEAR;
    std::optional<std::pair<Norvane::PixelFormatEnums, Norvane::Error>> m_notedConversionError;
    bool m_algorithmChanged = false;
    float m_zoomLevel = 0.0F;
    float m_zoomFactor = 1.0F;
    QImage m_logo;
    int m_maxSurfaceSide = 4096; // device pixels; at least this on any system, known when the context is
    FrameRateCalculator m_paintRateCalculator{10};
    FrameRateCalculator m_updateRateCalculator{10};
    Norvane::CameraPtr m_camera;
    QPointer<wInferenceDialog> m_inferenceDialog;
    InferenceOverlay m_overlay;
    QString m_cornerLabelText;
    std::shared_ptr<QPainter> m_painter; // alive during one paint
    QMetaObject::Connection m_contextConnection;
};
