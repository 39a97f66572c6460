#include "transport/emulator/EmulatorTransport.h"
#include "transport/emulator/Renderer.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

/// What one emulated image costs its thread, beside a copy of the same image: the least that any sender could
/// need that does not remember what its buffers hold.
namespace {

using namespace Norvane::Transport;
using namespace Norvane::Transport::Emulator;

std::shared_ptr<ImageSettings> FiveMegapixels(const char* format) {
    auto settings = std::make_shared<ImageSettings>();
    settings->geometry = {2448, 2048, 2448, 2048, 0, 0, 1, 1, false, false};
    settings->format = FindEmulatedFormat(format);
    settings->title = "Duskwing S DWS-50S5C  21034567";
    return settings;
}

void Draw(benchmark::State& state, const char* format) {
    const auto settings = FiveMegapixels(format);
    Renderer renderer;
    renderer.Prepare(settings);
    std::vector<std::vector<std::uint8_t>> buffers(10, std::vector<std::uint8_t>(settings->ImageBytes()));
    std::vector<Renderer::Drawn> drawn(buffers.size());
    std::uint64_t frame = 0;
    for (auto _ : state) {
        const std::size_t i = frame % buffers.size();
        renderer.Draw(frame, static_cast<double>(frame) / 200.0, buffers[i].data(), drawn[i]);
        benchmark::ClobberMemory();
        ++frame;
    }
    state.SetItemsProcessed(state.iterations());
}

void Copy(benchmark::State& state, const char* format) {
    const std::size_t bytes = FiveMegapixels(format)->ImageBytes();
    const std::vector<std::uint8_t> source(bytes, 7);
    std::vector<std::vector<std::uint8_t>> buffers(10, std::vector<std::uint8_t>(bytes));
    std::size_t frame = 0;
    for (auto _ : state) {
        std::memcpy(buffers[frame++ % buffers.size()].data(), source.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

void Background(benchmark::State& state) {
    for (auto _ : state) {
        Renderer renderer;
        renderer.Prepare(FiveMegapixels("BayerRG8"));
    }
}

/// A file with so many cameras is read and all are plugged in, then scanned.
void PlugAndScan(benchmark::State& state) {
    const auto path = std::filesystem::temp_directory_path() / "bench_emulator.ini";
    {
        std::ofstream file(path);
        for (int i = 0; i < state.range(0); ++i) {
            file << "[camera " << 20000000 + i << "]\n";
        }
    }
    for (auto _ : state) {
        EmulatorTransport transport(path.string());
        benchmark::DoNotOptimize(transport.Scan());
    }
    std::filesystem::remove(path);
}

void ReadRegister(benchmark::State& state) {
    CameraSettings settings;
    settings.serial = "1";
    EmulatedCamera camera(settings, {}, "", std::make_shared<Flash>(), [](auto) {});
    std::uint32_t word = 0;
    for (auto _ : state) {
        camera.Read(&word, 0x10000, sizeof word);
        benchmark::DoNotOptimize(word);
    }
}

BENCHMARK_CAPTURE(Draw, Mono8, "Mono8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Draw, BayerRG8, "BayerRG8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Copy, BayerRG8, "BayerRG8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Draw, BayerRG12p, "BayerRG12p")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Draw, RGB8, "RGB8")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Copy, RGB8, "RGB8")->Unit(benchmark::kMillisecond);
BENCHMARK(Background)->Unit(benchmark::kMillisecond);
BENCHMARK(PlugAndScan)->Arg(1)->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadRegister)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
