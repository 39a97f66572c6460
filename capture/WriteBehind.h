#pragma once

#include <sys/types.h>

#include <deque>
#include <memory>
#include <string>

/// Sees what a long run has written to the disk while the run goes on, and takes it out of the system's file
/// cache.
///
/// Left alone, the system keeps gigabytes of written images before it begins to store them, and then holds up
/// whoever writes. Until then each image also takes new memory, which costs a virtual machine ten times the
/// copy: a run of 5 Mpixel at 200 images a second spends a whole processor on it. So the writes are followed
/// at a short distance, and the next image gets the pages that the last ones left. One thread at a time.
class WriteBehind {
public:
    WriteBehind();
    ~WriteBehind();
    WriteBehind(const WriteBehind&) = delete;
    WriteBehind& operator=(const WriteBehind&) = delete;

    /// `path` is complete, or has grown since the last call. Waits for the disk while it is further behind
    /// than the distance. Errors are the writer's to find: nothing is done about a file that cannot be read.
    void Written(const std::string& path);
    /// Lets go of all files; what is not on the disk yet gets there in the system's own time.
    void Release();

private:
    class File;
    struct Piece {
        std::shared_ptr<File> file;
        off_t begin = 0, size = 0;
    };
    void FinishOldest();

    std::shared_ptr<File> m_newest;
    std::deque<Piece> m_onTheirWay; // oldest first
    off_t m_bytes = 0;              // of them all
};
