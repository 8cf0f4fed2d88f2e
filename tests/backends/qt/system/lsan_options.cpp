/// What LeakSanitizer is told of libraries that are not ours. Called by its runtime; without it
/// nobody does.
extern "C" const char* __lsan_default_suppressions();

// The fake services are registered on the bus from here; Qt keeps the record of an object, and the
// watch on it, when both have been taken away again.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libQt6DBus\nleak:libQt6Core";
}
