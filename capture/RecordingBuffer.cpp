#include "RecordingBuffer.h"

#include <utility>

RecordingBuffer::RecordingBuffer() : m_taken(new Link), m_newest(m_taken) {}

RecordingBuffer::~RecordingBuffer() {
    while (m_taken) {
        delete std::exchange(m_taken, m_taken->next.load(std::memory_order_acquire));
    }
}

void RecordingBuffer::Push(Norvane::ImagePtr image) {
    Link* link = new Link;
    link->image = std::move(image);
    m_newest->next.store(link, std::memory_order_release);
    m_newest = link;
}

bool RecordingBuffer::Pop(Norvane::ImagePtr& image) {
    Link* oldest = m_taken->next.load(std::memory_order_acquire);
    if (!oldest) {
        return false;
    }
    image = std::exchange(oldest->image, nullptr);
    delete std::exchange(m_taken, oldest);
    return true;
}

bool RecordingBuffer::IsEmpty() const {
    return m_taken->next.load(std::memory_order_acquire) == nullptr;
}
