#pragma once

#include <atomic>

namespace Norvane::GenApi {

/// A plain value that is written with the node map's lock held and may be read without it. Whoever sees a
/// value sees everything that was published before it.
template <class T>
class Published {
public:
    Published(T value = {}) noexcept : m_value(value) {}
    Published(const Published& other) noexcept : m_value(static_cast<T>(other)) {}
    Published& operator=(const Published& other) noexcept { return *this = static_cast<T>(other); }
    Published& operator=(T value) noexcept {
        m_value.store(value, std::memory_order_release);
        return *this;
    }
    operator T() const noexcept { return m_value.load(std::memory_order_acquire); }

private:
    std::atomic<T> m_value;
};

} // namespace Norvane::GenApi
