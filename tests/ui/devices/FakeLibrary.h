#pragma once

#include "norvane/Norvane.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <QMetaType>

#include <memory>
#include <string>
#include <vector>

// Lets a signal spy keep handles.
Q_DECLARE_METATYPE(Norvane::CameraPtr)
Q_DECLARE_METATYPE(Norvane::InterfacePtr)

/// A camera system of a test's own: interfaces and cameras that hold nothing but node maps, so that a widget
/// is tested without discovery, threads or sockets. The node maps are real ones over small descriptions.

/// Writes a description node by node.
class DescriptionText {
public:
    DescriptionText& String(const std::string& name, const std::string& value);
    DescriptionText& Integer(const std::string& name, std::int64_t value, bool readOnly = false);
    DescriptionText& Boolean(const std::string& name, bool value);
    /// The first entry is the value.
    DescriptionText& Enumeration(const std::string& name, const std::vector<std::string>& entries);
    /// A command that writes 1 to the 4-byte register at `address`.
    DescriptionText& Command(const std::string& name, std::int64_t address);
    DescriptionText& Raw(const std::string& xml);

    std::shared_ptr<Norvane::GenApi::INodeMap> Build(std::shared_ptr<Norvane::GenApi::IPort> port) const;

private:
    std::string m_body;
};

/// A port that remembers every write, and answers reads from what was written.
class RecordingPort : public Norvane::GenApi::IPort {
public:
    struct WriteRecord {
        std::int64_t address;
        std::int64_t value; ///< of up to 8 bytes, little-endian
    };

    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

    std::vector<WriteRecord> writes;

private:
    std::shared_ptr<Norvane::GenApi::IPort> m_memory = Norvane::GenApi::CreateMemoryPort();
};

constexpr std::int64_t kForceIpAddress = 0x100;
constexpr std::int64_t kDeviceSelectorAddress = 0x200;

struct FakeCameraSetup {
    int serial = 0;
    std::string model = "Duskwing S DWS-50S5C";
    bool gigE = true;
    bool wrongSubnet = false;
    std::uint32_t ipAddress = 0xA9FE0A14; ///< 169.254.10.20
};

class FakeCamera : public Norvane::Camera {
public:
    explicit FakeCamera(const FakeCameraSetup& setup);

    bool IsValid() const override { return true; }
    bool IsInitialized() const override { return initialized; }
    void Init() override { initialized = true; }
    void DeInit() override { initialized = false; }
    bool IsStreaming() const override { return false; }
    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    Norvane::GenApi::INodeMap& GetNodeMap() override;
    Norvane::GenApi::INodeMap& GetTLDeviceNodeMap() override { return *m_tlDeviceMap; }
    Norvane::GenApi::INodeMap& GetTLStreamNodeMap() override { return *m_tlDeviceMap; }
    std::uint64_t GetDeviceNumber() const override { return static_cast<std::uint64_t>(m_serial); }
    std::string GetUniqueID() const override { return std::to_string(m_serial); }
    void BeginAcquisition() override {}
    void EndAcquisition() override {}
    Norvane::ImagePtr GetNextImage(std::uint64_t, std::uint64_t) override { return {}; }
    void RegisterEventHandler(Norvane::EventHandler&) override {}
    void UnregisterEventHandler(Norvane::EventHandler&) override {}

    bool initialized = false;
    /// The camera's own features; a test that needs them sets them.
    std::shared_ptr<Norvane::GenApi::INodeMap> nodeMap;
    std::shared_ptr<RecordingPort> port = std::make_shared<RecordingPort>();

private:
    int m_serial;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_tlDeviceMap;
};

class FakeInterface : public Norvane::IInterface {
public:
    FakeInterface(const std::string& id, const std::string& displayName, bool gigE = true);

    std::shared_ptr<FakeCamera> Add(const FakeCameraSetup& setup);

    bool IsValid() const override { return true; }
    Norvane::CameraList GetCameras(bool update) override;
    Norvane::GenApi::INodeMap& GetTLNodeMap() override { return *m_tlMap; }
    bool IsUsable() const override { return usable; }
    std::string GetInterfaceID() const override { return m_id; }

    bool usable = true;
    std::vector<std::shared_ptr<FakeCamera>> cameras;
    std::shared_ptr<RecordingPort> port = std::make_shared<RecordingPort>();

private:
    std::string m_id;
    std::shared_ptr<Norvane::GenApi::INodeMap> m_tlMap;
};

class FakeSystem : public Norvane::ISystem {
public:
    std::shared_ptr<FakeInterface> Add(const std::string& id, const std::string& displayName,
                                       bool gigE = true);

    Norvane::LibraryVersion GetLibraryVersion() const override { return {1, 2, 3, 4}; }
    Norvane::InterfaceList GetInterfaces(bool update) override;
    Norvane::CameraList GetCameras(bool) override { return {}; }
    void RegisterEventHandler(Norvane::EventHandler&) override {}
    void UnregisterEventHandler(Norvane::EventHandler&) override {}
    void RegisterInterfaceEventHandler(Norvane::EventHandler&, bool) override {}
    void UnregisterInterfaceEventHandler(Norvane::EventHandler&) override {}

    std::vector<std::shared_ptr<FakeInterface>> interfaces;
};

Norvane::CameraPtr HandleOf(const std::shared_ptr<FakeCamera>& camera);
Norvane::InterfacePtr HandleOf(const std::shared_ptr<FakeInterface>& interface);
