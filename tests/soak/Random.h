#pragma once

#include <random>

/// The dice of a run: the same seed rolls the same numbers on every machine.
class Random {
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    /// 0 to `count` - 1. @param count  at least 1.
    int Below(int count) { return static_cast<int>(m_engine() % static_cast<unsigned int>(count)); }
    bool OneIn(int count) { return Below(count) == 0; }
    template <class List>
    const auto& Pick(const List& list) {
        return list[static_cast<decltype(list.size())>(Below(static_cast<int>(list.size())))];
    }

private:
    std::mt19937 m_engine;
};
