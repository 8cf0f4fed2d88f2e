/// What LeakSanitizer is told of libraries that are not ours. Its runtime calls this function.
extern "C" const char* __lsan_default_suppressions();

// The fake services are registered on the bus from this program. Qt keeps the record of an object,
// and the watch on it, after both have been removed.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libQt6DBus\nleak:libQt6Core";
}
