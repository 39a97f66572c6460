#pragma once

#include "norvane/video/NorVideo.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// A folder for videos, frames whose content is known, and FFmpeg's programs to play them back.
class VideoFixture : public ::testing::Test {
protected:
    VideoFixture();
    ~VideoFixture() override;

    struct Picture {
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> bgr; ///< rows without padding
        Norvane::ImagePtr image;       ///< over `bgr`

        const std::uint8_t* At(int x, int y) const {
            return &bgr[static_cast<std::size_t>((y * width + x) * 3)];
        }
    };
    /// Four patches of colour over a ramp; frame `index` has a bright bar at a place of its own.
    static Picture Frame(int width, int height, int index);

    std::string Path(const std::string& name) const { return m_folder + "/" + name; }
    std::vector<std::string> Files() const;
    /// What ffprobe says of the video stream, decoding every frame: "width=320" and so on, by key.
    static std::string Probe(const std::string& file, const std::string& key);
    static int CountFrames(const std::string& file) { return std::stoi("0" + Probe(file, "nb_read_frames")); }
    /// Frame `index` as ffmpeg decodes it, BGR without padding; empty when it cannot.
    static std::vector<std::uint8_t> Decode(const std::string& file, int index);

    std::string m_folder;
};
