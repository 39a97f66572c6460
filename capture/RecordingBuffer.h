#pragma once

#include "norvane/Image.h"

#include <atomic>

/// Images on their way from the camera's thread to the disk, oldest first, without limit. One thread pushes,
/// one thread takes; neither ever waits for the other. Destroyed when both are done.
class RecordingBuffer {
public:
    RecordingBuffer();
    ~RecordingBuffer();
    RecordingBuffer(const RecordingBuffer&) = delete;
    RecordingBuffer& operator=(const RecordingBuffer&) = delete;

    /// By the producer.
    void Push(Norvane::ImagePtr image);
    /// By the consumer: takes the oldest image; false when there is none.
    bool Pop(Norvane::ImagePtr& image);
    /// By the consumer.
    bool IsEmpty() const;

private:
    struct Link {
        Norvane::ImagePtr image;
        std::atomic<Link*> next = nullptr;
    };

    // The first link is the one taken last: producer and consumer never touch the same link's image.
    Link* m_taken;
    Link* m_newest;
};
