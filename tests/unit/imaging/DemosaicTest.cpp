// Every demosaicing method against its plain scalar twin, bit for bit.
#include "ScalarDemosaic.h"

#include "imaging/Demosaic/Demosaic.h"

#include "norvane/Image.h"

#include <gmock/gmock.h>

#include <hwy/cache_control.h>
#include <hwy/targets.h>

#include <algorithm>
#include <random>
#include <vector>

#include <sys/mman.h>

namespace Norvane {
namespace {

using Test::Mosaic;

constexpr ColorProcessingAlgorithm kAlgorithms[] = {
    NO_COLOR_PROCESSING, NEAREST_NEIGHBOR, NEAREST_NEIGHBOR_AVG,       BILINEAR, EDGE_SENSING, HQ_LINEAR, IPP,
    DIRECTIONAL_FILTER,  RIGOROUS,         WEIGHTED_DIRECTIONAL_FILTER};

struct PhaseFormats {
    BayerPhase phase;
    PixelFormatEnums bytes, words;
};

constexpr PhaseFormats kPhases[] = {
    {BayerPhase::GR, PixelFormat_BayerGR8, PixelFormat_BayerGR16},
    {BayerPhase::RG, PixelFormat_BayerRG8, PixelFormat_BayerRG16},
    {BayerPhase::GB, PixelFormat_BayerGB8, PixelFormat_BayerGB16},
    {BayerPhase::BG, PixelFormat_BayerBG8, PixelFormat_BayerBG16},
};

/// Noise, edges and flat areas of `bits` bits in the top of T.
template <class T>
std::vector<T> Content(int width, int height, unsigned bits, std::mt19937& random) {
    std::vector<T> samples(static_cast<std::size_t>(width * height));
    const unsigned drop = 8 * sizeof(T) - bits;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t x = i % static_cast<std::size_t>(width), y = i / static_cast<std::size_t>(width);
        unsigned value = random();
        if (x / 16 % 2 == 1) {
            value = (x + y) / 5 % 2 ? ~0U : 0U;
        } else if (y / 8 % 2 == 1) {
            value = (value & 3) * 0x01010101U + 0x40404040U;
        }
        samples[i] = static_cast<T>(static_cast<T>(value) >> drop << drop);
    }
    return samples;
}

template <class T>
void Compare(int width, int height, unsigned bits, std::mt19937& random) {
    for (const PhaseFormats& formats : kPhases) {
        Mosaic<T> mosaic{width, height, formats.phase, Content<T>(width, height, bits, random)};
        const ImagePtr image =
            Image::Create(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 0, 0,
                          sizeof(T) == 1 ? formats.bytes : formats.words, mosaic.samples.data());
        for (const ColorProcessingAlgorithm algorithm : kAlgorithms) {
            const std::vector<T> expected = ScalarDemosaic(algorithm, mosaic);
            std::vector<T> got(expected.size() + 1, T{77});
            const ImagePtr over =
                Image::Create(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 0, 0,
                              sizeof(T) == 1 ? PixelFormat_BGR8 : PixelFormat_BGR16, got.data());
            image->Convert(over, algorithm);
            ASSERT_EQ(got.back(), T{77}) << "written past the end";
            got.pop_back();
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_EQ(+got[i], +expected[i])
                    << image->GetPixelFormatName() << " " << width << " x " << height << ", " << bits
                    << " bits, algorithm " << algorithm << ", x " << i / 3 % static_cast<std::size_t>(width)
                    << ", y " << i / 3 / static_cast<std::size_t>(width) << ", channel " << i % 3;
            }
        }
    }
}

constexpr int kSizes[][2] = {{1, 1},   {2, 1},    {1, 2},   {2, 2},   {3, 3},   {1, 7},
                             {9, 1},   {5, 4},    {17, 9},  {31, 5},  {33, 8},  {64, 11},
                             {65, 20}, {131, 37}, {258, 6}, {321, 5}, {450, 33}};

/// Makes the library use one instruction set for as long as it lives.
class OnlyTarget {
public:
    explicit OnlyTarget(std::int64_t target) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
    ~OnlyTarget() {
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};

TEST(Demosaic, KernelsOfEveryInstructionSetAgreeWithTheirScalarTwins) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const OnlyTarget only(target);
        std::mt19937 random(20240817);
        for (const auto& [width, height] : kSizes) {
            Compare<std::uint8_t>(width, height, 8, random);
            Compare<std::uint16_t>(width, height, 10 + random() % 7, random);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

/// A mosaic and its colours in memory, the colours at an offset and perhaps past the caches.
template <class T>
class MemorySink final : public Imaging::ColorSink<T> {
public:
    MemorySink(std::size_t width, std::size_t height, std::size_t offset, bool pastCaches)
        : m_samples(3 * width * height + offset + 64, T{77}), m_rowSamples(3 * width),
          m_pastCaches(pastCaches) {
        const auto address = reinterpret_cast<std::uintptr_t>(m_samples.data());
        m_begin = m_samples.data() + (64 - address % 64) % 64 / sizeof(T) + offset;
    }
    T* BeginRow(std::size_t y) override { return m_begin + y * m_rowSamples; }
    void EndRow(std::size_t) override {}
    bool PastCaches() const override { return m_pastCaches; }
    std::vector<T> Colors(std::size_t height) const { return {m_begin, m_begin + height * m_rowSamples}; }
    bool IsUntouchedAround(std::size_t height) const {
        const auto untouched = [](T v) { return v == 77; };
        return std::all_of<const T*>(m_samples.data(), m_begin, untouched) &&
               std::all_of<const T*>(m_begin + height * m_rowSamples, m_samples.data() + m_samples.size(),
                                     untouched);
    }

private:
    std::vector<T> m_samples;
    T* m_begin;
    std::size_t m_rowSamples;
    bool m_pastCaches;
};

template <class T>
struct MemoryMosaic final : Imaging::MosaicSource<T> {
    void ReadRow(std::size_t y, T* line) const override { std::copy_n(DirectRow(y), width, line); }
    const T* DirectRow(std::size_t y) const override { return samples.data() + y * width; }
    std::size_t width = 0;
    std::vector<T> samples;
};

template <class T>
void ComparePastCaches(std::size_t width, std::size_t offset, std::mt19937& random) {
    constexpr std::size_t kHeight = 5;
    MemoryMosaic<T> mosaic;
    mosaic.width = width;
    mosaic.samples = Content<T>(static_cast<int>(width), kHeight, 8 * sizeof(T), random);
    for (const ColorProcessingAlgorithm algorithm : kAlgorithms) {
        const Imaging::MosaicShape shape{width, kHeight, BayerPhase::RG};
        MemorySink<T> plain(width, kHeight, offset, false), streamed(width, kHeight, offset, true);
        Imaging::DemosaicRows<T>(algorithm, shape, mosaic, plain, 0, kHeight);
        Imaging::DemosaicRows<T>(algorithm, shape, mosaic, streamed, 0, kHeight);
        hwy::FlushStream();
        ASSERT_EQ(plain.Colors(kHeight), streamed.Colors(kHeight))
            << "width " << width << ", offset " << offset << ", algorithm " << algorithm;
        ASSERT_TRUE(streamed.IsUntouchedAround(kHeight)) << "width " << width << ", offset " << offset;
    }
}

TEST(Demosaic, ColorsWrittenPastTheCachesAreTheSame) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const OnlyTarget only(target);
        std::mt19937 random(7);
        for (const std::size_t width : {20, 64, 131, 258, 450}) {
            for (const std::size_t offset : {0, 1, 6, 16}) {
                ComparePastCaches<std::uint8_t>(width, offset, random);
                ComparePastCaches<std::uint16_t>(width, offset, random);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

/// Bytes that end where memory that may not be touched begins.
class GuardedBytes {
public:
    explicit GuardedBytes(std::size_t size) : m_size((size + kPage - 1) / kPage * kPage + kPage) {
        void* memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        m_memory = static_cast<std::uint8_t*>(memory);
        ::mprotect(m_memory + m_size - kPage, kPage, PROT_NONE);
        m_begin = m_memory + m_size - kPage - size;
    }
    ~GuardedBytes() { ::munmap(m_memory, m_size); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    std::uint8_t* Begin() const { return m_begin; }

private:
    static constexpr std::size_t kPage = 4096;
    std::size_t m_size;
    std::uint8_t* m_memory;
    std::uint8_t* m_begin;
};

/// Converts an image that ends where its memory does; what reads or writes beyond it ends the program.
void ConvertGuarded(std::size_t width, std::size_t height, bool words,
                    const std::vector<ColorProcessingAlgorithm>& algorithms) {
    const GuardedBytes source(width * height * (words ? 2 : 1));
    const GuardedBytes target(3 * width * height * (words ? 2 : 1));
    const ImagePtr image = Image::Create(
        width, height, 0, 0, words ? PixelFormat_BayerRG16 : PixelFormat_BayerRG8, source.Begin());
    const ImagePtr colors =
        Image::Create(width, height, 0, 0, words ? PixelFormat_BGR16 : PixelFormat_BGR8, target.Begin());
    for (const ColorProcessingAlgorithm algorithm : algorithms) {
        image->Convert(colors, algorithm);
    }
}

TEST(Demosaic, NothingBeyondTheImageIsTouched) {
    for (const std::size_t width : {1, 65, 256, 257, 258, 320, 321, 322}) {
        for (const std::size_t height : {1, 2, 5}) {
            for (const bool words : {false, true}) {
                ConvertGuarded(width, height, words, {std::begin(kAlgorithms), std::end(kAlgorithms)});
            }
        }
    }
    // Colours of more than 24 MiB go past the caches; the rows begin anywhere in a cache line.
    for (const std::size_t width : {2098, 2099}) {
        ConvertGuarded(width, 2000, true, {NEAREST_NEIGHBOR, BILINEAR, EDGE_SENSING, HQ_LINEAR});
        ConvertGuarded(2 * width, 2000, false, {BILINEAR, EDGE_SENSING});
    }
}

TEST(Demosaic, BandsOfSeveralThreadsJoinWithoutASeam) {
    std::mt19937 random(4);
    Compare<std::uint8_t>(70, 1100, 8, random);
    Compare<std::uint16_t>(35, 600, 12, random);
}

TEST(Demosaic, AUniformlyColouredSceneStaysUniformUpToTheBorder) {
    // Neither a dark nor a coloured frame: every method gives the scene's colour at every pixel.
    constexpr int kWidth = 23, kHeight = 14;
    std::vector<std::uint8_t> mosaic(kWidth * kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            mosaic[static_cast<std::size_t>(y * kWidth + x)] = y % 2 + x % 2 == 0   ? 200
                                                               : y % 2 + x % 2 == 1 ? 100
                                                                                    : 50;
        }
    }
    const ImagePtr image = Image::Create(kWidth, kHeight, 0, 0, PixelFormat_BayerRG8, mosaic.data());
    for (const ColorProcessingAlgorithm algorithm : kAlgorithms) {
        if (algorithm == NO_COLOR_PROCESSING) {
            continue;
        }
        const ImagePtr color = image->Convert(PixelFormat_BGR8, algorithm);
        const auto* bgr = static_cast<const std::uint8_t*>(color->GetData());
        for (int i = 0; i < kWidth * kHeight; ++i) {
            ASSERT_THAT(std::vector<int>(bgr + 3 * i, bgr + 3 * i + 3), testing::ElementsAre(50, 100, 200))
                << "algorithm " << algorithm << ", x " << i % kWidth << ", y " << i / kWidth;
        }
    }
}

TEST(Demosaic, ThePhaseIsThatOfTheTransmittedImageWhateverItsOffset) {
    std::mt19937 random(9);
    std::vector<std::uint8_t> mosaic = Content<std::uint8_t>(16, 8, 8, random);
    const auto convert = [&](std::uint64_t offsetX, std::uint64_t offsetY) {
        const ImagePtr image = Image::Create(16, 8, offsetX, offsetY, PixelFormat_BayerGB8, mosaic.data());
        const ImagePtr color = image->Convert(PixelFormat_BGR8, BILINEAR);
        const auto* bgr = static_cast<const std::uint8_t*>(color->GetData());
        return std::vector<std::uint8_t>(bgr, bgr + color->GetImageSize());
    };
    EXPECT_EQ(convert(0, 0), convert(1, 0));
    EXPECT_EQ(convert(0, 0), convert(3, 5));
}

} // namespace
} // namespace Norvane
