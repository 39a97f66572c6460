#include "FakeLibrary.h"

#include <algorithm>
#include <cstring>

using namespace Norvane;
using namespace Norvane::GenApi;

namespace {

std::string Element(const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

std::string Escaped(const std::string& text) {
    std::string result;
    for (const char sign : text) {
        result += sign == '<' ? "&lt;" : sign == '&' ? "&amp;" : std::string(1, sign);
    }
    return result;
}

} // namespace

DescriptionText& DescriptionText::String(const std::string& name, const std::string& value) {
    return Raw("<String Name=\"" + name + "\">" + Element("ImposedAccessMode", "RO") +
               Element("Value", Escaped(value)) + "</String>");
}

DescriptionText& DescriptionText::Integer(const std::string& name, std::int64_t value, bool readOnly) {
    return Raw("<Integer Name=\"" + name + "\">" + (readOnly ? Element("ImposedAccessMode", "RO") : "") +
               Element("Value", std::to_string(value)) + "</Integer>");
}

DescriptionText& DescriptionText::Boolean(const std::string& name, bool value) {
    return Integer(name + "Value", value ? 1 : 0)
        .Raw("<Boolean Name=\"" + name + "\">" + Element("pValue", name + "Value") + "</Boolean>");
}

DescriptionText& DescriptionText::Enumeration(const std::string& name,
                                              const std::vector<std::string>& entries) {
    std::string xml = "<Enumeration Name=\"" + name + "\">";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        xml +=
            "<EnumEntry Name=\"" + entries[i] + "\">" + Element("Value", std::to_string(i)) + "</EnumEntry>";
    }
    return Raw(xml + Element("Value", "0") + "</Enumeration>");
}

DescriptionText& DescriptionText::Command(const std::string& name, std::int64_t address) {
    return Raw("<Command Name=\"" + name + "\">" + Element("pValue", name + "Reg") +
               Element("CommandValue", "1") + "</Command><IntReg Name=\"" + name + "Reg\">" +
               Element("Address", std::to_string(address)) + Element("Length", "4") +
               Element("AccessMode", "WO") + Element("pPort", "Device") + Element("Sign", "Unsigned") +
               Element("Endianess", "LittleEndian") + "</IntReg>");
}

DescriptionText& DescriptionText::Raw(const std::string& xml) {
    m_body += xml;
    return *this;
}

std::shared_ptr<INodeMap> DescriptionText::Build(std::shared_ptr<IPort> port) const {
    return CreateNodeMap(
        "<?xml version=\"1.0\"?><RegisterDescription ModelName=\"Fake\" VendorName=\"Altrona\" "
        "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
        "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" "
        "SubMinorVersion=\"0\" xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">" +
            m_body + "<Port Name=\"Device\"/></RegisterDescription>",
        std::move(port));
}

void RecordingPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    m_memory->Read(buffer, address, length);
}

void RecordingPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    std::int64_t value = 0;
    std::memcpy(&value, buffer, static_cast<std::size_t>(std::min<std::int64_t>(length, sizeof value)));
    writes.push_back({address, value});
    m_memory->Write(buffer, address, length);
}

FakeCamera::FakeCamera(const FakeCameraSetup& setup) : m_serial(setup.serial) {
    DescriptionText text;
    text.String("DeviceDisplayName", setup.model + " (" + std::to_string(setup.serial) + ")")
        .String("DeviceModelName", setup.model)
        .String("DeviceSerialNumber", std::to_string(setup.serial))
        .String("DeviceID", "ID-" + std::to_string(setup.serial))
        .String("DeviceVendorName", "Altrona")
        .String("DeviceInstanceId", "instance")
        .String("DeviceVersion", "1.5")
        .String("DeviceFirmwareVersion", "2.7")
        .String("DeviceDriverVersion", "none")
        .Enumeration("DeviceCurrentSpeed", {"Gigabit"})
        .Enumeration("DeviceAccessStatus", {"OpenReadWrite"})
        .Enumeration("DeviceType", {setup.gigE ? "GigEVision" : "USB3Vision"})
        .Boolean("GevDeviceIsWrongSubnet", setup.wrongSubnet);
    if (setup.gigE) {
        text.Integer("GevDeviceIPAddress", setup.ipAddress, true)
            .Command("GevDeviceAutoForceIP", kForceIpAddress);
    }
    m_tlDeviceMap = text.Build(port);
}

INodeMap& FakeCamera::GetNodeMap() {
    if (!nodeMap) {
        throw Exception(Error::NotInitialized, "the test gave this camera no features");
    }
    return *nodeMap;
}

FakeInterface::FakeInterface(const std::string& id, const std::string& displayName, bool gigE) : m_id(id) {
    DescriptionText text;
    text.String("InterfaceID", id)
        .String("InterfaceDisplayName", displayName)
        .Enumeration("InterfaceType", {gigE ? "GigEVision" : "USB3Vision"});
    if (gigE) {
        text.Integer("GevInterfaceSubnetIPAddress", 0xA9FE0A01, true)
            .Command("GevDeviceAutoForceIP", kForceIpAddress)
            .Raw("<Integer Name=\"DeviceSelector\"><pValue>DeviceSelectorReg</pValue></Integer>"
                 "<IntReg Name=\"DeviceSelectorReg\"><Address>" +
                 std::to_string(kDeviceSelectorAddress) +
                 "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
                 "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>");
    }
    m_tlMap = text.Build(port);
}

std::shared_ptr<FakeCamera> FakeInterface::Add(const FakeCameraSetup& setup) {
    cameras.push_back(std::make_shared<FakeCamera>(setup));
    return cameras.back();
}

CameraList FakeInterface::GetCameras(bool) {
    std::vector<CameraPtr> handles;
    for (const auto& camera : cameras) {
        handles.emplace_back(camera);
    }
    return CameraList(handles);
}

std::shared_ptr<FakeInterface> FakeSystem::Add(const std::string& id, const std::string& displayName,
                                               bool gigE) {
    interfaces.push_back(std::make_shared<FakeInterface>(id, displayName, gigE));
    return interfaces.back();
}

InterfaceList FakeSystem::GetInterfaces(bool) {
    std::vector<InterfacePtr> handles;
    for (const auto& interface : interfaces) {
        handles.emplace_back(interface);
    }
    return InterfaceList(handles);
}

CameraPtr HandleOf(const std::shared_ptr<FakeCamera>& camera) {
    return CameraPtr(camera);
}

InterfacePtr HandleOf(const std::shared_ptr<FakeInterface>& interface) {
    return InterfacePtr(interface);
}
