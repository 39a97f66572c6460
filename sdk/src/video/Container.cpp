#include "video/Container.h"

#include "video/AviLengths.h"
#include "video/FfmpegError.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvane::Video {

namespace {

constexpr std::int64_t kIndexEntryBytes = 24; // an AVI frame in both kinds of index
constexpr std::int64_t kTrailerBytes = 16384;
constexpr std::int64_t kFragmentMicroseconds = 250'000; // of an MP4, kept in memory until it is complete

} // namespace

Container::Container(std::string fileName, const VideoFormat& format)
    : m_fileName(std::move(fileName)), m_format(format) {
    const bool isAvi = format.codec != Codec::H264;
    CheckFfmpeg(
        avformat_alloc_output_context2(&m_context, nullptr, isAvi ? "avi" : "mp4", m_fileName.c_str()),
        "Preparing the video file " + m_fileName);
    m_context->flags |= AVFMT_FLAG_FLUSH_PACKETS;
    // "file:" keeps a name with a colon from being taken for a protocol.
    const int result =
        avio_open2(&m_context->pb, ("file:" + m_fileName).c_str(), AVIO_FLAG_WRITE, nullptr, nullptr);
    if (result < 0) {
        avformat_free_context(std::exchange(m_context, nullptr));
        CheckFfmpeg(result, "Creating the video file " + m_fileName);
    }
}

Container::~Container() {
    try {
        Close();
    } catch (const Exception&) {
        // The writer has reported the failure that led here.
    }
}

void Container::WriteHeader(const Encoder& encoder) {
    m_stream = avformat_new_stream(m_context, nullptr);
    if (!m_stream) {
        throw Exception(Error::OutOfMemory, "No memory for the video file " + m_fileName);
    }
    encoder.Describe(*m_stream->codecpar);
    m_stream->time_base = av_inv_q(m_format.frameRate);
    m_stream->avg_frame_rate = m_format.frameRate;
    AVDictionary* options = nullptr;
    if (m_format.codec == Codec::H264) {
        av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+default_base_moof", 0);
        av_dict_set_int(&options, "frag_duration", kFragmentMicroseconds, 0);
    }
    const int result = avformat_write_header(m_context, &options);
    av_dict_free(&options);
    m_hasFailed = result < 0;
    CheckFfmpeg(result, "Writing the header of " + m_fileName);
    m_hasHeader = true;
    m_headerBytes = Bytes();
}

void Container::ThrowIfItTakesNoMore() const {
    if (HasFailed()) {
        throw Exception(Error::Io, m_fileName + " takes no more frames since writing to it failed; close it");
    }
}

void Container::Write(AVPacket& packet) {
    ThrowIfItTakesNoMore();
    if (m_firstFrame < 0) {
        m_firstFrame = packet.pts;
    }
    packet.pts -= m_firstFrame;
    packet.dts -= m_firstFrame;
    packet.stream_index = m_stream->index;
    av_packet_rescale_ts(&packet, av_inv_q(m_format.frameRate), m_stream->time_base);
    int result = av_write_frame(m_context, &packet);
    if (result >= 0) {
        result = m_context->pb->error;
    }
    if (result < 0) {
        m_hasFailed = true;
    }
    CheckFfmpeg(result, "Writing to the video file " + m_fileName);
    ++m_frames;
    NoteProgress();
}

void Container::NoteProgress() {
    m_lastGoodBytes = Bytes();
    const auto framesPerSecond = std::max<std::int64_t>(std::llround(av_q2d(m_format.frameRate)), 1);
    if (m_format.codec != Codec::H264 && m_frames % framesPerSecond == 0) {
        PatchAviLengths(m_fileName, m_frames, m_lastGoodBytes);
    }
}

std::int64_t Container::Bytes() const {
    return m_context ? avio_tell(m_context->pb) : 0;
}

std::int64_t Container::BytesToFinish() const {
    return kTrailerBytes + m_frames * kIndexEntryBytes;
}

void Container::Close() {
    if (!m_context) {
        return;
    }
    int result = 0;
    if (m_hasHeader && !m_hasFailed) {
        result = av_write_trailer(m_context);
        if (result >= 0) {
            result = m_context->pb->error;
        }
    }
    const int closed = avio_closep(&m_context->pb);
    avformat_free_context(std::exchange(m_context, nullptr));
    const bool isCut = m_hasFailed || result < 0;
    if (m_frames == 0 || (isCut && m_lastGoodBytes <= m_headerBytes)) {
        unlink(m_fileName.c_str());
    } else if (isCut) {
        CutToLastGood();
    }
    if (!m_hasFailed) { // a failure has been told already
        CheckFfmpeg(std::min(result, closed), "Finishing the video file " + m_fileName);
    }
}

void Container::CutToLastGood() {
    // Half a frame at the end would be the first thing that a player stumbles over.
    if (truncate(m_fileName.c_str(), m_lastGoodBytes) == 0 && m_format.codec != Codec::H264) {
        PatchAviLengths(m_fileName, m_frames, m_lastGoodBytes);
    }
}

} // namespace Norvane::Video
