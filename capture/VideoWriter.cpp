#include "VideoWriter.h"

#include <QTime>
#include <QtDebug>

#include <algorithm>
#include <limits>
#include <mutex>

namespace {

template <class Option>
Option optionFor(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    Option option;
    option.frameRate = static_cast<float>(std::clamp<double>(
        settings.videoFrameRate, std::numeric_limits<float>::min(), std::numeric_limits<float>::max()));
    option.width = static_cast<unsigned int>(image->GetWidth());
    option.height = static_cast<unsigned int>(image->GetHeight());
    return option;
}

const char* nameOf(RecordVideoFileType type) {
    switch (type) {
    case UNCOMPRESSED:
        return "Uncompressed";
    case MJPG:
        return "MJPG";
    case H264:
        break;
    }
    return "H264";
}

/// Folder and name, less what the writer adds, of a video that there is not yet: a camera that was started in
/// the same second may be writing it, and it may be yesterday's. The name's second is then one that is free.
QString freeStem(const RecordingSettings& settings) {
    constexpr int kSecondsADay = 86400;
    const QTime now = QTime::currentTime();
    QString stem;
    for (int later = 0; later < kSecondsADay; ++later) {
        stem = settings.folder + "/" + now.addSecs(later).toString(QStringLiteral("hh_mm_ss")) +
               nameOf(settings.videoType);
        if (!Norvane::Video::NorVideo::Exists(stem.toUtf8().constData())) {
            break;
        }
    }
    return stem;
}

} // namespace

std::string VideoWriter::Append(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    m_writer.SetMaximumFileSize(static_cast<unsigned int>(settings.fileSplitSizeMb));
    if (!m_isOpen) {
        m_isOpen = true;
        try {
            Open(image, settings);
        } catch (const Norvane::Exception& error) {
            qWarning("Failed opening a file in the specified folder: %s. Please ensure your account has the "
                     "permissions to write to the folder.",
                     error.what());
        }
    }
    m_writer.Append(image);
    return m_writer.GetFileName();
}

void VideoWriter::Open(const Norvane::ImagePtr& image, const RecordingSettings& settings) {
    static std::mutex s_naming; // until the file is there, for the writers of all cameras
    const std::lock_guard lock(s_naming);
    const QByteArray stem = freeStem(settings).toUtf8();
    switch (settings.videoType) {
    case UNCOMPRESSED: {
        auto option = optionFor<Norvane::Video::AVIOption>(image, settings);
        m_writer.Open(stem.constData(), option);
        break;
    }
    case MJPG: {
        auto option = optionFor<Norvane::Video::MJPGOption>(image, settings);
        option.quality = static_cast<unsigned int>(settings.mjpegQuality);
        m_writer.Open(stem.constData(), option);
        break;
    }
    case H264: {
        auto option = optionFor<Norvane::Video::H264Option>(image, settings);
        option.bitrate = static_cast<unsigned int>(settings.h264Bitrate);
        m_writer.Open(stem.constData(), option);
        break;
    }
    }
}

void VideoWriter::Close() {
    m_isOpen = false;
    m_writer.Close();
}
