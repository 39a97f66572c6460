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
           "mutex:libgobject-2.0.so\n";
}
#endif
