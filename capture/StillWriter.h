#pragma once

#include "RecordingTypes.h"

/// Writes one image of a recording as a file of its own, named after the local time to the millisecond.
/// The library gives a file its name once it is finished. Any thread.
class StillWriter {
public:
    /// @returns the file's path, UTF-8
    /// @throws Norvane::Exception with the reason when the file cannot be written.
    static std::string Write(const Norvane::ImagePtr& image, const RecordingSettings& settings);

private:
    static void Save(const Norvane::ImagePtr& image, const char* fileName, const RecordingSettings& settings);
};
