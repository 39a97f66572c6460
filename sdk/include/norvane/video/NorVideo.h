#pragma once

#include "norvane/Image.h"

#include <memory>
#include <string>

namespace Norvane::Video {

/// Uncompressed frames in .avi.
struct AVIOption {
    float frameRate = 15.0F; ///< frames per second, above 0
    unsigned int width = 0;  ///< pixels, 1 to 65535
    unsigned int height = 0; ///< pixels, 1 to 65535
};

/// A JPEG image per frame in .avi.
struct MJPGOption {
    float frameRate = 15.0F;   ///< frames per second, above 0
    unsigned int quality = 75; ///< 1 to 100
    unsigned int width = 0;    ///< pixels, 1 to 65535
    unsigned int height = 0;   ///< pixels, 1 to 65535
};

/// H.264 in .mp4.
struct H264Option {
    float frameRate = 15.0F;        ///< frames per second, above 0
    unsigned int width = 0;         ///< pixels, 1 to 65535
    unsigned int height = 0;        ///< pixels, 1 to 65535
    unsigned int bitrate = 1000000; ///< bits per second
};

/// Writes one video. Owned and called by one thread at a time; a file is playable up to the last
/// appended second even when the process dies. The extension (.avi or .mp4) is added to the name.
class NorVideo {
public:
    /// No file is open.
    NorVideo();
    /// Finishes an open file; errors are lost, so call Close() first to hear of them.
    ~NorVideo();
    NorVideo(const NorVideo&) = delete;
    NorVideo& operator=(const NorVideo&) = delete;

    /// Starts a video, after finishing the one before.
    /// @throws Exception (Io) with the system's reason, (InvalidParameter) for a zero size or rate.
    void Open(const char* fileName, AVIOption& option);
    /// Likewise as motion JPEG; a quality out of range counts as its limit.
    void Open(const char* fileName, MJPGOption& option);
    /// Likewise as H.264; a bit rate out of range counts as its limit.
    void Open(const char* fileName, H264Option& option);
    /// Whether there is a video of this name already, whole or in numbered parts: opening it would write over
    /// it, or mix with its parts.
    static bool Exists(const char* fileName);
    /// Adds one frame, converted as the video needs it.
    /// @throws Exception when no file is open, the image's size differs from the option's, or the disk is
    /// full.
    void Append(const ImagePtr& image);
    /// From the next file part on; 0 means no splitting.
    void SetMaximumFileSize(unsigned int megabytes);
    /// The file that frames go to now, with its number and extension; empty when none is open.
    std::string GetFileName() const;
    /// Finishes the file. No error when none is open.
    void Close();

private:
    class Writer;
    std::unique_ptr<Writer> m_writer;
    unsigned int m_maximumFileSize = 0;
};

} // namespace Norvane::Video
