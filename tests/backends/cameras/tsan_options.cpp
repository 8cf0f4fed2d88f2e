// GStreamer and GLib are not compiled for ThreadSanitizer and wait on each other by means that it
// cannot see; only what this tree's own code does is to be judged.
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}
