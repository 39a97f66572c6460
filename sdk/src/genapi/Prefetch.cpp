#include "norvane/genapi/Prefetch.h"

#include "base/Mutex.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/genapi/Pointer.h"

#include <atomic>
#include <list>
#include <unordered_set>

namespace Norvane::GenApi {

namespace {

/// Reads the value and what else a cell shows of it. Values that are not kept would be read for nothing.
void ReadShown(INode& node) {
    if (!node.IsCachable()) {
        return;
    }
    switch (node.GetPrincipalInterfaceType()) {
    case intfIInteger:
        CIntegerPtr(&node)->GetValue();
        break;
    case intfIFloat:
        CFloatPtr(&node)->GetValue();
        break;
    case intfIBoolean:
        CBooleanPtr(&node)->GetValue();
        break;
    case intfIString:
        CStringPtr(&node)->GetValue();
        break;
    case intfIEnumeration: {
        const CEnumerationPtr enumeration(&node);
        enumeration->GetIntValue();
        node_vector entries;
        enumeration->GetEntries(entries);
        for (INode* entry : entries) {
            entry->GetAccessMode();
        }
        break;
    }
    default: // no list shows more of it than its name
        break;
    }
}

} // namespace

struct Prefetch::Work {
    void Run();
    void ReadBelow(INode* node);

    std::vector<INodeMap*> maps;
    std::shared_ptr<const void> owner;
    std::atomic<bool> stopping{false};
    std::atomic<bool> finished{false};    ///< the thread does nothing more
    std::unordered_set<const INode*> met; ///< categories may list one another
    mutable Mutex mutex;
    mutable ConditionVariable ended;
    bool atEnd GUARDED_BY(mutex) = false;
    Mutex doneMutex; ///< held while `done` is called
    std::function<void()> done GUARDED_BY(doneMutex);
};

void Prefetch::Work::ReadBelow(INode* node) {
    if (!node || stopping || !met.insert(node).second) {
        return;
    }
    static_cast<const NodeMap*>(node->GetNodeMap())->MakeWay();
    try {
        if (!IsReadable(node->GetAccessMode())) {
            return;
        }
        if (const CCategoryPtr category = node) {
            value_vector features;
            category->GetFeatures(features);
            for (IValue* feature : features) {
                ReadBelow(feature->GetNode());
            }
        } else {
            ReadShown(*node);
        }
    } catch (const Exception& error) {
        // Whoever asks for the value is told.
        Log(LogLevel::Debug, std::string("Reading ahead: ") + error.what());
    }
}

void Prefetch::Work::Run() {
    for (INodeMap* map : maps) {
        ReadBelow(map->GetNode("Root"));
    }
    {
        const MutexLock lock(mutex);
        atEnd = true;
    }
    ended.notify_all();
    {
        const MutexLock lock(doneMutex);
        if (done) {
            done();
        }
    }
    owner.reset();
    finished = true;
}

namespace {

/// The threads of readings that were given up, until they have ended. Those that have are joined when the
/// next one comes.
class GivenUp {
public:
    ~GivenUp() { Wait(); }

    void Add(std::thread thread, std::function<bool()> finished) {
        const MutexLock lock(m_mutex);
        m_readings.remove_if([](Reading& reading) {
            if (!reading.finished()) {
                return false;
            }
            reading.thread.join();
            return true;
        });
        m_readings.push_back({std::move(thread), std::move(finished)});
    }

    void Wait() {
        std::list<Reading> readings;
        {
            const MutexLock lock(m_mutex);
            readings.swap(m_readings);
        }
        for (Reading& reading : readings) {
            reading.thread.join();
        }
    }

private:
    struct Reading {
        std::thread thread;
        std::function<bool()> finished;
    };

    Mutex m_mutex;
    std::list<Reading> m_readings GUARDED_BY(m_mutex);
};

GivenUp& TheGivenUp() {
    static GivenUp readings;
    return readings;
}

} // namespace

Prefetch::Prefetch(std::vector<INodeMap*> maps, std::shared_ptr<const void> owner, std::function<void()> done)
    : m_work(std::make_shared<Work>()) {
    m_work->maps = std::move(maps);
    m_work->owner = std::move(owner);
    {
        const MutexLock lock(m_work->doneMutex);
        m_work->done = std::move(done);
    }
    m_thread = std::thread([work = m_work] { work->Run(); });
}

Prefetch::~Prefetch() {
    m_work->stopping = true;
    {
        const MutexLock lock(m_work->doneMutex);
        m_work->done = nullptr;
    }
    if (WaitFor(std::chrono::milliseconds::zero())) {
        m_thread.join();
    } else {
        TheGivenUp().Add(std::move(m_thread), [work = m_work] { return work->finished.load(); });
    }
}

void Prefetch::AwaitGivenUp() {
    TheGivenUp().Wait();
}

bool Prefetch::WaitFor(std::chrono::milliseconds longest) const {
    const auto end = std::chrono::steady_clock::now() + longest;
    MutexLock lock(m_work->mutex);
    while (!m_work->atEnd) {
        if (m_work->ended.wait_until(lock, end) == std::cv_status::timeout) {
            return m_work->atEnd;
        }
    }
    return true;
}

} // namespace Norvane::GenApi
