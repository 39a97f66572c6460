#pragma once

#include "video/Encoder.h"
#include "video/VideoFormat.h"

#include <string>

struct AVFormatContext;
struct AVStream;

namespace Norvane::Video {

/// One video file: AVI for uncompressed video and Motion JPEG, fragmented MP4 for H.264. Whatever was written
/// plays, up to the last second, also when the process dies or the disk is full. Owned by the writer, used by
/// its thread.
class Container {
public:
    /// Creates the file. @throws Exception (Io) with the system's reason.
    Container(std::string fileName, const VideoFormat& format);
    /// Finishes the file as Close() does, without an error.
    ~Container();
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    /// Must come before the first packet.
    void WriteHeader(const Encoder& encoder);
    /// Takes packets with time stamps in frames, counted from any start. @throws Exception (Io).
    void Write(AVPacket& packet);
    /// Writes index and lengths; a file without a frame is removed, also where none could be written whole.
    /// @throws Exception (Io).
    void Close();

    /// Whether writing has failed before: the file is cut to what was written whole, and takes nothing more.
    /// So has a file that is closed because the part after it could not be created.
    bool HasFailed() const { return m_hasFailed || !m_context; }
    /// @throws Exception (Io) when HasFailed().
    void ThrowIfItTakesNoMore() const;
    const std::string& FileName() const { return m_fileName; }
    std::int64_t Bytes() const;
    /// What finishing the file adds at most.
    std::int64_t BytesToFinish() const;

private:
    void NoteProgress();
    void CutToLastGood();

    std::string m_fileName;
    VideoFormat m_format;
    AVFormatContext* m_context = nullptr;
    AVStream* m_stream = nullptr;
    bool m_hasHeader = false;
    bool m_hasFailed = false;
    std::int64_t m_firstFrame = -1;
    std::int64_t m_frames = 0;
    std::int64_t m_headerBytes = 0;
    std::int64_t m_lastGoodBytes = 0;
};

} // namespace Norvane::Video
