#pragma once

#include "imaging/ImageFactory.h"
#include "norvane/Camera.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <memory>
#include <string>
#include <vector>

/// An image of 16 x 8 pixels, which are the frame ID's low byte.
inline Norvane::ImagePtr TestImage(std::uint64_t frameId, std::uint64_t timeStamp = 1,
                                   bool incomplete = false) {
    Norvane::Imaging::ImageLayout layout;
    layout.format = Norvane::PixelFormat_Mono8;
    layout.width = 16;
    layout.height = 8;
    layout.frameId = frameId;
    layout.timestampNs = timeStamp;
    layout.status = incomplete ? Norvane::IMAGE_MISSING_PACKETS : Norvane::IMAGE_NO_ERROR;
    auto pixels = std::make_shared<std::vector<std::uint8_t>>(16 * 8, static_cast<std::uint8_t>(frameId));
    return Norvane::Imaging::MakeImage(layout, pixels->data(), pixels->size(), pixels);
}

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
    void SetDeviceNodes(const std::string& nodes) { m_device = MakeMap(nodes); }
    void SetStreamNodes(const std::string& nodes) { m_stream = MakeMap(nodes); }

    void Deliver(const Norvane::ImagePtr& image) {
        if (m_handler) {
            m_handler->OnImageEvent(image);
        }
    }
    int registrations = 0;

    bool IsValid() const override { return true; }
    bool IsInitialized() const override { return true; }
    void Init() override {}
    void DeInit() override {}
    bool IsStreaming() const override { return m_isStreaming; }
    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    Norvane::GenApi::INodeMap& GetNodeMap() override { return *m_nodes; }
    Norvane::GenApi::INodeMap& GetTLDeviceNodeMap() override { return *m_device; }
    Norvane::GenApi::INodeMap& GetTLStreamNodeMap() override { return *m_stream; }
    std::uint64_t GetDeviceNumber() const override { return 1; }
    std::string GetUniqueID() const override { return "fake"; }

    void BeginAcquisition() override {
        if (m_isStreaming) {
            throw Norvane::Exception(Norvane::Error::ResourceInUse, "streaming already");
        }
        m_isStreaming = true;
    }
    void EndAcquisition() override { m_isStreaming = false; }
    Norvane::ImagePtr GetNextImage(std::uint64_t, std::uint64_t) override { return {}; }
    void RegisterEventHandler(Norvane::EventHandler& handler) override {
        m_handler = dynamic_cast<Norvane::ImageEventHandler*>(&handler);
        ++registrations;
    }
    void UnregisterEventHandler(Norvane::EventHandler&) override { m_handler = nullptr; }

private:
    std::shared_ptr<Norvane::GenApi::INodeMap> m_nodes;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_device;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_stream;
    Norvane::ImageEventHandler* m_handler = nullptr;
    bool m_isStreaming = false;
};
