#pragma once

#include <algorithm>
#include <cstdint>
#include <memory_resource>
#include <type_traits>

namespace Norvane::GenApi {

/// A list whose elements stand in a map's arena, beside what else belongs to the map, and end with it: it is
/// neither copied with its elements nor destroyed. Grows while the map is loaded.
template <class T>
class ArenaList {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    void Add(std::pmr::memory_resource& arena, const T& element) {
        if (m_size == m_room) {
            m_room = m_room ? 2 * m_room : 1;
            T* const first = std::pmr::polymorphic_allocator<T>(&arena).allocate(m_room);
            std::uninitialized_copy_n(m_first, m_size, first);
            m_first = first;
        }
        std::construct_at(m_first + m_size++, element);
    }
    void Remove(std::uint32_t index) {
        std::copy(m_first + index + 1, m_first + m_size, m_first + index);
        --m_size;
    }

    T* begin() const { return m_first; }
    T* end() const { return m_first + m_size; }
    std::uint32_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T& operator[](std::size_t index) const { return m_first[index]; }
    bool operator==(const ArenaList& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

private:
    T* m_first = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_room = 0;
};

} // namespace Norvane::GenApi
