#include "transport/emulator/FileWatcher.h"

#include "norvane/Log.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace Norvane::Transport::Emulator {
namespace {

/// A save may take several steps; it is looked at when nothing has happened for so long.
constexpr std::chrono::milliseconds kQuiet{20};
/// Some editors delete the file before they write it anew.
constexpr std::chrono::milliseconds kAfterDelete{300};

} // namespace

FileWatcher::FileWatcher(const std::string& path, std::function<void()> onChange)
    : m_folder(std::filesystem::path(path).parent_path()), m_name(std::filesystem::path(path).filename()),
      m_onChange(std::move(onChange)), m_inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      m_wake(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (m_inotify < 0) {
        Log(LogLevel::Warning, "emulator: changes of " + path + " are only noticed once a second (" +
                                   std::strerror(errno) + "); raise fs.inotify.max_user_instances");
    }
    WatchFolder();
    m_thread = std::thread([this] { Run(); });
}

FileWatcher::~FileWatcher() {
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    eventfd_write(m_wake, 1);
    m_thread.join();
    if (m_inotify >= 0) {
        close(m_inotify);
    }
    close(m_wake);
}

void FileWatcher::Post(std::function<void()> task, Clock::duration delay) {
    {
        const MutexLock lock(m_mutex);
        m_tasks.push_back({Clock::now() + delay, std::move(task)});
    }
    eventfd_write(m_wake, 1);
}

void FileWatcher::WatchFolder() {
    if (m_inotify < 0) {
        return;
    }
    constexpr std::uint32_t kEvents =
        IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE | IN_ONLYDIR;
    if (m_watch >= 0) {
        inotify_rm_watch(m_inotify, m_watch);
    }
    m_watchesFolder = true;
    std::filesystem::path folder = m_folder;
    while ((m_watch = inotify_add_watch(m_inotify, folder.c_str(), kEvents | IN_DELETE_SELF | IN_MOVE_SELF)) <
               0 &&
           folder.has_relative_path()) {
        m_watchesFolder = false;
        folder = folder.parent_path();
    }
}

void FileWatcher::ReadEvents() {
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    bool folderChanged = false;
    std::optional<std::chrono::milliseconds> delay;
    for (;;) {
        const ssize_t bytes = read(m_inotify, buffer, sizeof buffer);
        if (bytes <= 0) {
            break;
        }
        for (const char* at = buffer; at < buffer + bytes;) {
            const auto* event = reinterpret_cast<const inotify_event*>(at);
            at += sizeof(inotify_event) + event->len;
            if (!m_watchesFolder || event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) {
                folderChanged = folderChanged || event->wd == m_watch;
            } else if (event->len > 0 && m_name == event->name) {
                // A file that was only just created or opened is empty; its end of writing follows.
                if (event->mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) {
                    delay = kQuiet;
                } else if (event->mask & (IN_DELETE | IN_MOVED_FROM)) {
                    delay = kAfterDelete;
                }
            }
        }
    }
    if (folderChanged) {
        WatchFolder();
        delay = kQuiet;
    }
    if (delay) {
        m_changeDue = Clock::now() + *delay;
    }
}

int FileWatcher::MillisecondsToWait() {
    std::optional<Clock::time_point> next = m_changeDue;
    {
        const MutexLock lock(m_mutex);
        for (const Task& task : m_tasks) {
            next = next ? std::min(*next, task.due) : task.due;
        }
    }
    if (!next) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60000));
}

void FileWatcher::Run() {
    for (;;) {
        pollfd sources[] = {{m_wake, POLLIN, 0}, {m_inotify, POLLIN, 0}};
        poll(sources, m_inotify >= 0 ? 2 : 1, MillisecondsToWait());
        eventfd_t count = 0;
        eventfd_read(m_wake, &count);
        if (m_inotify >= 0) {
            ReadEvents();
        }
        if (m_changeDue && *m_changeDue <= Clock::now()) {
            m_changeDue.reset();
            m_onChange();
        }
        std::vector<Task> due;
        {
            const MutexLock lock(m_mutex);
            if (m_stop) {
                return;
            }
            const auto now = Clock::now();
            const auto firstLater = std::stable_partition(m_tasks.begin(), m_tasks.end(),
                                                          [&](const Task& task) { return task.due <= now; });
            std::move(m_tasks.begin(), firstLater, std::back_inserter(due));
            m_tasks.erase(m_tasks.begin(), firstLater);
        }
        for (const Task& task : due) {
            task.run();
        }
    }
}

} // namespace Norvane::Transport::Emulator
