#pragma once

#include <string_view>

/// The descriptions of the library's own node maps, compiled in from descriptions/*.xml.
namespace Norvane::Core {

extern const std::string_view kDeviceInformationXml;
extern const std::string_view kInterfaceInformationXml;
extern const std::string_view kStreamParametersXml;

} // namespace Norvane::Core
