#include "imaging/Save/FileWriter.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Norvane::Imaging {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 18;

std::string ResolveLinks(const std::string& fileName) {
    if (char* resolved = ::realpath(fileName.c_str(), nullptr)) {
        std::string path = resolved;
        std::free(resolved);
        return path;
    }
    return fileName;
}

std::string TemporaryBeside(const std::string& path) {
    static std::atomic<unsigned> s_counter{0};
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".norvane-" + std::to_string(::getpid()) + "-" + std::to_string(++s_counter) + ".tmp";
}

} // namespace

FileWriter::FileWriter(const char* fileName) : m_name(fileName ? fileName : "") {
    if (m_name.empty()) {
        throw Exception(Error::InvalidParameter, "Save: the file name is empty");
    }
    m_path = ResolveLinks(m_name);
    struct stat status {};
    const bool exists = ::stat(m_path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        Throw("cannot be written", EISDIR);
    }
    if (exists && !S_ISREG(status.st_mode)) {
        m_file = ::open(m_path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        if (exists && ::access(m_path.c_str(), W_OK) != 0) {
            Throw("cannot be overwritten", errno);
        }
        do {
            m_temporary = TemporaryBeside(m_path);
            m_file = ::open(m_temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (m_file < 0 && errno == EEXIST);
    }
    if (m_file < 0) {
        const int reason = errno;
        m_temporary.clear();
        Throw("cannot be created", reason);
    }
    m_buffer.reserve(kBufferSize);
}

FileWriter::~FileWriter() {
    if (m_file >= 0) {
        ::close(m_file);
        if (!m_temporary.empty()) {
            ::unlink(m_temporary.c_str());
        }
    }
}

void FileWriter::Throw(const char* what, int reason) const {
    throw Exception(Error::Io, "The file \"" + m_name + "\" " + what + ": " +
                                   std::error_code(reason, std::system_category()).message());
}

bool FileWriter::WriteOut(const std::uint8_t* data, std::size_t size) noexcept {
    while (size > 0 && m_reason == 0) {
        const ssize_t written = ::write(m_file, data, size);
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            m_reason = written == 0 ? ENOSPC : errno;
        }
    }
    return m_reason == 0;
}

bool FileWriter::Flush() noexcept {
    const bool ok = WriteOut(reinterpret_cast<const std::uint8_t*>(m_buffer.data()), m_buffer.size());
    m_buffer.clear();
    return ok;
}

bool FileWriter::TryWrite(const void* data, std::size_t size) noexcept {
    if (m_reason != 0) {
        return false;
    }
    if (m_buffer.size() + size > kBufferSize && !Flush()) {
        return false;
    }
    if (size >= kBufferSize) {
        if (!WriteOut(static_cast<const std::uint8_t*>(data), size)) {
            return false;
        }
    } else {
        m_buffer.append(static_cast<const char*>(data), size);
    }
    m_position += size;
    m_size = std::max(m_size, m_position);
    return true;
}

bool FileWriter::TrySeek(std::uint64_t position) noexcept {
    if (position == m_position) {
        return m_reason == 0;
    }
    if (!Flush()) {
        return false;
    }
    if (::lseek(m_file, static_cast<off_t>(position), SEEK_SET) < 0) {
        m_reason = errno;
        return false;
    }
    m_position = position;
    return true;
}

std::size_t FileWriter::TryRead(void* data, std::size_t size) noexcept {
    if (!Flush()) {
        return 0;
    }
    const ssize_t got = ::read(m_file, data, size);
    if (got < 0) {
        return 0;
    }
    m_position += static_cast<std::uint64_t>(got);
    return static_cast<std::size_t>(got);
}

void FileWriter::Write(const void* data, std::size_t size) {
    if (!TryWrite(data, size)) {
        ThrowIfFailed();
    }
}

void FileWriter::ThrowIfFailed() const {
    if (m_reason != 0) {
        Throw("could not be written and was not kept", m_reason);
    }
}

void FileWriter::Commit() {
    Flush();
    if (::close(m_file) != 0 && m_reason == 0) {
        m_reason = errno;
    }
    m_file = -1;
    if (!m_temporary.empty() && m_reason == 0 && ::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
        m_reason = errno;
    }
    if (m_reason != 0 && !m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
    }
    ThrowIfFailed();
}

} // namespace Norvane::Imaging
