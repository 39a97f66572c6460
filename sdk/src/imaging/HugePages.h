#pragma once

#include <cstddef>

namespace Norvane::Imaging {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// Memory of `size` bytes, a multiple of kHugePage and so aligned, which the system is asked to give in huge
/// pages. It lies outside of the heap: a piece of the heap that was once asked for in huge pages would keep
/// that for good, and cost 2 MiB for whichever small block comes to lie there. Zeros; null where there is no
/// memory. Any thread.
void* MapHugePages(std::size_t size) noexcept;
/// Gives it back to the system.
void UnmapHugePages(void* memory, std::size_t size) noexcept;

} // namespace Norvane::Imaging
