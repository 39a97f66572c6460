#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Norvane::Imaging {

/// Memory for the pixels of one image. Blocks come back to a small store when the last owner drops them, so
/// that a run of images of one size works in the same touched pages: fresh ones cost more than a conversion.
/// The content is unspecified. Any thread.
/// @throws Exception (OutOfMemory).
std::shared_ptr<std::uint8_t> AllocatePixels(std::size_t size);

} // namespace Norvane::Imaging
