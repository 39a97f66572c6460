#include "StillWriter.h"

#include <QTime>

#include <algorithm>

namespace {

const char* extensionOf(RecordImFormat format) {
    switch (format) {
    case PGM:
        return ".pgm";
    case PPM:
        return ".ppm";
    case BMP:
        return ".bmp";
    case JPEG:
        return ".jpg";
    case JPEG2000:
        return ".jpg2000";
    case TIFF:
        return ".tiff";
    case PNG:
        return ".png";
    case RAW:
        break;
    }
    return ".raw";
}

/// What is typed for a quality has no limits, and the library refuses what a format does not know: the
/// nearest that it knows loses no image.
template <class Option>
Option within(Option option, unsigned int most) {
    option.quality = std::clamp(option.quality, 1U, most);
    return option;
}

} // namespace

std::string StillWriter::Write(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    const QByteArray folder = settings.folder.toUtf8();
    const QByteArray stem = QTime::currentTime().toString(QStringLiteral("hh_mm_ss_zzz")).toUtf8();
    std::string path = (folder + "/" + stem + extensionOf(settings.imageFormat)).toStdString();
    Save(image, path.c_str(), settings);
    return path;
}

void StillWriter::Save(const Norvane::ImagePtr& image, const char* fileName,
                       const RecordingSettings& settings) {
    switch (settings.imageFormat) {
    case PGM:
        return image->Save(fileName, settings.pgm);
    case PPM:
        return image->Save(fileName, settings.ppm);
    case BMP:
        return image->Save(fileName, settings.bmp);
    case JPEG:
        return image->Save(fileName, within(settings.jpeg, 100));
    case JPEG2000:
        return image->Save(fileName, within(settings.jpeg2000, 512));
    case TIFF:
        return image->Save(fileName, settings.tiff);
    case PNG:
        return image->Save(fileName, settings.png);
    case RAW:
        break;
    }
    image->Save(fileName);
}
