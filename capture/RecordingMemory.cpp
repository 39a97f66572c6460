#include "RecordingMemory.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstring>
#include <new>

namespace {

constexpr std::size_t kBlocksAhead = 8;
constexpr std::size_t kPage = 4096;
#ifdef MADV_POPULATE_WRITE
constexpr int kPopulateForWriting = MADV_POPULATE_WRITE;
#else
constexpr int kPopulateForWriting = 23; // Linux 5.14
#endif

} // namespace

RecordingMemory::RecordingMemory() = default;

RecordingMemory::~RecordingMemory() {
    {
        const std::lock_guard lock(m_store->mutex);
        m_store->isClosed = true;
    }
    m_store->changed.notify_all();
    if (m_toucher.joinable()) {
        m_toucher.join();
    }
}

RecordingMemory::Store::~Store() {
    for (const Block& block : idle) {
        Free(block);
    }
}

RecordingMemory::Block RecordingMemory::Allocate(std::size_t size) {
    // Ordinary pages: virtual machines hand large free ones back to their host, from which the next use of
    // 5 MB takes 20 ms to fetch them, while small ones stay.
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return {static_cast<std::uint8_t*>(memory), size};
}

void RecordingMemory::Touch(Block block) {
    // One call for all pages takes two thirds of a fault each.
    if (madvise(block.memory, block.size, kPopulateForWriting) == 0) {
        return;
    }
    for (std::size_t at = 0; at < block.size; at += kPage) {
        static_cast<volatile std::uint8_t*>(block.memory)[at] = 0;
    }
}

void RecordingMemory::Free(Block block) {
    munmap(block.memory, block.size);
}

void RecordingMemory::Give(Store& store, Block block) {
    {
        const std::lock_guard lock(store.mutex);
        if (block.size == store.wanted && !store.isClosed) {
            store.idle.push_back(block);
            return;
        }
    }
    Free(block);
}

RecordingMemory::Block RecordingMemory::Take(std::size_t size) {
    std::vector<Block> outgrown;
    Block block;
    {
        const std::lock_guard lock(m_store->mutex);
        if (m_store->wanted != size) {
            m_store->wanted = size;
            outgrown.swap(m_store->idle);
        }
        if (!m_store->idle.empty()) {
            block = m_store->idle.back(); // the latest, which the caches know best
            m_store->idle.pop_back();
        }
        if (!m_toucher.joinable()) {
            m_toucher = std::thread(TouchAhead, m_store);
        }
    }
    m_store->changed.notify_all();
    for (const Block& old : outgrown) {
        Free(old);
    }
    if (!block.memory) {
        block = Allocate(size);
        Touch(block);
    }
    return block;
}

void RecordingMemory::TouchAhead(const std::shared_ptr<Store>& store) {
    std::unique_lock lock(store->mutex);
    for (;;) {
        store->changed.wait(lock, [&] {
            return store->isClosed || (store->wanted != 0 && store->idle.size() < kBlocksAhead);
        });
        if (store->isClosed) {
            return;
        }
        const std::size_t size = store->wanted;
        lock.unlock();
        Block block;
        try {
            block = Allocate(size);
            Touch(block);
        } catch (const std::bad_alloc&) {
            // The camera's thread meets the same and says so.
        }
        lock.lock();
        if (!block.memory) {
            store->wanted = 0;
        } else if (size == store->wanted) {
            store->idle.push_back(block);
        } else {
            Free(block);
        }
    }
}

Norvane::ImagePtr RecordingMemory::Copy(const Norvane::ImagePtr& image, Norvane::PixelFormatEnums format) {
    const std::uint64_t size = Norvane::PixelFormatImageSize(format, image->GetWidth(), image->GetHeight());
    if (size == 0) { // a format that the library only carries
        Norvane::ImagePtr copy = Norvane::Image::Create();
        copy->DeepCopy(image);
        return copy;
    }
    const Block block = Take(static_cast<std::size_t>(size));
    const std::shared_ptr<std::uint8_t> memory(block.memory,
                                               [store = m_store, size = block.size](std::uint8_t* p) {
                                                   Give(*store, {p, size});
                                               });
    const Norvane::ImagePtr copy =
        Norvane::Image::Create(image->GetWidth(), image->GetHeight(), image->GetXOffset(),
                               image->GetYOffset(), format, memory.get());
    if (format == image->GetPixelFormat() && image->GetImageSize() == size && image->GetData()) {
        // Not by the library's row workers: the camera's thread would wait for whichever is put off the
        // longest.
        std::memcpy(block.memory, image->GetData(), static_cast<std::size_t>(size));
    } else {
        image->Convert(copy);
    }
    return Norvane::ImagePtr(
        std::shared_ptr<Norvane::IImage>(copy.get(), [copy, memory](Norvane::IImage*) {}));
}

void RecordingMemory::Release() {
    std::vector<Block> idle;
    {
        const std::lock_guard lock(m_store->mutex);
        m_store->wanted = 0;
        idle.swap(m_store->idle);
    }
    for (const Block& block : idle) {
        Free(block);
    }
    // A video's encoder held frames by the hundred; what lives on between them would keep the C library from
    // giving their pages back.
    malloc_trim(0);
}
