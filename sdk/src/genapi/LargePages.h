#pragma once

#include <memory_resource>

namespace Norvane::GenApi {

/// Memory from the heap, in large pages where it is so much that they fit: a large map is built and walked
/// with far fewer page faults and address translations. The heap keeps what one map gave back for the next;
/// mapped anew each time, the zeroing by the kernel would cost a tenth of the building.
class LargePages final : public std::pmr::memory_resource {
    void* do_allocate(std::size_t bytes, std::size_t alignment) override;
    void do_deallocate(void* memory, std::size_t bytes, std::size_t alignment) override;
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

} // namespace Norvane::GenApi
