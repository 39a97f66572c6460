/// Tells the thread sanitizer of the order that Qt's queues make, whose locks are atomics inside a library
/// that is not instrumented: what a thread does before it emits a signal, receives an event, has another
/// thread call something, gives the pool a task or tells a thread to end comes before what any thread does
/// with the next event or task that it receives. All queues count as one, so the sanitizer may believe in an
/// order that is not there; without this, it reports each object that changes hands by a queue. Linked into
/// the programs with widgets of a build with the thread sanitizer.

#include <QObject>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>

#include <cstdlib>
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

/// Declared in a private header of Qt only; the order of the members is that of Qt 5.
struct QSignalSpyCallbackSet {
    using Begin = void (*)(QObject* caller, int method, void** arguments);
    using End = void (*)(QObject* caller, int method);

    Begin signalBegin, slotBegin;
    End signalEnd, slotEnd;
};
Q_CORE_EXPORT void qt_register_signal_spy_callbacks(QSignalSpyCallbackSet* callbacks);

namespace {

char allQueues;

void atSignal(QObject*, int, void**) {
    __tsan_release(&allQueues);
}

bool atEvent(void**) {
    __tsan_acquire(&allQueues);
    __tsan_release(&allQueues);
    return false; // Qt shall handle the event
}

QSignalSpyCallbackSet callbacks{atSignal, nullptr, nullptr, nullptr};

const bool isWatching = [] {
    qt_register_signal_spy_callbacks(&callbacks);
    return QInternal::registerCallback(QInternal::EventNotifyCallback, atEvent);
}();

/// Qt's own function of this mangled name, behind the one of this program that stands in its place.
template <class Function>
Function* behind(const char* name) {
    void* function = ::dlsym(RTLD_NEXT, name);
    if (!function) {
        std::abort();
    }
    return reinterpret_cast<Function*>(function);
}

/// A task in the place of the one that the pool was given.
class OrderedTask : public QRunnable {
public:
    explicit OrderedTask(QRunnable* task) : m_task(task) {}
    void run() override {
        __tsan_acquire(&allQueues);
        const bool isOurs = m_task->autoDelete(); // one that is not may be gone once it has run
        m_task->run();
        if (isOurs) {
            delete m_task;
        }
    }

private:
    QRunnable* m_task;
};

} // namespace

// These queue without a signal. They take the place of Qt's for the code of this program.

bool QMetaObject::invokeMethodImpl(QObject* object, QtPrivate::QSlotObjectBase* slot, Qt::ConnectionType type,
                                   void* result) {
    static auto* const invoke = behind<bool(QObject*, QtPrivate::QSlotObjectBase*, Qt::ConnectionType,
                                            void*)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    __tsan_release(&allQueues);
    return invoke(object, slot, type, result);
}

void QThread::quit() {
    static auto* const quit = behind<void(QThread*)>("_ZN7QThread4quitEv");
    __tsan_release(&allQueues);
    quit(this);
}

void QThreadPool::start(QRunnable* task, int priority) {
    static auto* const start =
        behind<void(QThreadPool*, QRunnable*, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    auto* const ordered = new OrderedTask(task);
    __tsan_release(&allQueues);
    start(this, ordered, priority);
}
