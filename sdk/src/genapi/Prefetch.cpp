#include "norvane/genapi/Prefetch.h"

#include "base/Mutex.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"
#include "norvane/Log.h"
#include "norvane/genapi/Pointer.h"

#include <atomic>
#include <thread>
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
    std::function<void()> done;
    std::atomic<bool> stopping{false};
    std::unordered_set<const INode*> met; ///< categories may list one another
    mutable Mutex mutex;
    mutable ConditionVariable ended;
    bool atEnd GUARDED_BY(mutex) = false;
    std::thread thread;
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
    if (done && !stopping) {
        done();
    }
}

Prefetch::Prefetch(std::vector<INodeMap*> maps, std::function<void()> done)
    : m_work(std::make_unique<Work>()) {
    m_work->maps = std::move(maps);
    m_work->done = std::move(done);
    m_work->thread = std::thread([work = m_work.get()] { work->Run(); });
}

Prefetch::~Prefetch() {
    m_work->stopping = true;
    m_work->thread.join();
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
