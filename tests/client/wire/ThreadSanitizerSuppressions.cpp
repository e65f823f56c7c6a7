// Qt and GLib are not built with the thread sanitizer, which therefore misses the locks between the threads that they
// run on their own and takes what these share for races.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the name is the sanitizer's.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "called_from_lib:libQt5Core.so\n"
           "called_from_lib:libQt5Network.so\n"
           "called_from_lib:libglib-2.0.so\n"
           "race:libQt5DBus.so\n";
}
