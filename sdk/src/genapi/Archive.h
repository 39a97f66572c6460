#pragma once

#include <string>
#include <string_view>

namespace Norvane::GenApi {

/// Whether a description file is a zip archive.
bool IsArchive(std::string_view file);

/// The XML text of a description file: the text itself, or the first ".xml" entry of a zip archive.
/// @throws Exception (FileFormat) for an archive that is damaged, holds no XML or unpacks to more than 256
/// MB.
std::string DescriptionText(std::string_view file);

} // namespace Norvane::GenApi
