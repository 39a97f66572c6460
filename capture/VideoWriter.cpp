#include "VideoWriter.h"

#include <QTime>
#include <QtDebug>

#include <algorithm>
#include <limits>

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
    const QByteArray stem =
        (settings.folder + "/" + QTime::currentTime().toString(QStringLiteral("hh_mm_ss"))).toUtf8();
    switch (settings.videoType) {
    case UNCOMPRESSED: {
        auto option = optionFor<Norvane::Video::AVIOption>(image, settings);
        m_writer.Open((stem + "Uncompressed").constData(), option);
        break;
    }
    case MJPG: {
        auto option = optionFor<Norvane::Video::MJPGOption>(image, settings);
        option.quality = static_cast<unsigned int>(settings.mjpegQuality);
        m_writer.Open((stem + "MJPG").constData(), option);
        break;
    }
    case H264: {
        auto option = optionFor<Norvane::Video::H264Option>(image, settings);
        option.bitrate = static_cast<unsigned int>(settings.h264Bitrate);
        m_writer.Open((stem + "H264").constData(), option);
        break;
    }
    }
}

void VideoWriter::Close() {
    m_isOpen = false;
    m_writer.Close();
}
