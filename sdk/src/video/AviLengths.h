#pragma once

#include <cstdint>
#include <string>

namespace Norvane::Video {

/// Writes the present lengths into the header of an AVI file that is still being written, so that it is a
/// whole file at any time: the sizes of its first RIFF and of the frame list in it, and the number of frames
/// (Microsoft's AVI RIFF File Reference: RIFF, LIST movi, avih, strh). Nothing happens to a file that has no
/// such header, or whose first RIFF is complete already.
void PatchAviLengths(const std::string& fileName, std::int64_t frames, std::int64_t bytes);

} // namespace Norvane::Video
