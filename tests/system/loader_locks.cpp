// What the thread sanitizer can't see: the system's loader orders its own work by a lock that is not compiled
// for it. A library's last holder frees what the loader knows of it, after all others have looked at that.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's name
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_suppressions();
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_suppressions() {
    return "called_from_lib:ld-linux-x86-64.so.2\n";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
