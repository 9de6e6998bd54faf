// Linked into the windowed programs of the thread sanitizer's preset, in place of what others have.

/// Qt, its thread for the session bus, and the libraries below are built without the sanitizer, which sees
/// neither their atomics nor that they hand memory over. This hides our own races where a frame of theirs is
/// on the stack: the tests look for those, and go without this.
extern "C" const char*
__tsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __tsan_default_suppressions() {
    return "race:pa_mutex_lock\n"
           "race:libQt6Core.so\n"
           "race:libQt6DBus.so\n"
           "race:libQt6XcbQpa.so\n"
           "race:libdbus-1.so\n"
           "race:libglib-2.0.so\n"
           "deadlock:libdbus-1.so\n";
}
