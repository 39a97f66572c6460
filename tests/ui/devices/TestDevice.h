#pragma once

#include "norvane/Norvane.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <QString>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>

/// How a failure message shows a text.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

/// Registers of a test's device: remembers which were read and written, and how often. Any thread.
class CountingPort : public Norvane::GenApi::IPort {
public:
    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

    /// A 4-byte register, little-endian; setting it is no access.
    std::uint32_t value(std::int64_t address) const;
    void setValue(std::int64_t address, std::uint32_t value);
    int writes(std::int64_t address) const;
    /// The largest number of times that one address was read.
    int mostReads() const;
    void forgetCounts();
    /// Until it is let through again every access waits, as with a device that takes its time.
    void hold(bool held);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_held = false;
    std::map<std::int64_t, std::uint8_t> m_bytes;
    std::map<std::int64_t, int> m_reads;
    std::map<std::int64_t, int> m_writes;
};

/// A description around the given nodes; "Root" is among them.
std::string description(const std::string& nodes);

/// The node map of some nodes over a port.
std::shared_ptr<Norvane::GenApi::INodeMap> makeMap(const std::string& nodes,
                                                   std::shared_ptr<Norvane::GenApi::IPort> port);

/// A camera that is nothing but three real node maps.
class TestCamera : public Norvane::Camera {
public:
    /// Each argument is the nodes of one description.
    TestCamera(const std::string& device, const std::string& transportLayer, const std::string& stream);

    bool IsValid() const override { return true; }
    bool IsInitialized() const override { return initialized; }
    void Init() override;
    void DeInit() override { initialized = false; }
    bool IsStreaming() const override { return false; }
    Norvane::GenApi::EAccessMode GetAccessMode() const override { return access; }
    Norvane::GenApi::INodeMap& GetNodeMap() override;
    Norvane::GenApi::INodeMap& GetTLDeviceNodeMap() override { return *tlMap; }
    Norvane::GenApi::INodeMap& GetTLStreamNodeMap() override { return *streamMap; }
    std::uint64_t GetDeviceNumber() const override { return 1; }
    std::string GetUniqueID() const override { return "test"; }
    void BeginAcquisition() override {}
    void EndAcquisition() override {}
    Norvane::ImagePtr GetNextImage(std::uint64_t, std::uint64_t) override { return {}; }
    void RegisterEventHandler(Norvane::EventHandler&) override {}
    void UnregisterEventHandler(Norvane::EventHandler&) override {}

    std::shared_ptr<CountingPort> port = std::make_shared<CountingPort>();
    std::shared_ptr<CountingPort> tlPort = std::make_shared<CountingPort>();
    std::shared_ptr<CountingPort> streamPort = std::make_shared<CountingPort>();
    std::shared_ptr<Norvane::GenApi::INodeMap> deviceMap;
    std::shared_ptr<Norvane::GenApi::INodeMap> tlMap;
    std::shared_ptr<Norvane::GenApi::INodeMap> streamMap;
    bool initialized = true;
    bool opens = true;    ///< false: Init() throws
    bool unknown = false; ///< GetNodeMap() throws
    Norvane::GenApi::EAccessMode access = Norvane::GenApi::RW;
};

class TestInterface : public Norvane::IInterface {
public:
    explicit TestInterface(const std::string& nodes);

    bool IsValid() const override { return true; }
    Norvane::CameraList GetCameras(bool) override { return {}; }
    Norvane::GenApi::INodeMap& GetTLNodeMap() override { return *map; }
    bool IsUsable() const override { return true; }
    std::string GetInterfaceID() const override { return "test"; }

    std::shared_ptr<CountingPort> port = std::make_shared<CountingPort>();
    std::shared_ptr<Norvane::GenApi::INodeMap> map;
};

// Nodes of descriptions. A category lists the features given, separated by blanks.
std::string category(const std::string& name, const std::string& features);
/// A register of 4 bytes; `more` is further elements.
std::string integer(const std::string& name, std::int64_t address, const std::string& more = {},
                    const char* access = "RW");
std::string text(const std::string& name, const std::string& value);
/// A number whose value is its description's, with further elements.
std::string number(const char* kind, const std::string& name, const std::string& value,
                   const std::string& more = {});
