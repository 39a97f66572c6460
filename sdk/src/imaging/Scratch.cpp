#include "imaging/Scratch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace Norvane::Imaging {
namespace {

constexpr std::size_t kAlignment = 128;
constexpr std::size_t kSmallestBlock = std::size_t{1} << 18;

struct FreeBlock {
    void operator()(std::uint8_t* block) const noexcept { std::free(block); }
};

struct Block {
    std::unique_ptr<std::uint8_t, FreeBlock> memory;
    std::size_t size;
};

/// Blocks of one thread, filled in order; pieces never move.
struct Arena {
    std::vector<Block> blocks;
    std::size_t block = 0, used = 0;
};

thread_local Arena t_arena;

} // namespace

Scratch::Scratch() noexcept : m_block(t_arena.block), m_used(t_arena.used) {}

Scratch::~Scratch() {
    t_arena.block = m_block;
    t_arena.used = m_used;
}

void* Scratch::TakeBytes(std::size_t bytes) {
    Arena& arena = t_arena;
    bytes = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    while (arena.block < arena.blocks.size() && arena.blocks[arena.block].size - arena.used < bytes) {
        ++arena.block;
        arena.used = 0;
    }
    if (arena.block == arena.blocks.size()) {
        const std::size_t size = std::max(bytes, kSmallestBlock);
        auto* memory = static_cast<std::uint8_t*>(std::aligned_alloc(kAlignment, size));
        if (!memory) {
            throw std::bad_alloc();
        }
        std::memset(memory, 0, size);
        arena.blocks.push_back({std::unique_ptr<std::uint8_t, FreeBlock>(memory), size});
        arena.used = 0;
    }
    void* piece = arena.blocks[arena.block].memory.get() + arena.used;
    arena.used += bytes;
    return piece;
}

} // namespace Norvane::Imaging
