#include "norvane/video/NorVideo.h"

#include "video/NorVideoWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace Norvane::Video {

namespace {

// Decimal megabytes: a part then is below the limit whichever way its reader counts.
constexpr std::int64_t kMegabyte = 1'000'000;

template <class Option>
VideoFormat FormatOf(Codec codec, const Option& option) {
    constexpr unsigned int kMaxLength = 65535;
    if (option.width == 0 || option.height == 0 || option.width > kMaxLength || option.height > kMaxLength) {
        throw Exception(Error::InvalidParameter, "A video cannot be " + std::to_string(option.width) + " x " +
                                                     std::to_string(option.height) +
                                                     " pixels; 1 to 65535 each way");
    }
    if (!std::isfinite(option.frameRate) || option.frameRate <= 0.0F) {
        throw Exception(Error::InvalidParameter, "A video cannot have " + std::to_string(option.frameRate) +
                                                     " frames a second; set a rate above 0");
    }
    VideoFormat format;
    format.codec = codec;
    format.width = static_cast<int>(option.width);
    format.height = static_cast<int>(option.height);
    format.frameRate = ExactRate(static_cast<double>(option.frameRate));
    return format;
}

} // namespace

NorVideo::NorVideo() = default;
NorVideo::~NorVideo() = default;

void NorVideo::Open(const char* fileName, AVIOption& option) {
    Close();
    m_writer = std::make_unique<Writer>(fileName, FormatOf(Codec::Uncompressed, option),
                                        m_maximumFileSize * kMegabyte);
}

void NorVideo::Open(const char* fileName, MJPGOption& option) {
    Close();
    VideoFormat format = FormatOf(Codec::MotionJpeg, option);
    format.quality = static_cast<int>(std::clamp(option.quality, 1U, 100U));
    m_writer = std::make_unique<Writer>(fileName, format, m_maximumFileSize * kMegabyte);
}

void NorVideo::Open(const char* fileName, H264Option& option) {
    Close();
    VideoFormat format = FormatOf(Codec::H264, option);
    constexpr unsigned int kLowestBitrate = 1000;
    format.bitrate = static_cast<int>(std::clamp(option.bitrate, kLowestBitrate,
                                                 static_cast<unsigned int>(std::numeric_limits<int>::max())));
    m_writer = std::make_unique<Writer>(fileName, format, m_maximumFileSize * kMegabyte);
}

bool NorVideo::Exists(const char* fileName) {
    return Writer::Exists(fileName);
}

void NorVideo::Append(const ImagePtr& image) {
    if (!m_writer) {
        throw Exception(Error::NotInitialized, "No video file is open for this frame");
    }
    m_writer->Append(image);
}

void NorVideo::SetMaximumFileSize(unsigned int megabytes) {
    m_maximumFileSize = megabytes;
    if (m_writer) {
        m_writer->SetMaximumBytes(megabytes * kMegabyte);
    }
}

std::string NorVideo::GetFileName() const {
    return m_writer ? m_writer->FileName() : std::string();
}

void NorVideo::Close() {
    if (const std::unique_ptr<Writer> writer = std::move(m_writer)) {
        writer->Close();
    }
}

} // namespace Norvane::Video
