#pragma once

#include "norvane/Camera.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// An image with a given identity; its pixels are the frame ID's low byte.
class FakeImage : public Norvane::IImage {
public:
    std::uint64_t frameId = 1;
    std::uint64_t timeStamp = 1;
    bool incomplete = false;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(16 * 8);
    bool released = false;

    static Norvane::ImagePtr Make(std::uint64_t frameId, std::uint64_t timeStamp = 1,
                                  bool incomplete = false) {
        auto image = std::make_shared<FakeImage>();
        image->frameId = frameId;
        image->timeStamp = timeStamp;
        image->incomplete = incomplete;
        std::memset(image->pixels.data(), static_cast<int>(frameId & 0xFF), image->pixels.size());
        return Norvane::ImagePtr(std::move(image));
    }

    std::size_t GetWidth() const noexcept override { return 16; }
    std::size_t GetHeight() const noexcept override { return 8; }
    std::size_t GetXOffset() const noexcept override { return 0; }
    std::size_t GetYOffset() const noexcept override { return 0; }
    Norvane::PixelFormatEnums GetPixelFormat() const noexcept override { return Norvane::PixelFormat_Mono8; }
    const char* GetPixelFormatName() const noexcept override { return "Mono8"; }
    std::size_t GetBitsPerPixel() const noexcept override { return 8; }
    std::size_t GetStride() const noexcept override { return 16; }
    std::size_t GetImageSize() const noexcept override { return pixels.size(); }
    std::uint64_t GetFrameID() const noexcept override { return frameId; }
    std::uint64_t GetTimeStamp() const noexcept override { return timeStamp; }
    bool IsIncomplete() const noexcept override { return incomplete; }
    Norvane::ImageStatus GetImageStatus() const noexcept override {
        return incomplete ? Norvane::IMAGE_MISSING_PACKETS : Norvane::IMAGE_NO_ERROR;
    }
    void* GetData() const noexcept override { return const_cast<std::uint8_t*>(pixels.data()); }
    Norvane::ChunkData GetChunkData() const override { return {}; }
    void Release() override { released = true; }
    bool IsReleased() const noexcept override { return released; }
    void DeepCopy(const Norvane::ImagePtr&) override {}
    Norvane::ImagePtr Convert(Norvane::PixelFormatEnums, Norvane::ColorProcessingAlgorithm) const override {
        return Make(frameId, timeStamp, incomplete);
    }
    void Convert(const Norvane::ImagePtr&, Norvane::ColorProcessingAlgorithm) const override {}
    void Save(const char* fileName, Norvane::ImageFileFormat) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::PNGOption&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::BMPOption&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::PGMOption&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::PPMOption&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::JPEGOption&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::JPG2Option&) const override { Write(fileName); }
    void Save(const char* fileName, const Norvane::TIFFOption&) const override { Write(fileName); }

private:
    void Write(const char* fileName) const {
        FILE* file = std::fopen(fileName, "wb");
        if (!file) {
            throw Norvane::Exception(Norvane::Error::Io, std::string(fileName) + ": " + std::strerror(errno));
        }
        std::fwrite(pixels.data(), 1, pixels.size(), file);
        std::fclose(file);
    }
};

/// A camera whose images a test hands out, on the test's own thread.
class FakeCamera : public Norvane::Camera {
public:
    FakeCamera() : m_nodes(MakeMap("")), m_device(MakeMap("")), m_stream(MakeMap("")) {}

    /// @param nodes  node elements of a description; registers are memory, zero at first.
    static std::shared_ptr<Norvane::GenApi::INodeMap> MakeMap(const std::string& nodes) {
        return Norvane::GenApi::CreateNodeMap(
            std::string(
                R"(<RegisterDescription ModelName="Fake" VendorName="Fake" StandardNameSpace="None" SchemaMajorVersion="1"
               SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
               ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
               <Category Name="Root"/>)") +
                nodes + R"(<Port Name="Device"/></RegisterDescription>)",
            Norvane::GenApi::CreateMemoryPort());
    }
    void SetNodes(const std::string& nodes) { m_nodes = MakeMap(nodes); }
    void SetDeviceNodes(const std::string& nodes) { m_device = MakeMap(nodes); }
    void SetStreamNodes(const std::string& nodes) { m_stream = MakeMap(nodes); }

    void Deliver(const Norvane::ImagePtr& image) {
        Norvane::ImageEventHandler* handler = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            handler = m_handler;
            if (!handler) {
                m_next = image;
            }
        }
        m_changed.notify_all();
        if (handler) {
            handler->OnImageEvent(image);
        }
    }
    /// Returns once somebody waits for the next image.
    void WaitForWaiter() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isWaitedFor; });
    }
    int registrations = 0;

    bool IsValid() const override { return true; }
    bool IsInitialized() const override { return true; }
    void Init() override {}
    void DeInit() override {}
    bool IsStreaming() const override {
        const std::lock_guard lock(m_mutex);
        return m_isStreaming;
    }
    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    Norvane::GenApi::INodeMap& GetNodeMap() override { return *m_nodes; }
    Norvane::GenApi::INodeMap& GetTLDeviceNodeMap() override { return *m_device; }
    Norvane::GenApi::INodeMap& GetTLStreamNodeMap() override { return *m_stream; }
    std::uint64_t GetDeviceNumber() const override { return 1; }
    std::string GetUniqueID() const override { return "fake"; }

    void BeginAcquisition() override {
        const std::lock_guard lock(m_mutex);
        if (m_isStreaming) {
            throw Norvane::Exception(Norvane::Error::ResourceInUse, "streaming already");
        }
        m_isStreaming = true;
    }
    void EndAcquisition() override {
        const std::lock_guard lock(m_mutex);
        if (!m_isStreaming) {
            throw Norvane::Exception(Norvane::Error::NotInitialized, "not streaming");
        }
        m_isStreaming = false;
        m_changed.notify_all();
    }
    Norvane::ImagePtr GetNextImage(std::uint64_t, std::uint64_t) override {
        std::unique_lock lock(m_mutex);
        m_isWaitedFor = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_next.IsValid() || !m_isStreaming; });
        m_isWaitedFor = false;
        if (!m_next.IsValid()) {
            throw Norvane::Exception(Norvane::Error::Abort, "acquisition ended");
        }
        return std::exchange(m_next, Norvane::ImagePtr());
    }
    void RegisterEventHandler(Norvane::EventHandler& handler) override {
        const std::lock_guard lock(m_mutex);
        m_handler = dynamic_cast<Norvane::ImageEventHandler*>(&handler);
        ++registrations;
    }
    void UnregisterEventHandler(Norvane::EventHandler&) override {
        const std::lock_guard lock(m_mutex);
        m_handler = nullptr;
    }

private:
    std::shared_ptr<Norvane::GenApi::INodeMap> m_nodes;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_device;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_stream;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Norvane::ImageEventHandler* m_handler = nullptr;
    Norvane::ImagePtr m_next;
    bool m_isStreaming = false;
    bool m_isWaitedFor = false;
};
