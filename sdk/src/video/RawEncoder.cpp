#include "video/RawEncoder.h"

#include <cstring>

namespace Norvane::Video {

RawEncoder::RawEncoder(const VideoFormat& format, bool isGrey)
    : m_format(format), m_isGrey(isGrey), m_rowBytes(format.width * (isGrey ? 1 : 3)) {}

void RawEncoder::Describe(AVCodecParameters& parameters) const {
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = AV_CODEC_ID_RAWVIDEO;
    parameters.codec_tag = m_isGrey ? MKTAG('Y', '8', '0', '0') : 0;
    parameters.format = m_isGrey ? AV_PIX_FMT_GRAY8 : AV_PIX_FMT_BGR24;
    parameters.bits_per_coded_sample = m_isGrey ? 8 : 24;
    parameters.width = m_format.width;
    parameters.height = m_format.height;
}

void RawEncoder::Encode(PixelSource::Rows rows, std::int64_t index, const PacketSink& sink) {
    const std::uint8_t* data = rows.data;
    if (rows.stride != m_rowBytes) {
        m_rows.resize(static_cast<std::size_t>(m_rowBytes) * static_cast<std::size_t>(m_format.height));
        for (int y = 0; y < m_format.height; ++y) {
            std::memcpy(m_rows.data() + static_cast<std::ptrdiff_t>(y) * m_rowBytes,
                        rows.data + static_cast<std::ptrdiff_t>(y) * rows.stride,
                        static_cast<std::size_t>(m_rowBytes));
        }
        data = m_rows.data();
    }
    AVPacket* packet = av_packet_alloc();
    if (!packet) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> owner(packet,
                                                               [](AVPacket* p) { av_packet_free(&p); });
    packet->data = const_cast<std::uint8_t*>(data); // the container only reads it
    packet->size = m_rowBytes * m_format.height;
    packet->pts = index;
    packet->dts = index;
    packet->duration = 1;
    packet->flags = AV_PKT_FLAG_KEY;
    sink(*packet);
}

} // namespace Norvane::Video
