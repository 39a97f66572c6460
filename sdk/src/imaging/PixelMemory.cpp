#include "imaging/PixelMemory.h"

#include "base/Mutex.h"
#include "imaging/HugePages.h"
#include "norvane/Exception.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace Norvane::Imaging {
namespace {

constexpr std::size_t kAlignment = 4096;
constexpr std::size_t kMostKeptBytes = std::size_t{128} << 20;
constexpr std::size_t kMostKeptBlocks = 8;

struct Block {
    std::uint8_t* memory;
    std::size_t size;
};

bool IsHuge(std::size_t size) {
    return size >= kHugePage;
}

/// @param size  as AllocatePixels rounds it.
std::uint8_t* NewBlock(std::size_t size) {
    return static_cast<std::uint8_t*>(IsHuge(size) ? MapHugePages(size)
                                                   : std::aligned_alloc(kAlignment, size));
}

void FreeBlock(const Block& block) {
    if (IsHuge(block.size)) {
        UnmapHugePages(block.memory, block.size);
    } else {
        std::free(block.memory);
    }
}

/// Blocks that nobody uses, the latest at the back.
class Store {
public:
    ~Store() {
        for (const Block& block : m_blocks) {
            FreeBlock(block);
        }
    }

    std::uint8_t* Take(std::size_t size) {
        MutexLock lock(m_mutex);
        const auto found = std::find_if(m_blocks.rbegin(), m_blocks.rend(),
                                        [size](const Block& block) { return block.size == size; });
        if (found == m_blocks.rend()) {
            return nullptr;
        }
        std::uint8_t* memory = found->memory;
        m_bytes -= size;
        m_blocks.erase(std::next(found).base());
        return memory;
    }

    void Give(Block block) {
        std::vector<Block> tooMany;
        {
            MutexLock lock(m_mutex);
            m_blocks.push_back(block);
            m_bytes += block.size;
            while (!m_blocks.empty() && (m_bytes > kMostKeptBytes || m_blocks.size() > kMostKeptBlocks)) {
                m_bytes -= m_blocks.front().size;
                tooMany.push_back(m_blocks.front());
                m_blocks.erase(m_blocks.begin());
            }
        }
        for (const Block& old : tooMany) {
            FreeBlock(old);
        }
    }

private:
    Mutex m_mutex;
    std::vector<Block> m_blocks GUARDED_BY(m_mutex);
    std::size_t m_bytes GUARDED_BY(m_mutex) = 0;
};

/// Shared by all blocks, so that one which outlives the program's statics still finds it.
const std::shared_ptr<Store>& TheStore() {
    static const auto store = std::make_shared<Store>();
    return store;
}

} // namespace

std::shared_ptr<std::uint8_t> AllocatePixels(std::size_t size) {
    const std::shared_ptr<Store>& store = TheStore();
    const std::size_t unit = IsHuge(size) ? kHugePage : kAlignment;
    const std::size_t rounded = (std::max<std::size_t>(size, 1) + unit - 1) / unit * unit;
    std::uint8_t* memory = size <= SIZE_MAX - unit ? store->Take(rounded) : nullptr;
    if (!memory && size <= SIZE_MAX - unit) {
        memory = NewBlock(rounded);
    }
    if (!memory) {
        throw Exception(Error::OutOfMemory, "No memory for an image of " + std::to_string(size) + " bytes");
    }
    return std::shared_ptr<std::uint8_t>(memory, [store, rounded](std::uint8_t* p) {
        store->Give({p, rounded});
    });
}

} // namespace Norvane::Imaging
