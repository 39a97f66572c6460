#pragma once

#include "genapi/LookAhead.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Norvane::GenApi {

/// Finds the indices of a list's elements by hashes of what the elements hold, names for one. Open addressing
/// in one block of memory: a look-up mostly touches one cache line of it and then only the element it is
/// about. The list itself belongs to the caller, who also compares.
class IndexTable {
public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

    /// Makes room for so many elements without growing.
    void Reserve(std::size_t elements) {
        const auto slots = std::bit_ceil(std::max<std::size_t>(elements + elements / 2, 16));
        if (slots > m_slots.size()) {
            Resize(slots);
        }
    }

    /// The index for which `same(index)` is true among those inserted with this hash; kNone when there is
    /// none.
    template <class Same>
    std::uint32_t Find(std::uint64_t hash, Same&& same) const {
        if (m_slots.empty()) {
            return kNone;
        }
        const auto tag = TagOf(hash);
        const auto mask = m_slots.size() - 1;
        for (auto at = tag & mask; m_slots[at].index != kNone; at = (at + 1) & mask) {
            if (m_slots[at].tag == tag && same(m_slots[at].index)) {
                return m_slots[at].index;
            }
        }
        return kNone;
    }

    /// Asks for the memory that Find will look at.
    [[gnu::always_inline]] void AskFor(std::uint64_t hash) const {
        if (!m_slots.empty()) {
            GenApi::AskFor(&m_slots[TagOf(hash) & (m_slots.size() - 1)]);
        }
    }
    /// What Find most probably gives, without a look at the element.
    std::uint32_t Guess(std::uint64_t hash) const {
        return Find(hash, [](std::uint32_t) { return true; });
    }

    /// Equal hashes may be inserted any number of times.
    void Insert(std::uint64_t hash, std::uint32_t index) {
        Reserve(m_size + 1);
        Put({TagOf(hash), index});
        ++m_size;
    }

    std::size_t Size() const { return m_size; }

private:
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t index = kNone;
    };

    /// Stored with the index, so that growing needs no element and other elements in the way are passed by.
    static std::uint32_t TagOf(std::uint64_t hash) {
        return static_cast<std::uint32_t>((hash * 0x9E3779B97F4A7C15u) >> 32); // spreads addresses as well
    }

    void Put(Slot slot) {
        const auto mask = m_slots.size() - 1;
        auto at = slot.tag & mask;
        while (m_slots[at].index != kNone) {
            at = (at + 1) & mask;
        }
        m_slots[at] = slot;
    }

    void Resize(std::size_t slots) {
        std::vector<Slot> old(slots);
        old.swap(m_slots);
        for (const auto slot : old) {
            if (slot.index != kNone) {
                Put(slot);
            }
        }
    }

    std::vector<Slot> m_slots; ///< a power of two, at most two thirds of them taken
    std::size_t m_size = 0;
};

} // namespace Norvane::GenApi
