// Images from the emulator's camera to a program's image handler, beside the plain copying of as many bytes,
// and the time that a click waits for a list.
#include "norvane/Norvane.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Norvane;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kWidth = 2448;
constexpr std::size_t kHeight = 2048;

/// A description file with one camera that sends as fast as it can, for the life of the object.
class Emulator {
public:
    Emulator() {
        std::string pattern = (std::filesystem::temp_directory_path() / "norvane-bench-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        const std::string path = m_folder + "/emulator.ini";
        std::ofstream(path)
            << "[interface GigE-0]\ntype = GEV\naddress = 169.254.10.1\nnetmask = 255.255.0.0\n"
               "[camera 1]\ninterface = GigE-0\nmodel = Bench\nvendor = Altrona\n"
               "address = 169.254.10.20\npixel-format = BayerRG8\nframe-rate = 1000\n"
            << "width = " << kWidth << "\nheight = " << kHeight << '\n';
        setenv("NORVANE_EMULATOR", path.c_str(), 1);
    }
    ~Emulator() { std::filesystem::remove_all(m_folder); }

private:
    std::string m_folder;
};

class Counter : public ImageEventHandler {
public:
    void OnImageEvent(ImagePtr image) override {
        {
            const std::lock_guard lock(m_mutex);
            ++m_images;
            m_bytes += image->GetImageSize();
        }
        m_changed.notify_one();
    }

    void WaitFor(std::size_t images) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_images >= images; });
    }

    std::size_t Images() {
        const std::lock_guard lock(m_mutex);
        return m_images;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_images = 0;
    std::size_t m_bytes = 0;
};

double StatisticOf(const CameraPtr& camera, const char* node) {
    const GenApi::CIntegerPtr value = camera->GetTLStreamNodeMap().GetNode(node);
    return static_cast<double>(value->GetValue());
}

/// One iteration is 100 images, 5 megapixels of 8 bit each.
void EmulatorToHandler(benchmark::State& state) {
    constexpr std::size_t kBatch = 100;
    const Emulator emulator;
    const SystemPtr system = System::GetInstance();
    CameraPtr camera = system->GetCameras().GetByIndex(0);
    camera->Init();
    Counter counter;
    camera->RegisterEventHandler(counter);
    camera->BeginAcquisition();
    counter.WaitFor(10);
    std::size_t images = counter.Images();
    for ([[maybe_unused]] auto iteration : state) {
        images += kBatch;
        counter.WaitFor(images);
    }
    state.counters["lost"] = StatisticOf(camera, "StreamLostFrameCount");
    camera->EndAcquisition();
    camera->UnregisterEventHandler(counter);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kBatch));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBatch * kWidth * kHeight));
}
BENCHMARK(EmulatorToHandler)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->MinTime(3.0);

/// The limit: the same bytes copied between two buffers that are in memory already.
void PlainCopy(benchmark::State& state) {
    constexpr std::size_t kBatch = 100;
    const std::vector<char> from(kWidth * kHeight, 1);
    std::vector<char> to(kWidth * kHeight, 2);
    for ([[maybe_unused]] auto iteration : state) {
        for (std::size_t i = 0; i < kBatch; ++i) {
            std::memcpy(to.data(), from.data(), from.size());
            benchmark::DoNotOptimize(to.data());
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kBatch));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBatch * kWidth * kHeight));
}
BENCHMARK(PlainCopy)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What a refresh of the device list asks for, two milliseconds apart, while the camera streams or not.
/// "longest_ms" is the slowest answer of all; a click must not notice it (20 ms).
void ListWithUpdate(benchmark::State& state) {
    const Emulator emulator;
    const SystemPtr system = System::GetInstance();
    CameraPtr camera = system->GetCameras().GetByIndex(0);
    Counter counter;
    if (state.range(0) != 0) {
        camera->Init();
        camera->RegisterEventHandler(counter);
        camera->BeginAcquisition();
        counter.WaitFor(10);
    }
    double longest = 0.0;
    for ([[maybe_unused]] auto iteration : state) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const Clock::time_point start = Clock::now();
        const InterfaceList interfaces = system->GetInterfaces(true);
        for (unsigned int i = 0; i < interfaces.GetSize(); ++i) {
            benchmark::DoNotOptimize(interfaces.GetByIndex(i)->GetCameras(true).GetSize());
        }
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        state.SetIterationTime(seconds);
        longest = std::max(longest, seconds);
    }
    state.counters["longest_ms"] = longest * 1e3;
    camera->DeInit();
    camera->UnregisterEventHandler(counter);
}
BENCHMARK(ListWithUpdate)
    ->ArgName("streaming")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->Iterations(1000);

/// From nothing to the first list, which is the only one that waits for a scan.
void FirstList(benchmark::State& state) {
    const Emulator emulator;
    for ([[maybe_unused]] auto iteration : state) {
        SystemPtr system = System::GetInstance();
        benchmark::DoNotOptimize(system->GetCameras(true).GetSize());
        state.PauseTiming();
        system = nullptr;
        state.ResumeTiming();
    }
}
BENCHMARK(FirstList)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

} // namespace

BENCHMARK_MAIN();
