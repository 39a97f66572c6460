/// Recording beside its peers, in one run and on one disk: videos beside the ffmpeg command, the buffer
/// beside a copy of the frame, stills beside a plain loop, and a buffered run at a fast camera's pace.
///
/// bench_recording [FOLDER [PAIRS [FRAMES [PART]]]]
///
/// FOLDER lies on the disk to measure, and several GB are written to it. PART is videos, buffer, live or
/// stills; without it all four are measured.

#include "Sections.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    std::string folder =
        (argc > 1 ? std::filesystem::path(argv[1]) : std::filesystem::temp_directory_path()) /
        "bench_recording.XXXXXX";
    const int pairs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const int frames = argc > 3 ? std::max(1, std::atoi(argv[3])) : 150;
    if (!mkdtemp(folder.data())) {
        std::perror(folder.c_str());
        return 1;
    }
    const std::string part = argc > 4 ? argv[4] : "";
    bool good = true;
    const auto measure = [&](const char* name, const std::function<bool()>& section) {
        if (part.empty() || part == name) {
            good = section() && good;
        }
        std::fflush(stdout);
    };
    measure("videos", [&] { return MeasureVideos(folder, frames, pairs); });
    measure("buffer", [&] { return MeasureBufferCost(folder, 300); });
    measure("live", [&] { return MeasureLiveBuffer(folder, 600, 200); });
    measure("stills", [&] { return MeasureStills(folder, 40, 5 * pairs); });
    std::filesystem::remove_all(folder);
    return good ? 0 : 1;
}
