/// What the sanitizers must not hold against a test program: faults of libraries that others wrote, and what
/// the thread sanitizer takes for a fault because it cannot see the locks inside them. The one function of
/// ours that is named, OnControlLost, gets its data through GLib's signals, whose lock is such a one. Linked
/// into every test program of a build with sanitizers.

#if defined(__SANITIZE_ADDRESS__)
/// Tables that libraries behind Qt keep until the process ends.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libdbus-1.so\nleak:libfontconfig.so\n";
}
#endif

#if defined(__SANITIZE_THREAD__)
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libaravis-0.8.so\n"
           "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libglib-2.0.so\n"
           "race:libaravis-0.8.so\n"
           "race:libglib-2.0.so\n"
           "race:OnControlLost\n"
           "mutex:libgobject-2.0.so\n"
           // The copies of a signal's arguments that a queued call carries change hands under the lock of an
           // event list. Never name Qt as a whole here: every slot runs below its event loop.
           "race:QMetaType::create\n"
           "race:QMetaType::destroy\n";
}

#if __has_include(<QCoreApplication>)
/// Events, tasks of the thread pool and their lists are allocated by one thread and freed by another, under
/// locks of Qt's own. In programs with Qt the sanitizer therefore leaves out what is done by way of the C
/// library (allocating, freeing, copying blocks) and watches the loads and stores of our code.
extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}
#endif
#endif
