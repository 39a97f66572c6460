#pragma once

#include "LabelTypesetter.h"
#include "norvane/Camera.h"
#include "norvane/Image.h"

#include <QColor>
#include <QFont>
#include <QMap>
#include <QString>

class QPainter;

/// What a camera's own inference attached to an image, made visible: boxes with labels over the image, or one
/// line for the corner label. Holds the label settings of one display. User-interface thread.
class InferenceOverlay {
public:
    enum Mode { NotEnabled = 0, Detection = 1, Classification = 2 };

    InferenceOverlay();

    /// Asks the camera what it infers; an invalid handle infers nothing.
    void UpdateMode(const Norvane::CameraPtr& camera);
    Mode GetMode() const { return m_mode; }

    /// A text file, one label per line; line n, counted from 0, names class n. A file that cannot be read
    /// leaves the numbers as names.
    void SetClassLabelLocation(const QString& path);
    void SetThreshold(double fraction) { m_threshold = fraction; }
    /// @param useFixedFontSize  draw the font at its own size, else at its size times the zoom factor.
    void SetLabelDisplay(bool useFixedFontSize, const QFont& font, const QColor& color);
    const QFont& LabelFont() const { return m_font; }
    const QColor& LabelColor() const { return m_color; }

    /// The class's label, or its number where it has none.
    QString ClassLabel(int classNumber) const;

    /// Pen, font and smoothing for drawing at a zoom factor.
    void Prepare(QPainter& painter, float zoomFactor);
    /// Draws the image's boxes; answers the corner label's text.
    QString DrawDetection(QPainter& painter, const Norvane::ImagePtr& image, float zoomFactor);
    /// The corner label's text, simple HTML.
    QString DescribeClassification(const Norvane::ImagePtr& image);

private:
    void ReadClassLabelFile();
    void DrawBox(QPainter& painter, const Norvane::InferenceBoundingBox& box, float zoomFactor);
    void NoteMissingChunk(const char* what);

    Mode m_mode = NotEnabled;
    QString m_classLabelLocation;
    QMap<int, QString> m_classLabels;
    double m_threshold = 0.0;
    bool m_useFixedFontSize = true;
    QFont m_font;
    QColor m_color = Qt::darkGreen;
    bool m_missingChunkIsNoted = false;
    LabelTypesetter m_typesetter;
};
