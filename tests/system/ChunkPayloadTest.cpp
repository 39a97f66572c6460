// What a camera attaches to its images, from the bytes on the wire to the values that a program reads: whole,
// cut off, and with wrong lengths.
#include "EmulatorFixture.h"

#include "../unit/aravis/FakeCamera.h"
#include "core/ChunkReader.h"
#include "norvane/genapi/NodeMapFactory.h"
#include "transport/Transport.h"
#include "transport/emulator/ChunkLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace Norvane::Test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kImageBytes = 64 * 64;
constexpr std::size_t kTrailerBytes = 8; // identifier and length behind each chunk
constexpr std::uint32_t kMono8 = 0x01080001;

std::atomic<int> g_warnings{0};

void Put(Bytes& bytes, std::uint32_t value, int size = 4) {
    for (int i = size - 1; i >= 0; --i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
}

/// A payload that is damaged on its way.
struct Damage {
    const char* name;
    Bytes payload;
};

/// Recorded from an emulated camera that looks for objects.
class ChunkPayloadTest : public EmulatorFixture {
protected:
    void SetUp() override {
        AddInterface();
        AddCamera("1", "width=64\nheight=64\npixel-format=Mono8\ninference=detection");
        Write();
        m_transport = Transport::CreateEmulatorTransport();
        ASSERT_TRUE(Eventually([&] { return (m_id = FirstId()), !m_id.empty(); }));
        m_device = m_transport->Open(m_id);
        GenApi::NodeMapOptions options;
        options.deviceName = "recorded";
        m_map = GenApi::CreateNodeMap(m_device->Description(), m_device, options);
        Record();
        g_warnings = 0;
        SetLogSink([](LogLevel level, const char*) { g_warnings += level == LogLevel::Warning ? 1 : 0; });
    }
    void TearDown() override { SetLogSink(nullptr); }

    std::string FirstId() {
        const auto devices = m_transport->Scan().devices;
        return devices.empty() ? std::string() : devices[0].id;
    }

    void Record() {
        Transport::StreamSettings settings;
        settings.payloadSize = static_cast<std::uint64_t>(NumberOf(*m_map, "PayloadSize"));
        const auto stream = m_device->OpenStream(settings);
        SetText(*m_map, "AcquisitionStart", "1");
        const auto frame = stream->Pop(5000);
        SetText(*m_map, "AcquisitionStop", "1");
        ASSERT_TRUE(frame);
        const std::uint8_t* end = frame->data;
        for (const auto& [id, chunk] : frame->chunks) {
            end = std::max(end, chunk.data + chunk.size);
        }
        m_payload.assign(frame->data, const_cast<std::uint8_t*>(end) + kTrailerBytes);
        m_frameId = static_cast<std::int64_t>(frame->frameId);
        ASSERT_GT(m_payload.size(), kImageBytes + 1028);
    }

    /// Cut at a few places, and every length in turn too long, too short and beyond everything.
    std::vector<Damage> Damages() const {
        std::vector<Damage> damages;
        for (const std::size_t missing : {1U, 4U, 7U, 100U, 1000U}) {
            damages.push_back({"cut off", Bytes(m_payload.begin(), m_payload.end() - missing)});
        }
        for (std::size_t end = m_payload.size(); end > kImageBytes + kTrailerBytes;) {
            std::uint32_t length = 0;
            for (std::size_t i = end - 4; i < end; ++i) {
                length = length << 8 | m_payload[i];
            }
            for (const std::uint32_t wrong : {length + 1, length - 1, 0xFFFFFFFFU, 0x7FFFFFF0U}) {
                Bytes payload = m_payload;
                for (std::size_t i = 0; i < 4; ++i) {
                    payload[end - 4 + i] = static_cast<std::uint8_t>(wrong >> (24 - 8 * i));
                }
                damages.push_back({"wrong length", payload});
            }
            end -= length + kTrailerBytes;
        }
        return damages;
    }

    void ExpectWhole(const ChunkData& chunks) const {
        EXPECT_EQ(chunks.GetFrameID(), m_frameId);
        const InferenceBoundingBoxResult boxes = chunks.GetInferenceBoundingBoxResult();
        ASSERT_GT(boxes.GetBoxCount(), 0);
        const InferenceBoundingBox box = boxes.GetBoxAt(0);
        EXPECT_TRUE(0 <= box.classId && box.classId < 3) << box.classId;
        EXPECT_TRUE(box.confidence > 0 && box.confidence <= 1) << box.confidence;
        EXPECT_TRUE(0 <= box.topLeftX && box.topLeftX < box.bottomRightX && box.bottomRightX <= 64);
    }

    std::unique_ptr<Transport::ITransport> m_transport;
    std::string m_id;
    std::shared_ptr<Transport::IDevice> m_device;
    std::shared_ptr<GenApi::INodeMap> m_map;
    Bytes m_payload;
    std::int64_t m_frameId = 0;
};

/// Images on their way to a stream that somebody else opened, packet by packet (GigE Vision 2.0, section 24).
class Sender {
public:
    explicit Sender(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_DGRAM, 0)) {
        m_to.sin_family = AF_INET;
        m_to.sin_port = htons(port);
        m_to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::connect(m_socket, reinterpret_cast<sockaddr*>(&m_to), sizeof m_to);
    }
    ~Sender() { ::close(m_socket); }

    /// @param blockBytes  bytes of the payload in one packet
    void Send(const Bytes& payload, std::size_t blockBytes) {
        ++m_block;
        Bytes leader = Header(1, 0);
        Put(leader, 0x4001); // an image with extended chunks
        Put(leader, 0);
        Put(leader, m_block); // time
        Put(leader, kMono8);
        Put(leader, 64);
        Put(leader, 64);
        Put(leader, 0);
        Put(leader, 0);
        Put(leader, 0);
        Emit(leader);
        std::uint32_t number = 1;
        for (std::size_t at = 0; at < payload.size(); at += blockBytes, ++number) {
            Bytes packet = Header(3, number);
            packet.insert(packet.end(), payload.begin() + at,
                          payload.begin() + std::min(at + blockBytes, payload.size()));
            Emit(packet);
        }
        Bytes trailer = Header(2, number);
        Put(trailer, 0x4001);
        Put(trailer, 64);
        Emit(trailer);
    }

private:
    Bytes Header(std::uint32_t content, std::uint32_t packet) const {
        Bytes bytes;
        Put(bytes, 0, 2);
        Put(bytes, m_block, 2);
        Put(bytes, content << 24 | packet);
        return bytes;
    }
    void Emit(const Bytes& packet) const { EXPECT_GT(::send(m_socket, packet.data(), packet.size(), 0), 0); }

    int m_socket;
    sockaddr_in m_to{};
    std::uint32_t m_block = 0;
};

} // namespace

TEST_F(ChunkPayloadTest, TheEmulatorsOwnPath) {
    Core::ChunkReader reader("recorded", *m_map);
    const auto read = [&](const Bytes& payload) {
        Transport::Frame frame;
        frame.chunks = Transport::Emulator::ChunkLayout::Parse(payload.data(), payload.size(), true);
        return reader.Read(frame);
    };
    ExpectWhole(read(m_payload));
    for (const Damage& damage : Damages()) {
        const ChunkData chunks = read(damage.payload);
        EXPECT_EQ(ErrorOf([&] { chunks.GetInferenceBoundingBoxResult(); }), Error::NotAvailable)
            << damage.name;
    }
    ExpectWhole(read(m_payload));
}

TEST_F(ChunkPayloadTest, OverGigEVision) {
    if (!FakeCamera::IsInstalled()) {
        GTEST_SKIP() << "arv-fake-gv-camera-0.8 (package aravis-tools-cli) is not installed";
    }
    const auto transport = Transport::CreateAravisTransport();
    FakeCamera camera;
    const auto device = transport->Open(WaitForCamera(*transport).id);
    WriteRegister(*device, FakeCamera::kWidth, 64);
    WriteRegister(*device, FakeCamera::kHeight, 64);
    Transport::StreamSettings settings;
    settings.payloadSize = m_payload.size();
    const auto stream = device->OpenStream(settings); // the camera itself stays silent
    constexpr std::int64_t kHostPort = 0x0D00;        // GevSCPHostPort
    constexpr std::size_t kHeaders = 20 + 8 + 8;      // of IP, UDP and GVSP
    Sender sender(static_cast<std::uint16_t>(ReadRegister(*device, kHostPort)));
    const std::size_t blockBytes = (ReadRegister(*device, FakeCamera::kPacketSize) & 0xFFFF) - kHeaders;
    Core::ChunkReader reader("recorded", *m_map);

    sender.Send(m_payload, blockBytes);
    const auto whole = stream->Pop(5000);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->status, IMAGE_NO_ERROR);
    EXPECT_EQ(whole->size, kImageBytes);
    EXPECT_TRUE(std::equal(whole->data, whole->data + kImageBytes, m_payload.begin()));
    ExpectWhole(reader.Read(*whole));

    for (const Damage& damage : Damages()) {
        sender.Send(damage.payload, blockBytes);
        const auto frame = stream->Pop(5000);
        ASSERT_TRUE(frame) << damage.name;
        EXPECT_NE(frame->status, IMAGE_NO_ERROR) << damage.name;
        EXPECT_TRUE(std::equal(frame->data, frame->data + kImageBytes, m_payload.begin())) << damage.name;
        const ChunkData chunks = reader.Read(*frame);
        EXPECT_EQ(ErrorOf([&] { chunks.GetInferenceBoundingBoxResult(); }), Error::NotAvailable)
            << damage.name;
    }
    EXPECT_EQ(g_warnings, 1) << "told once a stream";
}

} // namespace Norvane::Test
