// How long conversions and savers take at 2448 x 2048, each measured in turn with its peer or its physical
// limit, so that whatever else the machine does meets both; all of them work in memory as the library
// allocates it. `ms` is the library's median, `peer_ms` the peer's, `ratio` the median of the quotients of
// neighbouring runs. On a busy machine look at `cpu_ratio`, the same of the calling thread's processor time
// (where one thread does the work), and at the least of each, `best`.

#include "imaging/PixelMemory.h"
#include "imaging/RowPool.h"

#include "norvane/Image.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <jpeglib.h>

namespace {

using namespace Norvane;

constexpr std::size_t kWidth = 2448, kHeight = 2048, kPixels = kWidth * kHeight;

/// What one run took: on the clock, and of this thread's processor time.
struct Cost {
    double wall, processor;
};

double ProcessorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

Cost Measure(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    const double processor = ProcessorMilliseconds();
    action();
    return {std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count(),
            ProcessorMilliseconds() - processor};
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

/// Memory as the library's own images have it: huge pages where the system gives them.
class Pixels {
public:
    explicit Pixels(std::size_t size, std::uint8_t value = 0)
        : m_memory(Imaging::AllocatePixels(size)), m_size(size) {
        std::memset(data(), value, size);
    }
    std::uint8_t* data() const { return m_memory.get(); }
    std::size_t size() const { return m_size; }

private:
    std::shared_ptr<std::uint8_t> m_memory;
    std::size_t m_size;
};

/// Something that looks like a camera's image: structure and noise.
Pixels Scene(std::size_t bytes) {
    Pixels pixels(bytes);
    std::uint8_t* scene = pixels.data();
    std::uint32_t random = 1;
    for (std::size_t i = 0; i < bytes; ++i) {
        random = random * 1664525U + 1013904223U;
        const double wave =
            std::sin(static_cast<double>(i % kWidth) / 40) * std::cos(static_cast<double>(i / kWidth) / 55);
        scene[i] = static_cast<std::uint8_t>(128 + 90 * wave + (random >> 24) % 5);
    }
    return pixels;
}

/// Runs `ours` and `peer` in turn as often as the framework asks. Where both work in the caches each is
/// measured as it runs after itself: what one leaves there, or pushes out, should not count for the other.
void Pair(benchmark::State& state, bool inCaches, const std::function<void()>& ours,
          const std::function<void()>& peer) {
    std::vector<double> own, other, ratio, processorRatio;
    const auto measure = [inCaches](const std::function<void()>& action) {
        if (inCaches) {
            action();
        }
        return Measure(action);
    };
    ours();
    peer();
    for (auto _ : state) {
        const Cost mine = measure(ours), theirs = measure(peer);
        own.push_back(mine.wall);
        other.push_back(theirs.wall);
        ratio.push_back(mine.wall / theirs.wall);
        processorRatio.push_back(mine.processor / theirs.processor);
        state.SetIterationTime(mine.wall / 1000);
    }
    state.counters["ms"] = Median(own);
    state.counters["peer_ms"] = Median(other);
    state.counters["ratio"] = Median(ratio);
    state.counters["cpu_ratio"] = Median(processorRatio);
    state.counters["best"] = *std::min_element(own.begin(), own.end());
    state.counters["peer_best"] = *std::min_element(other.begin(), other.end());
}

struct Conversion {
    Conversion(PixelFormatEnums from, PixelFormatEnums to)
        : source(Scene(PixelFormatImageSize(from, kWidth, kHeight))),
          target(PixelFormatImageSize(to, kWidth, kHeight), 1) {
        in = Image::Create(kWidth, kHeight, 0, 0, from, source.data());
        out = Image::Create(kWidth, kHeight, 0, 0, to, target.data());
    }
    Pixels source, target;
    ImagePtr in, out;
};

/// Converts on `threads` threads beside `peer`.
void Convert(benchmark::State& state, PixelFormatEnums from, PixelFormatEnums to,
             ColorProcessingAlgorithm algorithm, unsigned threads,
             const std::function<void(Conversion&)>& peer) {
    Conversion c(from, to);
    Imaging::LimitRowThreads(threads);
    Pair(
        state, true, [&] { c.in->Convert(c.out, algorithm); }, [&] { peer(c); });
    Imaging::LimitRowThreads(0);
}

/// OpenCV's conversion of the same source into the same target, on one thread.
std::function<void(Conversion&)> OpenCv(int code, int sourceType, int targetType) {
    return [=](Conversion& c) {
        const cv::Mat source(int{kHeight}, int{kWidth}, sourceType, c.source.data());
        cv::Mat target(int{kHeight}, int{kWidth}, targetType, c.target.data());
        cv::cvtColor(source, target, code);
    };
}

/// The least that any conversion costs the memory: reading the source, writing the target.
void Write(Conversion& c) {
    std::memset(c.target.data(), 7, c.target.size());
    benchmark::DoNotOptimize(c.target.data());
}

void ReadAndWrite(Conversion& c) {
    // Written by a read of the source that wraps where the target is larger.
    for (std::size_t at = 0; at < c.target.size(); at += c.source.size()) {
        std::memcpy(c.target.data() + at, c.source.data(), std::min(c.source.size(), c.target.size() - at));
    }
    benchmark::DoNotOptimize(c.target.data());
}

/// A memcpy that reads and writes, together, as many bytes as source and target have.
void CopyBoth(Conversion& c) {
    const std::size_t half = (c.source.size() + c.target.size()) / 2;
    static const Pixels from(kPixels * 4, 1), to(kPixels * 4, 2);
    std::memcpy(to.data(), from.data(), half);
    benchmark::DoNotOptimize(to.data());
}

/// What a second thread is worth on this machine at this time to work that is spread like an image's rows.
void Spread(benchmark::State& state, const std::function<void(std::size_t, std::size_t)>& rows) {
    const auto work = [&](unsigned threads) {
        Imaging::LimitRowThreads(threads);
        Imaging::ForRows(kHeight, 32, rows);
        Imaging::LimitRowThreads(0);
    };
    Pair(
        state, true, [&] { work(2); }, [&] { work(1); });
}

/// The same where work needs no memory.
void SpreadArithmetic(benchmark::State& state) {
    Spread(state, [](std::size_t first, std::size_t last) {
        for (std::size_t i = first * 10000; i < last * 10000; ++i) {
            benchmark::DoNotOptimize(i);
        }
    });
}

/// The same where work is nothing but memory: a demosaicing's 5 MB of source and 15 MB of target.
void SpreadCopy(benchmark::State& state) {
    const Pixels source(kPixels, 1), target(3 * kPixels, 2);
    Spread(state, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y) {
            for (std::size_t plane = 0; plane < 3; ++plane) {
                std::memcpy(target.data() + (3 * y + plane) * kWidth, source.data() + y * kWidth, kWidth);
            }
        }
        benchmark::DoNotOptimize(target.data());
    });
}

std::string TemporaryFile() {
    return (std::filesystem::temp_directory_path() / "norvane-bench-image").string();
}

ImagePtr ColorScene() {
    static const Pixels mosaic = Scene(kPixels);
    static const ImagePtr color = Image::Create(kWidth, kHeight, 0, 0, PixelFormat_BayerRG8, mosaic.data())
                                      ->Convert(PixelFormat_BGR8, BILINEAR);
    return color;
}

/// libjpeg-turbo itself, into memory.
void EncodeJpeg(const ImagePtr& image, int quality) {
    jpeg_compress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &memory, &size);
    jpeg.image_width = kWidth;
    jpeg.image_height = kHeight;
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
        auto* row = static_cast<JSAMPROW>(image->GetData()) + jpeg.next_scanline * kWidth * 3;
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::free(memory);
}

template <class Option>
void Save(benchmark::State& state, const Option& option, const std::function<void()>& peer) {
    const ImagePtr image = ColorScene();
    const std::string file = TemporaryFile();
    Pair(
        state, false, [&] { image->Save(file.c_str(), option); }, peer);
    image->Save(file.c_str(), option);
    state.counters["MB"] = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    std::filesystem::remove(file);
}

void RegisterAll() {
    const auto add = [](const std::string& name, int iterations,
                        const std::function<void(benchmark::State&)>& run) {
        benchmark::RegisterBenchmark(name.c_str(), run)
            ->UseManualTime()
            ->Iterations(iterations)
            ->Unit(benchmark::kMillisecond);
    };
    const auto convert = [&](const std::string& name, int iterations, PixelFormatEnums from,
                             PixelFormatEnums to, ColorProcessingAlgorithm algorithm, unsigned threads,
                             const std::function<void(Conversion&)>& peer) {
        add(name, iterations,
            [=](benchmark::State& state) { Convert(state, from, to, algorithm, threads, peer); });
    };
    const auto rg8 = PixelFormat_BayerRG8, bgr8 = PixelFormat_BGR8;
    const auto rg16 = PixelFormat_BayerRG16, bgr16 = PixelFormat_BGR16;
    convert("bilinear/1-thread/opencv", 41, rg8, bgr8, BILINEAR, 1,
            OpenCv(cv::COLOR_BayerBG2BGR, CV_8UC1, CV_8UC3));
    convert("bilinear/1-thread/write-15MB", 41, rg8, bgr8, BILINEAR, 1, Write);
    convert("bilinear/1-thread/read-5MB-write-15MB", 41, rg8, bgr8, BILINEAR, 1, ReadAndWrite);
    convert("bilinear-16bit/1-thread/opencv", 41, rg16, bgr16, BILINEAR, 1,
            OpenCv(cv::COLOR_BayerBG2BGR, CV_16UC1, CV_16UC3));
    convert("bilinear-16bit/1-thread/read-10MB-write-30MB", 41, rg16, bgr16, BILINEAR, 1, ReadAndWrite);
    convert("edge-sensing/1-thread/opencv-ea", 41, rg8, bgr8, EDGE_SENSING, 1,
            OpenCv(cv::COLOR_BayerBG2BGR_EA, CV_8UC1, CV_8UC3));
    convert("hq-linear/1-thread/bilinear", 41, rg8, bgr8, HQ_LINEAR, 1,
            [](Conversion& c) { c.in->Convert(c.out, BILINEAR); });
    const struct {
        const char* name;
        ColorProcessingAlgorithm algorithm;
        int iterations;
    } heavy[] = {{"hq-linear", HQ_LINEAR, 41},
                 {"directional", DIRECTIONAL_FILTER, 15},
                 {"weighted-directional", WEIGHTED_DIRECTIONAL_FILTER, 15},
                 {"rigorous", RIGOROUS, 9}};
    for (const auto& method : heavy) {
        convert(std::string(method.name) + "/2-threads/1-thread", method.iterations, rg8, bgr8,
                method.algorithm, 2, [algorithm = method.algorithm](Conversion& c) {
                    Imaging::LimitRowThreads(1);
                    c.in->Convert(c.out, algorithm);
                    Imaging::LimitRowThreads(2);
                });
    }
    add("arithmetic/2-threads/1-thread", 15, SpreadArithmetic);
    add("read-5MB-write-15MB/2-threads/1-thread", 41, SpreadCopy);
    for (const PixelFormatEnums format :
         {PixelFormat_Mono12p, PixelFormat_Mono12Packed, PixelFormat_Mono10p}) {
        for (const PixelFormatEnums target : {PixelFormat_Mono8, PixelFormat_Mono16}) {
            convert("unpack-" + std::string(FindPixelFormat(format)->name) + "-to-" +
                        std::string(FindPixelFormat(target)->name) + "/1-thread/memcpy",
                    41, format, target, DEFAULT, 1, CopyBoth);
        }
    }
    convert("YUV422_8-to-BGR8/1-thread/opencv", 41, PixelFormat_YUV422_8, bgr8, DEFAULT, 1,
            OpenCv(cv::COLOR_YUV2BGR_YUY2, CV_8UC2, CV_8UC3));
    const std::function<void()> writeFile = [] {
        std::FILE* file = std::fopen(TemporaryFile().c_str(), "wb");
        std::fwrite(ColorScene()->GetData(), 1, kPixels * 3, file);
        std::fclose(file);
    };
    add("png-level-8/write-15MB-file", 5, [=](benchmark::State& state) {
        Save(state, PNGOption{false, 8}, writeFile);
    });
    add("jpeg-quality-75/libjpeg-turbo", 15,
        [](benchmark::State& state) { Save(state, JPEGOption{}, [] { EncodeJpeg(ColorScene(), 75); }); });
    add("jpeg2000-ratio-16/write-15MB-file", 3,
        [=](benchmark::State& state) { Save(state, JPG2Option{}, writeFile); });
    add("tiff-plain/write-15MB-file", 9,
        [=](benchmark::State& state) { Save(state, TIFFOption{}, writeFile); });
}

} // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    benchmark::Initialize(&argc, argv);
    RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
