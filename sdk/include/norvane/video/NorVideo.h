#pragma once

#include "norvane/Image.h"

#include <memory>

namespace Norvane::Video {

struct AVIOption {
    float frameRate = 15.0F;
    unsigned int width = 0;
    unsigned int height = 0;
};

struct MJPGOption {
    float frameRate = 15.0F;
    unsigned int quality = 75; ///< 1 to 100
    unsigned int width = 0;
    unsigned int height = 0;
};

struct H264Option {
    float frameRate = 15.0F;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int bitrate = 1000000; ///< bits per second
};

/// Writes one video. Owned and called by one thread at a time; a file is playable up to the last
/// appended second even when the process dies. The extension (.avi or .mp4) is added to the name.
class NorVideo {
public:
    NorVideo();
    ~NorVideo();
    NorVideo(const NorVideo&) = delete;
    NorVideo& operator=(const NorVideo&) = delete;

    /// @throws Exception (Io) with the system's reason, (InvalidParameter) for a zero size or rate.
    void Open(const char* fileName, AVIOption& option);
    void Open(const char* fileName, MJPGOption& option);
    void Open(const char* fileName, H264Option& option);
    /// Adds one frame, converted as the video needs it.
    /// @throws Exception when no file is open, the image's size differs from the option's, or the disk is
    /// full.
    void Append(const ImagePtr& image);
    /// From the next file part on; 0 means no splitting.
    void SetMaximumFileSize(unsigned int megabytes);
    /// Finishes the file. No error when none is open.
    void Close();

private:
    class Writer;
    std::unique_ptr<Writer> m_writer;
    unsigned int m_maximumFileSize = 0;
};

} // namespace Norvane::Video
