#include "TestDevice.h"

#include <algorithm>
#include <sstream>

using namespace Norvane::GenApi;

void CountingPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    std::unique_lock lock(m_mutex);
    m_released.wait(lock, [this] { return !m_held; });
    ++m_reads[address];
    for (std::int64_t i = 0; i < length; ++i) {
        static_cast<std::uint8_t*>(buffer)[i] = m_bytes[address + i];
    }
}

void CountingPort::hold(bool held) {
    const std::lock_guard lock(m_mutex);
    m_held = held;
    m_released.notify_all();
}

void CountingPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    const std::lock_guard lock(m_mutex);
    ++m_writes[address];
    for (std::int64_t i = 0; i < length; ++i) {
        m_bytes[address + i] = static_cast<const std::uint8_t*>(buffer)[i];
    }
}

std::uint32_t CountingPort::value(std::int64_t address) const {
    const std::lock_guard lock(m_mutex);
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        const auto byte = m_bytes.find(address + i);
        value = value << 8 | (byte == m_bytes.end() ? 0 : byte->second);
    }
    return value;
}

void CountingPort::setValue(std::int64_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    for (int i = 0; i < 4; ++i) {
        m_bytes[address + i] = static_cast<std::uint8_t>(value >> 8 * i);
    }
}

int CountingPort::writes(std::int64_t address) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_writes.find(address);
    return found == m_writes.end() ? 0 : found->second;
}

int CountingPort::mostReads() const {
    const std::lock_guard lock(m_mutex);
    int most = 0;
    for (const auto& [address, count] : m_reads) {
        most = std::max(most, count);
    }
    return most;
}

void CountingPort::forgetCounts() {
    const std::lock_guard lock(m_mutex);
    m_reads.clear();
    m_writes.clear();
}

std::string description(const std::string& nodes) {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Test" VendorName="Test" StandardNameSpace="None" SchemaMajorVersion="1"
 SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
 ProductGuid="A" VersionGuid="B" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Port Name="Device"/>
)" + nodes +
           "</RegisterDescription>";
}

std::shared_ptr<INodeMap> makeMap(const std::string& nodes, std::shared_ptr<IPort> port) {
    return CreateNodeMap(description(nodes), std::move(port));
}

TestCamera::TestCamera(const std::string& device, const std::string& transportLayer,
                       const std::string& stream)
    : deviceMap(makeMap(device, port)), tlMap(makeMap(transportLayer, tlPort)),
      streamMap(makeMap(stream, streamPort)) {}

void TestCamera::Init() {
    if (!opens) {
        throw Norvane::Exception(Norvane::Error::Timeout, "the camera does not answer");
    }
    initialized = true;
}

INodeMap& TestCamera::GetNodeMap() {
    if (unknown) {
        throw Norvane::Exception(Norvane::Error::NotInitialized, "the camera's features are not known");
    }
    return *deviceMap;
}

TestInterface::TestInterface(const std::string& nodes) : map(makeMap(nodes, port)) {}

std::string category(const std::string& name, const std::string& features) {
    std::string xml = "<Category Name=\"" + name + "\">";
    std::istringstream names(features);
    for (std::string feature; names >> feature;) {
        xml += "<pFeature>" + feature + "</pFeature>";
    }
    return xml + "</Category>\n";
}

std::string integer(const std::string& name, std::int64_t address, const std::string& more,
                    const char* access) {
    // The schema puts what concerns the node itself before the register, and the rest after it.
    return "<Integer Name=\"" + name + "\">" + "<pValue>" + name + "Reg</pValue>" + more +
           "</Integer>\n<IntReg Name=\"" + name + "Reg\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>" + access +
           "</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></"
           "IntReg>\n";
}

std::string text(const std::string& name, const std::string& value) {
    return "<String Name=\"" + name + "\"><Value>" + value + "</Value></String>\n";
}

std::string number(const char* kind, const std::string& name, const std::string& value,
                   const std::string& more) {
    return std::string("<") + kind + " Name=\"" + name + "\"><Value>" + value + "</Value>" + more + "</" +
           kind + ">\n";
}
