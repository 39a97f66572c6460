#include "VideoFixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace {

std::string Output(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 65536> part{};
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe.get())) {
        text.append(part.data(), size);
    }
    return text;
}

} // namespace

VideoFixture::VideoFixture() {
    // A blank and a letter outside ASCII: names reach the system as they are.
    std::string pattern = (std::filesystem::temp_directory_path() / "video \xC3\xA4 XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
}

VideoFixture::~VideoFixture() {
    std::filesystem::remove_all(m_folder);
}

VideoFixture::Picture VideoFixture::Frame(int width, int height, int index) {
    constexpr std::array<std::array<std::uint8_t, 3>, 4> kPatches = {
        {{40, 40, 200}, {40, 200, 40}, {200, 40, 40}, {128, 128, 128}}}; // BGR
    Picture picture;
    picture.width = width;
    picture.height = height;
    picture.bgr.resize(static_cast<std::size_t>(width * height * 3));
    const int bar = height / 2 + index * 4 % (height / 2 - 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = &picture.bgr[static_cast<std::size_t>((y * width + x) * 3)];
            if (y < height / 2) {
                const auto& patch = kPatches[static_cast<std::size_t>(std::min(4 * x / width, 3))];
                std::copy(patch.begin(), patch.end(), pixel);
            } else {
                const int level = y >= bar && y < bar + 4 ? 235 : 30 + 100 * x / width;
                std::fill_n(pixel, 3, static_cast<std::uint8_t>(level));
            }
        }
    }
    picture.image =
        Norvane::Image::Create(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 0, 0,
                               Norvane::PixelFormat_BGR8, picture.bgr.data());
    return picture;
}

std::vector<std::string> VideoFixture::Files() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
        files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string VideoFixture::Probe(const std::string& file, const std::string& key) {
    std::string text =
        Output("ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=" + key +
               " -of default=noprint_wrappers=1:nokey=1 '" + file + "' 2>/dev/null");
    text.erase(std::find(text.begin(), text.end(), '\n'), text.end());
    return text;
}

std::vector<std::uint8_t> VideoFixture::Decode(const std::string& file, int index) {
    const std::string bytes =
        Output("ffmpeg -v error -i '" + file + "' -vf \"select=eq(n\\," + std::to_string(index) +
               ")\" -frames:v 1 -f rawvideo -pix_fmt bgr24 - 2>/dev/null");
    return {bytes.begin(), bytes.end()};
}
