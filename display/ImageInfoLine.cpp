#include "ImageInfoLine.h"

#include "norvane/PixelFormat.h"

using namespace Norvane;

namespace {

QString rate(double framesPerSecond) {
    return QString::number(framesPerSecond, 'f', 2);
}

} // namespace

QString ImageInfoLine::FormatFamily(int pixelFormat) {
    switch (pixelFormat) {
    case PixelFormat_Mono8:
    case PixelFormat_Mono16:
    case PixelFormat_Mono12p:
    case PixelFormat_Mono12Packed:
        return QStringLiteral("Mono");
    case PixelFormat_BayerGR8:
    case PixelFormat_BayerRG8:
    case PixelFormat_BayerGB8:
    case PixelFormat_BayerBG8:
    case PixelFormat_BayerGR16:
    case PixelFormat_BayerRG16:
    case PixelFormat_BayerGB16:
    case PixelFormat_BayerBG16:
    case PixelFormat_BayerGR12Packed:
    case PixelFormat_BayerRG12Packed:
    case PixelFormat_BayerGB12Packed:
    case PixelFormat_BayerBG12Packed:
    case PixelFormat_BayerGR12p:
    case PixelFormat_BayerRG12p:
    case PixelFormat_BayerGB12p:
    case PixelFormat_BayerBG12p:
    case PixelFormat_BayerGR12:
    case PixelFormat_BayerRG12:
    case PixelFormat_BayerGB12:
    case PixelFormat_BayerBG12:
        return QStringLiteral("Bayer");
    case PixelFormat_BGRa8:
    case PixelFormat_BGR8:
    case PixelFormat_BGR16:
    case PixelFormat_BGR10:
    case PixelFormat_BGR12:
    case PixelFormat_BGRa16:
        return QStringLiteral("BGR8");
    case PixelFormat_Raw8:
        return QStringLiteral("Raw8");
    default:
        return {};
    }
}

QString ImageInfoLine::Format(const Selection& selection, const Frame& frame, const Packets* packets,
                              double zoomFactor, const Rates& rates) {
    QString line;
    const auto append = [&line](const char* name, const QString& value, const char* end) {
        line += QLatin1String(name) + QLatin1String(": ") + value + QLatin1String(end);
    };
    if (selection.imageStatus) {
        append("W", QString::number(frame.width), "  ");
        append("H", QString::number(frame.height), "  ");
        append("Format", FormatFamily(frame.pixelFormat), "  ");
        append("BPP", QString::number(frame.bitsPerPixel), "  ");
        append("ID", frame.id, "  ");
        append("Zoom", QString::number(100 * zoomFactor), "%  ");
        append("TimeStamp", frame.timeStamp, "  ");
        if (packets) {
            append("TotalPackets", packets->total, "  ");
            append("MissedPackets", packets->missed, "  ");
            append("ResendRequests", packets->resendRequests, "  ");
            append("ResendPackets", packets->resendPackets, "  ");
        }
        append("CorruptImages", frame.corruptImages, "  ");
        append("BufferUnderrun", frame.bufferUnderrun, "  ");
    }
    if (selection.cameraFps) {
        append("Camera FPS", rate(rates.camera), " Hz  ");
    }
    if (selection.receivedFps) {
        append("Received FPS", rate(rates.received), " Hz  ");
    }
    if (selection.processedFps) {
        append("Processed FPS", rate(rates.processed), " Hz  ");
    }
    if (selection.displayedFps) {
        append("Display FPS", rate(rates.displayed), " Hz");
    }
    return line;
}
