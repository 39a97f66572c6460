#pragma once

#include <cstddef>
#include <cstdint>

namespace Norvane::Imaging {

/// Working memory of one thread, kept from image to image. A stage takes pieces and gives them back together
/// when its Scratch ends; stages nest. The memory starts zeroed and is aligned for any vector.
class Scratch {
public:
    Scratch() noexcept;
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    template <class T>
    T* Take(std::size_t count) {
        return static_cast<T*>(TakeBytes(count * sizeof(T)));
    }

private:
    void* TakeBytes(std::size_t bytes);

    std::size_t m_block, m_used;
};

} // namespace Norvane::Imaging
