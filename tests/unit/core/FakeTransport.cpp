#include "FakeTransport.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace Norvane::Test {

using namespace std::chrono_literals;

const char* const kFakeDescription = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription ModelName="Fake" VendorName="Tests" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root" NameSpace="Standard">
    <pFeature>Gain</pFeature>
    <pFeature>Polled</pFeature>
    <pFeature>PayloadSize</pFeature>
    <pFeature>AcquisitionStart</pFeature>
    <pFeature>AcquisitionStop</pFeature>
    <pFeature>TLParamsLocked</pFeature>
    <pFeature>ChunkFrameID</pFeature>
  </Category>
  <IntReg Name="Gain" NameSpace="Standard"><Address>0x118</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="Polled" NameSpace="Standard"><Address>0x120</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><PollingTime>100</PollingTime><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="PayloadSize" NameSpace="Standard"><Value>8</Value></Integer>
  <Command Name="AcquisitionStart" NameSpace="Standard"><pValue>StartReg</pValue>
    <CommandValue>1</CommandValue></Command>
  <IntReg Name="StartReg"><Address>0x100</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="AcquisitionStop" NameSpace="Standard"><pValue>StopReg</pValue>
    <CommandValue>1</CommandValue></Command>
  <IntReg Name="StopReg"><Address>0x108</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="TLParamsLocked" NameSpace="Standard"><pValue>LockReg</pValue></Integer>
  <IntReg Name="LockReg"><Address>0x110</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="ChunkFrameID" NameSpace="Standard"><Address>0</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>FrameIdChunk</pPort><Sign>Signed</Sign>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Register Name="ChunkInferenceBoundingBoxResult" NameSpace="Custom"><Address>0</Address><Length>20</Length>
    <AccessMode>RO</AccessMode><pPort>BoxChunk</pPort></Register>
  <Port Name="Device" NameSpace="Standard"/>
  <Port Name="FrameIdChunk" NameSpace="Standard"><ChunkID>A1</ChunkID></Port>
  <Port Name="BoxChunk" NameSpace="Standard"><ChunkID>A2</ChunkID></Port>
</RegisterDescription>
)";

bool Eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

void Gate::Close() {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
}

void Gate::Open() {
    {
        const std::lock_guard lock(m_mutex);
        m_closed = false;
    }
    m_changed.notify_all();
}

void Gate::Pass() {
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    m_changed.wait(lock, [this] { return !m_closed; });
    --m_waiting;
}

int Gate::Waiting() const {
    const std::lock_guard lock(m_mutex);
    return m_waiting;
}

class FakeStream final : public Transport::IStream {
public:
    FakeStream(FakeCamera& camera, const Transport::StreamSettings& settings) : m_camera(camera) {
        const std::lock_guard lock(m_camera.m_mutex);
        m_camera.m_stream = this;
        m_camera.m_settings = settings;
    }
    ~FakeStream() override {
        const std::lock_guard lock(m_camera.m_mutex);
        m_camera.m_stream = nullptr;
    }

    std::optional<Transport::Frame> Pop(std::uint32_t timeoutMs) override {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                           [this] { return m_woken || !m_frames.empty(); });
        if (m_frames.empty()) {
            return std::nullopt;
        }
        Transport::Frame frame = std::move(m_frames.front());
        m_frames.pop_front();
        return frame;
    }

    void Wake() override {
        {
            const std::lock_guard lock(m_mutex);
            m_woken = true;
        }
        m_changed.notify_all();
    }

    Transport::StreamStatistics Statistics() const override {
        const std::lock_guard lock(m_mutex);
        return m_statistics;
    }

    void Push(Transport::Frame frame) {
        {
            const std::lock_guard lock(m_mutex);
            if (*m_camera.m_buffersInUse >= m_camera.m_settings.bufferCount) {
                ++m_statistics.underruns;
                return;
            }
            ++m_statistics.deliveredImages;
            ++*m_camera.m_buffersInUse;
            frame.owner =
                std::shared_ptr<void>(nullptr, [owner = std::move(frame.owner),
                                                inUse = m_camera.m_buffersInUse](void*) { --*inUse; });
            m_frames.push_back(std::move(frame));
        }
        m_changed.notify_all();
    }

private:
    FakeCamera& m_camera;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Transport::Frame> m_frames;
    Transport::StreamStatistics m_statistics;
    bool m_woken = false;
};

class FakeDevice final : public Transport::IDevice {
public:
    explicit FakeDevice(FakeCamera& camera) : m_camera(camera) { ++m_camera.m_devices; }
    ~FakeDevice() override {
        SetLostHandler(nullptr);
        --m_camera.m_devices;
    }

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        CheckAlive();
        const std::int64_t value = m_camera.Register(address);
        std::memcpy(buffer, &value, static_cast<std::size_t>(std::min<std::int64_t>(length, 8)));
    }

    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        CheckAlive();
        std::int64_t value = 0;
        std::memcpy(&value, buffer, static_cast<std::size_t>(std::min<std::int64_t>(length, 8)));
        m_camera.SetRegister(address, value);
    }

    std::string Description() override { return m_camera.description; }
    Transport::Access CurrentAccess() const override { return m_camera.access; }
    bool IsAlive() const override { return m_camera.m_alive; }

    std::unique_ptr<Transport::IStream> OpenStream(const Transport::StreamSettings& settings) override {
        if (m_camera.onOpenStream) {
            m_camera.onOpenStream();
        }
        return std::make_unique<FakeStream>(m_camera, settings);
    }

    void SetLostHandler(std::function<void()> handler) override {
        const std::lock_guard lock(m_camera.m_mutex);
        m_camera.m_lostHandler = std::move(handler);
    }

private:
    void CheckAlive() const {
        if (!m_camera.m_alive) {
            throw Exception(Error::Io, "the fake device is gone");
        }
    }

    FakeCamera& m_camera;
};

FakeCamera::FakeCamera(std::string id, std::string interfaceId, std::string serial)
    : description(kFakeDescription) {
    record.id = std::move(id);
    record.interfaceId = std::move(interfaceId);
    record.vendor = "Altrona";
    record.model = "Fake";
    record.serial = std::move(serial);
}

std::shared_ptr<Transport::IDevice> FakeCamera::Open() {
    opening.Pass();
    ++m_opened;
    m_alive = true;
    return std::make_shared<FakeDevice>(*this);
}

bool FakeCamera::Send(std::uint64_t frameId, std::map<std::uint64_t, std::vector<std::uint8_t>> chunks) {
    struct Memory {
        std::uint8_t pixels[8] = {};
        std::map<std::uint64_t, std::vector<std::uint8_t>> chunks;
    };
    auto memory = std::make_shared<Memory>();
    memory->chunks = std::move(chunks);
    Transport::Frame frame;
    frame.data = memory->pixels;
    frame.size = sizeof memory->pixels;
    frame.pfncFormat = 0x01080001; // Mono8
    frame.width = 4;
    frame.height = 2;
    frame.frameId = frameId;
    for (const auto& [chunkId, bytes] : memory->chunks) {
        frame.chunks[chunkId] = {bytes.data(), bytes.size()};
    }
    frame.owner = std::move(memory);
    const std::lock_guard lock(m_mutex);
    if (m_stream) {
        m_stream->Push(std::move(frame));
    }
    return m_stream != nullptr;
}

void FakeCamera::Lose() {
    m_alive = false;
    std::function<void()> handler;
    {
        const std::lock_guard lock(m_mutex);
        handler = m_lostHandler;
    }
    if (handler) {
        handler();
    }
}

std::int64_t FakeCamera::Register(std::int64_t address) const {
    const std::lock_guard lock(m_mutex);
    const auto it = m_registers.find(address);
    return it == m_registers.end() ? 0 : it->second;
}

void FakeCamera::SetRegister(std::int64_t address, std::int64_t value) {
    const std::lock_guard lock(m_mutex);
    m_registers[address] = value;
}

bool FakeCamera::IsStreaming() const {
    const std::lock_guard lock(m_mutex);
    return m_stream != nullptr;
}

Transport::StreamSettings FakeCamera::LastSettings() const {
    const std::lock_guard lock(m_mutex);
    return m_settings;
}

class FakeTransport final : public Transport::ITransport {
public:
    explicit FakeTransport(std::shared_ptr<FakeWorld> world) : m_world(std::move(world)) {}

    Transport::ScanResult Scan() override {
        m_world->scanning.Pass();
        ++m_world->scans;
        Transport::ScanResult result;
        const std::lock_guard lock(m_world->m_mutex);
        result.interfaces = m_world->m_interfaces;
        for (const auto& camera : m_world->m_cameras) {
            result.devices.push_back(camera->record);
        }
        return result;
    }

    void SetChangeHandler(std::function<void()> handler) override {
        const std::lock_guard lock(m_world->m_mutex);
        m_world->m_changed = std::move(handler);
    }

    std::shared_ptr<Transport::IDevice> Open(const std::string& deviceId) override {
        std::shared_ptr<FakeCamera> found;
        {
            const std::lock_guard lock(m_world->m_mutex);
            for (const auto& camera : m_world->m_cameras) {
                found = camera->record.id == deviceId ? camera : found;
            }
        }
        if (!found) {
            throw Exception(Error::InvalidId, "no fake camera " + deviceId);
        }
        return found->Open();
    }

    void ForceIp(const std::string&) override {
        m_world->forcing.Pass();
        ++m_world->forcedIps;
    }

private:
    const std::shared_ptr<FakeWorld> m_world;
};

std::shared_ptr<FakeCamera> FakeWorld::AddCamera(const std::string& id, const std::string& interfaceId,
                                                 const std::string& serial) {
    auto camera = std::make_shared<FakeCamera>(id, interfaceId, serial);
    Plug(camera);
    return camera;
}

void FakeWorld::AddInterface(const std::string& id, Transport::Technology technology) {
    Transport::InterfaceRecord record;
    record.id = id;
    record.displayName = "Fake " + id;
    record.technology = technology;
    record.ipAddress = 0xA9FE0A01;
    record.subnetMask = 0xFFFF0000;
    {
        const std::lock_guard lock(m_mutex);
        m_interfaces.push_back(record);
    }
    Announce();
}

void FakeWorld::Plug(const std::shared_ptr<FakeCamera>& camera) {
    {
        const std::lock_guard lock(m_mutex);
        m_cameras.push_back(camera);
    }
    Announce();
}

void FakeWorld::Unplug(const std::shared_ptr<FakeCamera>& camera) {
    {
        const std::lock_guard lock(m_mutex);
        m_cameras.erase(std::remove(m_cameras.begin(), m_cameras.end(), camera), m_cameras.end());
    }
    camera->Lose();
    Announce();
}

void FakeWorld::RemoveInterface(const std::string& id) {
    {
        const std::lock_guard lock(m_mutex);
        m_interfaces.erase(std::remove_if(m_interfaces.begin(), m_interfaces.end(),
                                          [&id](const auto& record) { return record.id == id; }),
                           m_interfaces.end());
    }
    Announce();
}

void FakeWorld::Change(const std::shared_ptr<FakeCamera>& camera,
                       const std::function<void(Transport::DeviceRecord&)>& change) {
    {
        const std::lock_guard lock(m_mutex);
        change(camera->record);
    }
    Announce();
}

void FakeWorld::Announce() {
    std::function<void()> changed;
    {
        const std::lock_guard lock(m_mutex);
        changed = m_changed;
    }
    if (changed) {
        changed();
    }
}

std::unique_ptr<Transport::ITransport> MakeTransport(std::shared_ptr<FakeWorld> world) {
    return std::make_unique<FakeTransport>(std::move(world));
}

} // namespace Norvane::Test
