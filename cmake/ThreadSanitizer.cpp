// Linked into every program of the thread sanitizer's preset.

/// libpulse makes its mutexes on first use behind atomics of its own, which the sanitizer cannot see. GLib,
/// which only the opening of URLs uses, is built without the sanitizer and hands memory to a thread of its
/// own. Weak, so that a program with more such libraries can say more.
extern "C" __attribute__((weak)) const char*
__tsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __tsan_default_suppressions() {
    return "race:pa_mutex_lock\n"
           "race:libglib-2.0.so\n"
           "race:libgobject-2.0.so\n"
           "race:libgio-2.0.so\n";
}
