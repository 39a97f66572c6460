#pragma once

#include "RecordingTypes.h"
#include "norvane/video/NorVideo.h"

/// The video file of one recording. The file is opened by the first frame, because only that one tells the
/// size. Used by one thread at a time.
class VideoWriter {
public:
    /// Adds a frame, and tells the file that it went to; opens the file when none is open. A file that cannot
    /// be opened is reported once in the log, and the frames that follow fail until Close().
    /// @throws Norvane::Exception when the frame cannot be written.
    std::string Append(const Norvane::ImagePtr& image, const RecordingSettings& settings);
    /// Finishes the file. No error when none is open.
    void Close();

private:
    void Open(const Norvane::ImagePtr& image, const RecordingSettings& settings);

    Norvane::Video::NorVideo m_writer;
    bool m_isOpen = false; // also after an opening that failed
};
