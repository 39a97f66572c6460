#include "transport/emulator/FileStore.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {

FileStore::Result FileStore::Open(File file, OpenMode mode, bool toFlash) {
    if (IsOpen(file) || (mode != OpenMode::Read && file == ReadOnlyFile)) {
        return {};
    }
    if (mode == OpenMode::Read && !Find(file)) {
        return {};
    }
    if (mode != OpenMode::Read) {
        // Writing alone starts with an empty file.
        Content start = mode == OpenMode::ReadWrite && Find(file) ? *Find(file) : Content();
        Files& files = toFlash ? m_flash : m_memory;
        const std::uint64_t others = Used(files) - (files[file] ? files[file]->size() : 0);
        if (others + start.size() > Capacity(toFlash)) {
            return {};
        }
        files[file] = std::move(start);
        if (toFlash) {
            m_memory[file].reset(); // it covers no longer what goes to flash
        }
    }
    m_open[file] = Opened{mode, toFlash};
    return {Status::Success, 0};
}

FileStore::Result FileStore::Close(File file) {
    if (!IsOpen(file)) {
        return {};
    }
    m_open[file].reset();
    return {Status::Success, 0};
}

FileStore::Result FileStore::Read(File file, std::uint64_t offset, std::uint64_t length,
                                  std::uint8_t* to) const {
    const Content* content = Find(file);
    if (!IsOpen(file) || m_open[file]->mode == OpenMode::Write || !content || offset > content->size()) {
        return {};
    }
    const std::uint64_t bytes = std::min<std::uint64_t>(length, content->size() - offset);
    if (file == FailingFile && offset + bytes > kFailAt) {
        return {};
    }
    std::copy_n(content->begin() + static_cast<std::ptrdiff_t>(offset), bytes, to);
    return {Status::Success, bytes};
}

FileStore::Result FileStore::Write(File file, std::uint64_t offset, std::uint64_t length,
                                   const std::uint8_t* from) {
    if (!IsOpen(file) || m_open[file]->mode == OpenMode::Read) {
        return {};
    }
    Files& files = m_open[file]->toFlash ? m_flash : m_memory;
    Content& content = *files[file];
    if (offset > content.size() || (file == FailingFile && offset + length > kFailAt)) {
        return {};
    }
    const std::uint64_t room = Capacity(m_open[file]->toFlash) - Used(files) + (content.size() - offset);
    const std::uint64_t bytes = std::min(length, room);
    content.resize(std::max<std::size_t>(content.size(), offset + bytes));
    std::copy_n(from, bytes, content.begin() + static_cast<std::ptrdiff_t>(offset));
    return {bytes == length ? Status::Success : Status::Failure, bytes};
}

FileStore::Result FileStore::Delete(File file) {
    if (IsOpen(file) || file == ReadOnlyFile || !Find(file)) {
        return {};
    }
    m_flash[file].reset();
    m_memory[file].reset();
    return {Status::Success, 0};
}

std::uint64_t FileStore::Size(File file) const {
    const Content* content = Find(file);
    return content ? content->size() : 0;
}

const FileStore::Content* FileStore::Find(File file) const {
    static const Content kCalibration = [] {
        Content content(3001); // no multiple of four, and of more than one access
        for (std::size_t i = 0; i < content.size(); ++i) {
            content[i] = static_cast<std::uint8_t>(i * 31 + (i >> 8));
        }
        return content;
    }();
    if (file == ReadOnlyFile) {
        return &kCalibration;
    }
    if (m_memory[file]) {
        return &*m_memory[file];
    }
    return m_flash[file] ? &*m_flash[file] : nullptr;
}

std::uint64_t FileStore::Used(const Files& files) {
    std::uint64_t used = 0;
    for (const auto& content : files) {
        used += content ? content->size() : 0;
    }
    return used;
}

} // namespace Norvane::Transport::Emulator
