#include "imaging/HugePages.h"

#include <sys/mman.h>

#include <cstdint>

namespace Norvane::Imaging {

void* MapHugePages(std::size_t size) noexcept {
    if (size > SIZE_MAX - kHugePage) {
        return nullptr;
    }
    void* const mapped =
        mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    // Only the aligned part stays.
    auto* const begin = static_cast<std::uint8_t*>(mapped);
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(mapped) % kHugePage) % kHugePage;
    if (before > 0) {
        munmap(begin, before);
    }
    munmap(begin + before + size, kHugePage - before);
    madvise(begin + before, size, MADV_HUGEPAGE); // a wish; nothing hangs on it
    return begin + before;
}

void UnmapHugePages(void* memory, std::size_t size) noexcept {
    munmap(memory, size);
}

} // namespace Norvane::Imaging
