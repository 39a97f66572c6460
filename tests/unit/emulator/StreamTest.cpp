#include "EmulatorFixture.h"
#include "transport/emulator/FrameCode.h"
#include "transport/emulator/PixelWriters.h"
#include "transport/emulator/Renderer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace Norvane::Transport::Emulator {
namespace {

class StreamTest : public EmulatorFixture {
protected:
    /// Starts one camera and opens it. `keys` are its lines of the file.
    void Begin(const std::string& keys, const std::string& type = "GEV") {
        m_keys = keys;
        m_type = type;
        Start(File(keys));
        m_device = Open();
        m_map = Map(m_device);
    }
    std::string File(const std::string& keys) const {
        return "[interface I]\ntype=" + m_type + "\n[camera 1]\n" + keys;
    }
    void Run(std::uint32_t buffers = 10) {
        m_stream = m_device->OpenStream(
            {buffers, static_cast<std::uint64_t>(NumberOf(*m_map, "PayloadSize")), 20, true});
        Execute(*m_map, "AcquisitionStart");
    }
    Frame Next() {
        auto frame = m_stream->Pop(10000);
        if (!frame) {
            throw std::runtime_error("no image came");
        }
        return *frame;
    }
    /// The frame number that an image of 8-bit samples shows.
    static std::optional<std::uint32_t> Shown(const Frame& frame, std::uint32_t bytesPerPixel = 1) {
        const std::size_t stride = frame.size / frame.height;
        return FrameCode::Decode(frame.width, frame.height, [&](std::uint32_t x, std::uint32_t y) {
            return frame.data[y * stride + x * bytesPerPixel];
        });
    }

    std::string m_keys, m_type;
    std::shared_ptr<IDevice> m_device;
    std::shared_ptr<GenApi::INodeMap> m_map;
    std::unique_ptr<IStream> m_stream;
};

constexpr const char* kSmall = "width=640\nheight=480\nframe-rate=500\n";

TEST_F(StreamTest, EveryImageShowsItsOwnNumber) {
    Begin(kSmall);
    Run(100); // more than the test takes: a busy machine must not cost one
    std::uint64_t time = 0;
    for (std::uint64_t i = 0; i < 60; ++i) {
        const Frame frame = Next();
        ASSERT_EQ(frame.frameId, i);
        ASSERT_EQ(Shown(frame), static_cast<std::uint32_t>(i));
        EXPECT_EQ(frame.width, 640U);
        EXPECT_EQ(frame.height, 480U);
        EXPECT_EQ(frame.pfncFormat, 0x01080009U);
        EXPECT_EQ(frame.size, 640U * 480U);
        EXPECT_EQ(frame.status, IMAGE_NO_ERROR);
        EXPECT_TRUE(i == 0 || frame.timestampNs >= time + 2000000) << "2 ms apart; more on a busy machine";
        time = frame.timestampNs;
    }
    const StreamStatistics statistics = m_stream->Statistics();
    EXPECT_GE(statistics.deliveredImages, 60U);
    EXPECT_EQ(statistics.corruptImages, 0U);
}

TEST_F(StreamTest, RedrawnRegionsLeaveNoTrace) {
    // An image drawn into a used buffer equals the same image drawn into a fresh one.
    Begin(kSmall);
    Run(2);
    for (int i = 0; i < 40; ++i) {
        Next();
    }
    const Frame used = Next();
    Renderer renderer;
    auto settings = std::make_shared<ImageSettings>();
    settings->geometry = {640, 480, 640, 480, 0, 0, 1, 1, false, false};
    settings->format = FindEmulatedFormat("BayerRG8");
    settings->title = "Duskwing S DWS-50S5C  1";
    renderer.Prepare(settings);
    std::vector<std::uint8_t> fresh(settings->ImageBytes());
    Renderer::Drawn drawn;
    renderer.Draw(used.frameId, static_cast<double>(used.timestampNs) * 1e-9, fresh.data(), drawn);
    EXPECT_EQ(std::memcmp(fresh.data(), used.data, fresh.size()), 0);
}

TEST_F(StreamTest, ALineTriggersAtItsEdges) {
    // A square wave of one second stands at the first input.
    Begin(kSmall);
    SetText(*m_map, "TriggerSelector", "FrameStart");
    SetText(*m_map, "TriggerMode", "On");
    SetText(*m_map, "TriggerSource", "Line0");
    SetText(*m_map, "TriggerActivation", "AnyEdge");
    Run();
    const std::uint64_t first = Next().timestampNs;
    EXPECT_EQ(first % 500000000, 0U);
    EXPECT_EQ(Next().timestampNs, first + 500000000);
}

TEST_F(StreamTest, RegionMirrorAndBinningShowTheSameScene) {
    Begin("width=640\nheight=480\nframe-rate=500\npixel-format=Mono8\n");
    const auto picture = [&] {
        Run();
        const Frame frame = Next();
        std::vector<std::uint8_t> pixels(frame.data, frame.data + frame.size);
        EXPECT_EQ(Shown(frame), 0U);
        m_stream.reset();
        Execute(*m_map, "AcquisitionStop");
        return pixels;
    };
    // Where few objects pass: the ramps at the bottom, which agree with themselves nowhere else.
    constexpr std::size_t kRow = 385;
    constexpr double kMostly = 0.5;
    const auto whole = picture();
    /// The share of a row that shows what `place` says of the whole image.
    const auto same = [&](std::size_t width, int tolerance,
                          const std::function<std::size_t(std::size_t)>& place) {
        const auto shown = picture();
        int count = 0;
        for (std::size_t x = 0; x < width; ++x) {
            count += std::abs(shown[kRow * width + x] - whole[kRow * 640 + place(x)]) <= tolerance;
        }
        return count / static_cast<double>(width);
    };
    SetText(*m_map, "ReverseX", "true");
    EXPECT_GT(same(640, 1, [](std::size_t x) { return 639 - x; }), kMostly);
    SetText(*m_map, "ReverseX", "false");
    SetText(*m_map, "Width", "320");
    SetText(*m_map, "OffsetX", "160");
    EXPECT_GT(same(320, 0, [](std::size_t x) { return 160 + x; }), kMostly);
    SetText(*m_map, "OffsetX", "0");
    SetText(*m_map, "Width", "640");
    SetText(*m_map, "BinningHorizontal", "2");
    EXPECT_EQ(NumberOf(*m_map, "Width"), 320);
    EXPECT_GT(same(320, 2, [](std::size_t x) { return 2 * x; }), kMostly);
}

TEST_F(StreamTest, ExposureAndGainMakeThePictureBrighter) {
    Begin("width=640\nheight=480\nframe-rate=100\npixel-format=Mono8\n");
    const auto brightness = [&] {
        // The wall in the middle, whatever was under way with the old setting left out.
        for (int i = 0; i < 3; ++i) {
            Next();
        }
        const Frame frame = Next();
        return static_cast<double>(frame.data[450 * 640 + 330]);
    };
    Run();
    const double normal = brightness();
    SetText(*m_map, "Gain", "6");
    EXPECT_NEAR(brightness(), normal * 1.995, 3.0);
    SetText(*m_map, "Gain", "0");
    SetText(*m_map, "ExposureTime", "2500");
    EXPECT_NEAR(brightness(), normal * 0.5, 3.0);
    SetText(*m_map, "ExposureAuto", "Once");
    EXPECT_TRUE(Eventually([&] {
        Next();
        m_map->InvalidateNodes();
        return TextOf(*m_map, "ExposureAuto") == "Off";
    }));
    EXPECT_NEAR(Real(*m_map, "ExposureTime"), 5000.0, 1.0);
}

TEST_F(StreamTest, ASlowConsumerCostsImagesAndIsCounted) {
    Begin(kSmall);
    Run(2);
    const Frame held = Next();
    EXPECT_TRUE(Eventually([&] { return m_stream->Statistics().underruns >= 10; }));
    EXPECT_EQ(Shown(held), static_cast<std::uint32_t>(held.frameId)) << "a held image must not be drawn over";
    const Frame next = Next();
    EXPECT_EQ(next.frameId, held.frameId + 1);
    EXPECT_LE(m_stream->Statistics().deliveredImages, 3U);
}

TEST_F(StreamTest, LossIsRepeatableAndLeavesZeroedRows) {
    const auto run = [&] {
        Begin(std::string(kSmall) + "pixel-format=Mono8\nloss=0.1\n");
        SetText(*m_map, "BlackLevel", "10"); // no row of the scene is dark
        Run(128);
        std::vector<std::uint64_t> corrupt;
        for (int i = 0; i < 100; ++i) {
            const Frame frame = Next();
            bool dark = false;
            for (std::uint32_t y = 100; y < frame.height; ++y) {
                const std::uint8_t* row = frame.data + std::size_t{y} * frame.width;
                dark = dark || std::all_of(row, row + frame.width, [](std::uint8_t v) { return v == 0; });
            }
            if (frame.status != IMAGE_NO_ERROR) {
                EXPECT_EQ(frame.status, IMAGE_MISSING_PACKETS);
                EXPECT_EQ(frame.size, 640U * 480U);
                corrupt.push_back(frame.frameId);
            } else {
                EXPECT_FALSE(dark) << frame.frameId;
            }
        }
        const StreamStatistics statistics = m_stream->Statistics();
        EXPECT_GT(statistics.missedPackets, 1000U);
        EXPECT_GT(statistics.resendRequests, statistics.missedPackets);
        EXPECT_GT(statistics.resendPackets, statistics.missedPackets * 9 / 10);
        EXPECT_LT(statistics.resendPackets, statistics.missedPackets);
        EXPECT_GE(statistics.corruptImages, corrupt.size());
        m_stream.reset();
        m_map.reset();
        m_device.reset();
        return corrupt;
    };
    const auto first = run();
    EXPECT_GT(first.size(), 5U);
    EXPECT_LT(first.size(), 60U);
    EXPECT_EQ(run(), first);
}

TEST_F(StreamTest, BoxesLieOnTheObjects) {
    // With exposure and gain down to nothing but the objects' rims, what is brightest inside a box is its
    // rim.
    Begin("width=640\nheight=480\nframe-rate=200\npixel-format=RGB8\ninference=detection\n");
    Run();
    for (int i = 0; i < 20; ++i) {
        Next();
    }
    const Frame frame = Next();
    const auto boxes = frame.chunks.at(0x2003);
    int checked = 0;
    for (int box = 0; box < boxes.data[2]; ++box) {
        const std::uint8_t* at = boxes.data + 4 + 16 * box;
        std::int16_t classId = 0, corner[4];
        std::memcpy(&classId, at + 2, sizeof classId);
        std::memcpy(corner, at + 8, sizeof corner);
        // The middle has the colour of the class: red, green or blue above the others.
        const std::uint8_t* pixel = frame.data + 3 * (std::size_t(corner[1] + corner[3]) / 2 * 640 +
                                                      std::size_t(corner[0] + corner[2]) / 2);
        if (corner[1] > 60) { // not under the counter
            EXPECT_EQ(std::max_element(pixel, pixel + 3) - pixel, classId) << box;
            ++checked;
        }
    }
    EXPECT_GE(checked, 2);
}

TEST_F(StreamTest, AnImageThatGrewArrivesAsFarAsItFits) {
    Begin("width=320\nheight=240\nframe-rate=200\n");
    Run();
    Next();
    Write(File("width=640\nheight=480\nframe-rate=200\n"));
    EXPECT_TRUE(Eventually([&] {
        const Frame frame = Next();
        return frame.width == 640 && frame.height == 120 && frame.status == IMAGE_DATA_OVERFLOW;
    }));
}

} // namespace
} // namespace Norvane::Transport::Emulator
