#include "video/NorVideoWriter.h"

#include "video/FfmpegError.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace Norvane::Video {

namespace {

constexpr const char* kAvi = ".avi";
constexpr const char* kMp4 = ".mp4";

/// What stands between the name and the extension of a numbered part.
std::string PartNumber(int part) {
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "-%04d", part);
    return number.data();
}

} // namespace

NorVideo::Writer::Writer(std::string name, const VideoFormat& format, std::int64_t maximumBytes)
    : m_name(std::move(name)), m_format(format), m_maximumBytes(maximumBytes),
      m_isNumbered(maximumBytes > 0) {
    RouteFfmpegLog();
    m_container = std::make_unique<Container>(NextFileName(), m_format);
}

NorVideo::Writer::~Writer() {
    try {
        Close();
    } catch (const Exception&) {
        // Nobody is left to hear of it; the file plays up to what was written.
    }
}

std::string NorVideo::Writer::NextFileName() {
    const std::string number = m_isNumbered ? PartNumber(m_part++) : "";
    return m_name + number + (m_format.codec == Codec::H264 ? kMp4 : kAvi);
}

bool NorVideo::Writer::Exists(const std::string& name) {
    const auto isThere = [](const std::string& fileName) { return access(fileName.c_str(), F_OK) == 0; };
    for (const char* extension : {kAvi, kMp4}) {
        if (isThere(name + extension) || isThere(name + PartNumber(0) + extension)) {
            return true;
        }
    }
    return false;
}

void NorVideo::Writer::Start(const ImagePtr& first) {
    m_pixels.emplace(first, m_format.width, m_format.height);
    m_encoder = Encoder::Create(m_format, m_pixels->IsGrey());
    m_container->WriteHeader(*m_encoder);
}

void NorVideo::Writer::Append(const ImagePtr& image) {
    if (!m_encoder) {
        Start(image);
    }
    m_container->ThrowIfItTakesNoMore(); // before the work of encoding
    const PixelSource::Rows rows = m_pixels->Take(image);
    m_encoder->Encode(rows, m_frames++, [this](AVPacket& packet) { Store(packet); });
}

bool NorVideo::Writer::PartIsFull(const AVPacket& packet) const {
    if (m_maximumBytes <= 0 || !(packet.flags & AV_PKT_FLAG_KEY)) {
        return false;
    }
    // Where every frame is a key frame, each is asked for.
    const std::int64_t next = m_format.codec == Codec::H264
                                  ? std::max<std::int64_t>(packet.size, m_groupBytes + m_groupBytes / 2)
                                  : packet.size;
    return m_container->Bytes() + next + m_container->BytesToFinish() > m_maximumBytes;
}

void NorVideo::Writer::Store(AVPacket& packet) {
    if (m_groupBytes > 0 && PartIsFull(packet)) {
        m_isNumbered = true;
        m_container->Close();
        m_container = std::make_unique<Container>(NextFileName(), m_format);
        m_container->WriteHeader(*m_encoder);
    }
    m_groupBytes = (packet.flags & AV_PKT_FLAG_KEY) ? packet.size : m_groupBytes + packet.size;
    m_container->Write(packet);
}

void NorVideo::Writer::Close() {
    if (!m_container) {
        return;
    }
    const std::unique_ptr<Container> container = std::move(m_container);
    if (m_encoder && !container->HasFailed()) {
        m_encoder->Finish([&](AVPacket& packet) { container->Write(packet); });
    }
    container->Close();
}

} // namespace Norvane::Video
