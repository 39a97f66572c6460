#include "genapi/LargePages.h"

#include <sys/mman.h>

#include <cstdint>

namespace Norvane::GenApi {

namespace {

constexpr std::uintptr_t kPage = 4096;
constexpr std::size_t kLargePage = 2 << 20;

} // namespace

void* LargePages::do_allocate(std::size_t bytes, std::size_t alignment) {
    void* const memory = std::pmr::new_delete_resource()->allocate(bytes, alignment);
    if (bytes >= 2 * kLargePage) {
        const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + kPage - 1) & ~(kPage - 1);
        const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(kPage - 1);
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE); // a wish; nothing hangs on it
    }
    return memory;
}

void LargePages::do_deallocate(void* memory, std::size_t bytes, std::size_t alignment) {
    std::pmr::new_delete_resource()->deallocate(memory, bytes, alignment);
}

} // namespace Norvane::GenApi
