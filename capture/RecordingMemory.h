#pragma once

#include "norvane/Image.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Memory for the images of a buffered recording. Taking an image must cost the camera's thread a copy and no
/// more, while fresh memory costs several times that on its first touch: so a thread of this class touches
/// blocks ahead of need, and the blocks of images that were written are used again until Release(). Copies
/// keep what they need alive. Owned by the recorder.
class RecordingMemory {
public:
    RecordingMemory();
    ~RecordingMemory();
    RecordingMemory(const RecordingMemory&) = delete;
    RecordingMemory& operator=(const RecordingMemory&) = delete;

    /// By the camera's thread: a copy of `image` in `format`, in memory of its own.
    /// @throws Norvane::Exception, std::bad_alloc.
    Norvane::ImagePtr Copy(const Norvane::ImagePtr& image, Norvane::PixelFormatEnums format);
    /// Gives memory that no image uses back to the system, and what the whole program has freed. Any thread
    /// that may take some milliseconds.
    void Release();

private:
    struct Block {
        std::uint8_t* memory = nullptr;
        std::size_t size = 0;
    };
    /// Outlives this object for as long as a copy is around.
    struct Store {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<Block> idle;
        std::size_t wanted = 0; ///< bytes of the blocks in use now, 0 while nothing is recorded
        bool isClosed = false;

        ~Store();
    };

    static Block Allocate(std::size_t size);
    static void Touch(Block block);
    static void Free(Block block);
    static void Give(Store& store, Block block);
    static void TouchAhead(const std::shared_ptr<Store>& store);
    Block Take(std::size_t size);

    std::shared_ptr<Store> m_store = std::make_shared<Store>();
    std::thread m_toucher;
};
