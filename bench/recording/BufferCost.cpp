#include "Recorder.h"
#include "SceneImages.h"
#include "Sections.h"

#include <QString>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>

namespace {

using Steady = std::chrono::steady_clock;

double Milliseconds(Steady::time_point from, Steady::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace

bool MeasureBufferCost(const std::string& folder, int images) {
    // A camera of 100 images a second, its images going round in ten buffers.
    constexpr auto kPeriod = std::chrono::milliseconds(10);
    const SceneImages scene("BayerRG8", 2448, 2048, 10, 100);
    std::vector<std::vector<std::uint8_t>> copies(scene.Count(), scene.Pixels(0));
    const std::string target = folder + "/buffered";
    std::filesystem::create_directory(target);

    Recorder recorder;
    recorder.ChangeSettings([&](RecordingSettings& settings) {
        settings.folder = QString::fromStdString(target);
        settings.type = RECORD_VIDEO;
    });
    recorder.Start(100);
    std::vector<double> taken;
    std::vector<double> copied;
    // Nothing is written meanwhile: the drain would run in this thread.
    auto next = Steady::now();
    for (int i = 0; i < images; ++i) {
        std::this_thread::sleep_until(next += kPeriod);
        // The one that comes second finds the pixels in the cache, so they take turns.
        double take = 0;
        double copy = 0;
        for (const bool takes : {i % 2 == 0, i % 2 != 0}) {
            // Another image's pixels, as they come from the network: in no cache.
            const Norvane::ImagePtr& image = scene.Image(takes ? i : i + 5);
            const auto start = Steady::now();
            if (takes) {
                recorder.TakeImage(image);
                take = Milliseconds(start, Steady::now());
            } else {
                auto& place = copies[static_cast<std::size_t>(i) % copies.size()];
                std::memcpy(place.data(), image->GetData(), place.size());
                copy = Milliseconds(start, Steady::now());
            }
        }
        taken.push_back(take);
        copied.push_back(copy);
    }
    recorder.Stop(); // offers to abandon what is buffered,
    recorder.Stop(); // which this does
    recorder.Drain();
    std::filesystem::remove_all(target);

    std::sort(taken.begin(), taken.end());
    const double slowest = taken[taken.size() * 99 / 100];
    std::printf(
        "an image of 2448 x 2048, 8 bit, into the buffer: %.2f ms, 99th percentile %.2f ms; a copy of it "
        "%.2f ms; ratio %.2f\n",
        Median(taken), slowest, Median(copied), Median(taken) / Median(copied));
    return true;
}
