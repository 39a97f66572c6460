/// What the sanitizers must not hold against a test program: faults of libraries that others wrote, and what
/// the thread sanitizer takes for a fault because it cannot see the locks inside them. Linked into every test
/// program of a build with sanitizers.
///
/// A line "race:" hides every race in which one of the two accesses is made anywhere below a frame of that
/// name, also what a library calls back. So none names a library that calls us or a function of ours;
/// "called_from_lib:" leaves out only what a library does itself by way of the C library.

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
           // A recursive lock that it did not see made; nothing of ours runs below it.
           "mutex:g_type_add_interface_static\n"
           // The copies of a signal's arguments that a queued call carries change hands under the lock of an
           // event list. This hides, too, that an argument changes while it is copied. Never name Qt as a
           // whole here: every slot runs below its event loop.
           "race:QMetaType::create\n";
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
