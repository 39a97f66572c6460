#pragma once

#include "base/Mutex.h"
#include "transport/emulator/Acquisition.h"

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The emulator's own thread: it tells of changes of one file and runs what is posted to it. The file's
/// folder is watched, so that an editor that writes another file and renames it is noticed, and that the file
/// need not exist yet. Owned by the transport; ends its thread in the destructor.
class FileWatcher {
public:
    /// `onChange` runs on the thread after the file was written, moved, created or deleted, once things have
    /// been quiet for a moment.
    FileWatcher(const std::string& path, std::function<void()> onChange);
    ~FileWatcher();
    FileWatcher(const FileWatcher&) = delete;
    FileWatcher& operator=(const FileWatcher&) = delete;

    /// Runs a task on the thread, in order of time. Any thread. Tasks left at the end are dropped.
    void Post(std::function<void()> task, Clock::duration delay = {});

private:
    struct Task {
        Clock::time_point due;
        std::function<void()> run;
    };

    void Run();
    void WatchFolder();
    void ReadEvents();
    int MillisecondsToWait() EXCLUDES(m_mutex);

    const std::string m_folder, m_name;
    const std::function<void()> m_onChange;
    int m_inotify = -1, m_wake = -1;
    int m_watch = -1;
    bool m_watchesFolder = false; ///< false: it does not exist yet, and its nearest ancestor is watched
    std::optional<Clock::time_point> m_changeDue; ///< when the change is to be told
    Mutex m_mutex;
    std::vector<Task> m_tasks GUARDED_BY(m_mutex);
    bool m_stop GUARDED_BY(m_mutex) = false;
    std::thread m_thread;
};

} // namespace Norvane::Transport::Emulator
