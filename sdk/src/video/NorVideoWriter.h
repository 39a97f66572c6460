#pragma once

#include "norvane/video/NorVideo.h"
#include "video/Container.h"
#include "video/Encoder.h"
#include "video/PixelSource.h"
#include "video/VideoFormat.h"

#include <memory>
#include <optional>
#include <string>

namespace Norvane::Video {

/// The video that a NorVideo has open: one encoder, and one file or several numbered ones.
class NorVideo::Writer {
public:
    /// @param maximumBytes  of one file, 0 for a single one of any size.
    Writer(std::string name, const VideoFormat& format, std::int64_t maximumBytes);
    ~Writer();

    /// See NorVideo::Exists.
    static bool Exists(const std::string& name);

    void SetMaximumBytes(std::int64_t bytes) { m_maximumBytes = bytes; }
    void Append(const ImagePtr& image);
    void Close();
    std::string FileName() const { return m_container ? m_container->FileName() : std::string(); }

private:
    std::string NextFileName();
    void Start(const ImagePtr& first);
    void Store(AVPacket& packet);
    bool PartIsFull(const AVPacket& packet) const;

    std::string m_name; // without number and extension
    VideoFormat m_format;
    std::int64_t m_maximumBytes;
    bool m_isNumbered;
    int m_part = 0;
    std::unique_ptr<Container> m_container;
    std::unique_ptr<Encoder> m_encoder;
    std::optional<PixelSource> m_pixels;
    std::int64_t m_frames = 0;
    std::int64_t m_groupBytes = 0; // since the last key frame; the next group will take about as much
};

} // namespace Norvane::Video
