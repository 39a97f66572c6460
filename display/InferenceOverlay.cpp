#include "InferenceOverlay.h"

#include "ClassLabels.h"
#include "Guarded.h"
#include "norvane/genapi/GenApi.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QStandardPaths>

#include <algorithm>

using namespace Norvane::GenApi;

namespace {

/// Reading more than this would hold up the window.
constexpr qint64 kMaxFileSize = 8 << 20; // bytes

QString percent(double fraction) {
    return QString::number(fraction * 100.0, 'f', 2) + QLatin1Char('%');
}

} // namespace

InferenceOverlay::InferenceOverlay()
    : m_classLabelLocation(QStandardPaths::writableLocation(QStandardPaths::HomeLocation) +
                           QStringLiteral("/Videos")),
      m_font(QApplication::font()) {}

void InferenceOverlay::UpdateMode(const Norvane::CameraPtr& camera) {
    m_mode = NotEnabled;
    m_missingChunkIsNoted = false;
    if (!camera.IsValid()) {
        return;
    }
    guarded("Reading the inference mode", [&] {
        const INodeMap& nodes = camera->GetNodeMap();
        const CBooleanPtr enable = nodes.GetNode("InferenceEnable");
        const CEnumerationPtr network = nodes.GetNode("InferenceNetworkTypeSelector");
        if (!IsReadable(enable.Get()) || !enable->GetValue() || !IsReadable(network.Get())) {
            return;
        }
        switch (network->GetIntValue()) {
        case 0:
            m_mode = Classification;
            break;
        case 1:
            m_mode = Detection;
            break;
        default:
            break;
        }
    });
}

void InferenceOverlay::SetClassLabelLocation(const QString& path) {
    m_classLabelLocation = path;
    ReadClassLabelFile();
}

void InferenceOverlay::ReadClassLabelFile() {
    m_classLabels.clear();
    QFile file(m_classLabelLocation);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return;
    }
    m_classLabels = ReadClassLabels(file.read(kMaxFileSize));
}

void InferenceOverlay::SetLabelDisplay(bool useFixedFontSize, const QFont& font, const QColor& color) {
    m_useFixedFontSize = useFixedFontSize;
    m_font = font;
    m_color = color;
}

QString InferenceOverlay::ClassLabel(int classNumber) const {
    const QString label = m_classLabels.value(classNumber);
    return label.isEmpty() ? QString::number(classNumber) : label;
}

void InferenceOverlay::Prepare(QPainter& painter, float zoomFactor) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_color);
    QFont font = m_font;
    if (!m_useFixedFontSize) {
        font.setPointSize(std::max(static_cast<int>(static_cast<float>(font.pointSize()) * zoomFactor), 1));
    }
    painter.setFont(font);
    m_typesetter.SetFont(font, painter);
}

QString InferenceOverlay::DrawDetection(QPainter& painter, const Norvane::ImagePtr& image, float zoomFactor) {
    try {
        const Norvane::InferenceBoundingBoxResult result =
            image->GetChunkData().GetInferenceBoundingBoxResult();
        if (result.GetBoxCount() == 0) {
            return QStringLiteral("No Bounding Boxes");
        }
        for (unsigned short i = 0; i < result.GetBoxCount(); ++i) {
            const Norvane::InferenceBoundingBox box = result.GetBoxAt(i);
            if (box.boxType == Norvane::InferenceBoundingBox::Rectangle) {
                DrawBox(painter, box, zoomFactor);
            }
        }
        m_typesetter.Draw(painter);
    } catch (const Norvane::Exception& error) {
        NoteMissingChunk(error.what());
    }
    return {};
}

void InferenceOverlay::DrawBox(QPainter& painter, const Norvane::InferenceBoundingBox& box,
                               float zoomFactor) {
    const auto scaled = [zoomFactor](int pixels) {
        return static_cast<int>(static_cast<float>(pixels) * zoomFactor);
    };
    const QRect rectangle(scaled(box.topLeftX), scaled(box.topLeftY), scaled(box.bottomRightX - box.topLeftX),
                          scaled(box.bottomRightY - box.topLeftY));
    painter.drawRect(rectangle);
    m_typesetter.Add(rectangle, QStringLiteral("Class Id: ") + ClassLabel(box.classId) +
                                    QStringLiteral("\nConfidence: ") +
                                    percent(static_cast<double>(box.confidence)));
}

QString InferenceOverlay::DescribeClassification(const Norvane::ImagePtr& image) {
    try {
        const Norvane::ChunkData chunks = image->GetChunkData();
        const double confidence = chunks.GetInferenceConfidence();
        if (m_threshold > confidence) {
            return QStringLiteral("Classification Threshold Not Met");
        }
        const QString label = ClassLabel(static_cast<int>(chunks.GetInferenceResult()));
        return QStringLiteral("Class: ") + label.toHtmlEscaped() + QStringLiteral("<br>Confidence: ") +
               percent(confidence);
    } catch (const Norvane::Exception& error) {
        NoteMissingChunk(error.what());
    }
    return {};
}

void InferenceOverlay::NoteMissingChunk(const char* what) {
    // Once per start, because every image of the stream would say the same.
    if (!m_missingChunkIsNoted) {
        m_missingChunkIsNoted = true;
        qInfo("No inference result to show: %s", what);
    }
}
