#include "core/DeviceMaps.h"

#include "norvane/Exception.h"
#include "norvane/Log.h"

#include <cstdlib>

namespace Norvane::Core {
namespace {

/// What a camera whose description cannot be read shows: a root without features.
constexpr std::string_view kEmptyDescription =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription ModelName="Unknown" VendorName="Unknown" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="6f0a2d51-3c1e-4b53-9d0e-5b1f0c7e1a00" VersionGuid="6f0a2d51-3c1e-4b53-9d0e-5b1f0c7e1a00"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
    <Category Name="Root" NameSpace="Standard"/>
    <Port Name="Device" NameSpace="Standard"/>
</RegisterDescription>
)";

/// The audit of all cameras' maps, for whoever doubts that a description tells what changes what; null unless
/// the environment asks for it.
GenApi::CacheAudit* WantedAudit() {
    static GenApi::CacheAudit audit;
    static const bool wanted = std::getenv("NORVANE_CACHE_AUDIT") != nullptr;
    return wanted ? &audit : nullptr;
}

std::shared_ptr<GenApi::INodeMap> MakeMap(const std::string& deviceName, const std::string& description,
                                          const std::shared_ptr<GenApi::IPort>& port) {
    GenApi::NodeMapOptions options;
    options.deviceName = deviceName;
    options.cacheAudit = WantedAudit();
    try {
        return GenApi::CreateNodeMap(description, port, options);
    } catch (const Exception& error) {
        Log(LogLevel::Error,
            deviceName +
                " is shown without features because its description cannot be read: " + error.what());
        return GenApi::CreateNodeMap(kEmptyDescription, port, options);
    }
}

} // namespace

DeviceMaps::Entry DeviceMaps::Connect(const std::string& deviceName,
                                      const std::shared_ptr<Transport::IDevice>& device) {
    std::string description = device->Description();
    for (const Known& known : m_known) {
        if (known.description == description) {
            known.entry.port->Switch(device);
            known.entry.map->InvalidateNodes();
            return known.entry;
        }
    }
    Entry entry;
    entry.port = std::make_shared<SwitchablePort>();
    entry.port->Switch(device);
    entry.map = MakeMap(deviceName, description, entry.port);
    m_known.push_back({std::move(description), entry});
    return entry;
}

} // namespace Norvane::Core
