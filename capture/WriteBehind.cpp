#include "WriteBehind.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace {

/// Enough for a disk to be busy without pause, little beside the memory of any machine.
constexpr off_t kDistance = off_t{64} << 20U;
/// Smaller pieces come too slowly to fill a cache.
constexpr off_t kSmallestPiece = off_t{1} << 20U;
constexpr off_t kPage = 4096;

} // namespace

class WriteBehind::File {
public:
    explicit File(std::string path)
        : m_path(std::move(path)), m_file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~File() {
        if (m_file >= 0) {
            close(m_file);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::string& Path() const { return m_path; }

    /// The whole pages that were written since the last call, on their way to the disk now.
    std::pair<off_t, off_t> BeginNew() {
        struct stat status {};
        if (m_file < 0 || fstat(m_file, &status) != 0) {
            return {};
        }
        const off_t begin = m_begun;
        const off_t size = status.st_size / kPage * kPage - begin;
        if (size < kSmallestPiece || sync_file_range(m_file, begin, size, SYNC_FILE_RANGE_WRITE) != 0) {
            return {};
        }
        m_begun += size;
        return {begin, size};
    }

    void Finish(off_t begin, off_t size) {
        sync_file_range(m_file, begin, size,
                        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
        posix_fadvise(m_file, begin, size, POSIX_FADV_DONTNEED);
    }

private:
    std::string m_path;
    int m_file;
    off_t m_begun = 0;
};

WriteBehind::WriteBehind() = default;
WriteBehind::~WriteBehind() = default;

void WriteBehind::Written(const std::string& path) {
    if (!m_newest || m_newest->Path() != path) {
        m_newest = std::make_shared<File>(path);
    }
    const auto [begin, size] = m_newest->BeginNew();
    if (size > 0) {
        m_onTheirWay.push_back({m_newest, begin, size});
        m_bytes += size;
    }
    while (m_bytes > kDistance) {
        FinishOldest();
    }
}

void WriteBehind::FinishOldest() {
    const Piece oldest = std::exchange(m_onTheirWay.front(), {});
    m_onTheirWay.pop_front();
    m_bytes -= oldest.size;
    oldest.file->Finish(oldest.begin, oldest.size);
}

void WriteBehind::Release() {
    m_onTheirWay.clear();
    m_bytes = 0;
    m_newest.reset();
}
