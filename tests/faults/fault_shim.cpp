// Makes calls to the C library fail, for tests of how the program handles that. Loaded with
// LD_PRELOAD, and controlled by environment variables:
//
//   VISTRANE_FAULT       faults, one per line: CALL ERROR FIRST LAST WHERE
//   VISTRANE_FAULT_LOG   a file to which each failing call appends its name
//   VISTRANE_FAULT_GATE  optional: nothing fails until this file exists
//
// CALL   a function, or a group: open, read, write, fsync, rename, readdir.
// ERROR  the name of an error number. Or "short": a write transfers half of its bytes. Or "hang":
//        the call never returns, as on a disk that does not answer.
// FIRST, LAST  of the calls that match, the numbers of those that fail, from 1. A LAST of 0: all
//              later ones.
// WHERE  the rest of the line. For functions with a path or a descriptor: text that the path
//        contains. For pthread_create: text in the path of the calling library. For malloc: the
//        smallest size, a space, and such a text. Empty: every call.
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

extern "C" {
// glibc's own allocator, which malloc replaces in this program.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

struct ErrorName {
    std::string_view name;
    int number;
};

constexpr int shortWrite = -1;
constexpr int hang = -2;

constexpr std::array<ErrorName, 15> errorNames{{{"short", shortWrite},
                                                {"hang", hang},
                                                {"EACCES", EACCES},
                                                {"EAGAIN", EAGAIN},
                                                {"EDQUOT", EDQUOT},
                                                {"EINTR", EINTR},
                                                {"EINVAL", EINVAL},
                                                {"EIO", EIO},
                                                {"EMFILE", EMFILE},
                                                {"ENOENT", ENOENT},
                                                {"ENOMEM", ENOMEM},
                                                {"ENOSPC", ENOSPC},
                                                {"EOPNOTSUPP", EOPNOTSUPP},
                                                {"EPERM", EPERM},
                                                {"EROFS", EROFS}}};

struct Fault {
    std::string_view call;
    int error = 0;
    long first = 1;
    long last = 0;
    std::size_t smallest = 0;
    std::string_view where;
    std::atomic<long> calls{0};
};

// Nothing here allocates, because malloc may be the caller.
constexpr std::size_t mostFaults = 4;
std::array<Fault, mostFaults> faults;
std::size_t faultCount = 0;

/// Removes the first word and the space behind it.
std::string_view takeWord(std::string_view& text) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size() < text.size() ? word.size() + 1 : text.size());
    return word;
}

[[noreturn]] void reject(std::string_view line) {
    std::fprintf(stderr, "fault_shim: not a fault: %.*s\n", static_cast<int>(line.size()),
                 line.data());
    std::_Exit(99);
}

void addFault(std::string_view line) {
    std::string_view rest = line;
    Fault& fault = faults[faultCount];
    fault.call = takeWord(rest);
    const std::string_view error = takeWord(rest);
    for (const ErrorName& each : errorNames) {
        fault.error = each.name == error ? each.number : fault.error;
    }
    fault.first = std::atol(takeWord(rest).data());
    fault.last = std::atol(takeWord(rest).data());
    if (fault.call == "malloc") {
        fault.smallest = static_cast<std::size_t>(std::atol(takeWord(rest).data()));
    }
    fault.where = rest;
    if (fault.error == 0 || fault.first < 1) {
        reject(line);
    }
    ++faultCount;
}

__attribute__((constructor)) void readFaults() {
    const char* const variable = std::getenv("VISTRANE_FAULT");
    std::string_view text = variable != nullptr ? variable : "";
    while (!text.empty() && faultCount < mostFaults) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size() < text.size() ? line.size() + 1 : text.size());
        addFault(line);
    }
}

/// The C library's own function.
template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool isGateOpen() {
    const char* const gate = std::getenv("VISTRANE_FAULT_GATE");
    return gate == nullptr || ::access(gate, F_OK) == 0;
}

void logFailure(const char* call) {
    static const auto openNext = next<int (*)(const char*, int, ...)>("open");
    static const auto writeNext = next<ssize_t (*)(int, const void*, std::size_t)>("write");
    const char* const path = std::getenv("VISTRANE_FAULT_LOG");
    const int file =
        path != nullptr ? openNext(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file >= 0) {
        char line[64];
        const int length = std::snprintf(line, sizeof line, "%s\n", call);
        [[maybe_unused]] const ssize_t written =
            writeNext(file, line, static_cast<std::size_t>(length));
        ::close(file);
    }
}

/// The error of this call, or 0 if it succeeds. `group` may be null.
int errorOf(const char* group, const char* call, std::string_view where, std::size_t size = 0) {
    for (std::size_t i = 0; i < faultCount; ++i) {
        Fault& fault = faults[i];
        const bool matches = (fault.call == call || (group != nullptr && fault.call == group)) &&
                             size >= fault.smallest &&
                             where.find(fault.where) != std::string_view::npos && isGateOpen();
        const long number = matches ? ++fault.calls : 0;
        if (matches && number >= fault.first && (fault.last == 0 || number <= fault.last)) {
            logFailure(call);
            while (fault.error == hang) {
                ::pause();
            }
            return fault.error;
        }
    }
    return 0;
}

/// A path in memory of its own.
struct Path {
    char text[2 * PATH_MAX] = {};
    std::size_t length = 0;

    std::string_view view() const { return {text, length}; }
    void append(std::string_view more) {
        const std::size_t room = sizeof text - length;
        const std::size_t count = more.size() < room ? more.size() : room;
        std::memcpy(text + length, more.data(), count);
        length += count;
    }
};

Path pathOf(int descriptor) {
    char link[40];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    Path path;
    const ssize_t length = ::readlink(link, path.text, PATH_MAX);
    path.length = length > 0 ? static_cast<std::size_t>(length) : 0;
    return path;
}

Path pathOf(int folder, const char* name) {
    Path path;
    if (folder != AT_FDCWD && name[0] != '/') {
        path = pathOf(folder);
        path.append("/");
    }
    path.append(name);
    return path;
}

int errorOf(const char* group, const char* call, int descriptor) {
    return faultCount == 0 ? 0 : errorOf(group, call, pathOf(descriptor).view());
}

int errorOf(const char* group, const char* call, int folder, const char* name) {
    return faultCount == 0 ? 0 : errorOf(group, call, pathOf(folder, name).view());
}

/// The error of a call that names two paths.
int renameError(const char* call, int folder, const char* from, const char* to) {
    Path both = pathOf(folder, from);
    both.append(" ");
    both.append(to);
    return errorOf("rename", call, both.view());
}

/// The path of the library that contains the address.
std::string_view libraryOf(const void* address) {
    Dl_info info{};
    return ::dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

int failWith(int number) {
    errno = number;
    return -1;
}

/// The number of bytes that a write transfers, or -1 after setting errno.
ssize_t writable(const char* call, int descriptor, std::size_t count) {
    const int error = errorOf("write", call, descriptor);
    if (error == shortWrite) {
        return static_cast<ssize_t>(count > 1 ? count / 2 : count);
    }
    return error != 0 ? failWith(error) : static_cast<ssize_t>(count);
}

bool isAllocationRefused(std::size_t size, const void* caller) {
    // Looking for the caller's library may allocate.
    static thread_local bool isAsking = false;
    bool isWatched = false;
    for (std::size_t i = 0; i < faultCount; ++i) {
        isWatched = isWatched || (faults[i].call == "malloc" && size >= faults[i].smallest);
    }
    if (!isWatched || isAsking) {
        return false;
    }
    isAsking = true;
    const bool isRefused = errorOf(nullptr, "malloc", libraryOf(caller), size) != 0;
    isAsking = false;
    if (isRefused) {
        errno = ENOMEM;
    }
    return isRefused;
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

// ---- Opening --------------------------------------------------------------------------------

#define DEFINE_OPEN(NAME)                                                                          \
    int NAME(const char* path, int flags, ...) {                                                   \
        static const auto real = next<int (*)(const char*, int, ...)>(#NAME);                      \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        const int error = errorOf("open", #NAME, AT_FDCWD, path);                                  \
        return error != 0 ? failWith(error) : real(path, flags, mode);                             \
    }
#define DEFINE_OPENAT(NAME)                                                                        \
    int NAME(int folder, const char* path, int flags, ...) {                                       \
        static const auto real = next<int (*)(int, const char*, int, ...)>(#NAME);                 \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = modeOf(flags, arguments);                                              \
        va_end(arguments);                                                                         \
        const int error = errorOf("open", #NAME, folder, path);                                    \
        return error != 0 ? failWith(error) : real(folder, path, flags, mode);                     \
    }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)

// What a fortified build calls instead.
int __open_2(const char* path, int flags) {
    return open(path, flags);
}
int __open64_2(const char* path, int flags) {
    return open64(path, flags);
}
int __openat_2(int folder, const char* path, int flags) {
    return openat(folder, path, flags);
}
int __openat64_2(int folder, const char* path, int flags) {
    return openat64(folder, path, flags);
}

DIR* opendir(const char* path) {
    static const auto real = next<DIR* (*)(const char*)>("opendir");
    if (const int error = errorOf(nullptr, "opendir", AT_FDCWD, path)) {
        errno = error;
        return nullptr;
    }
    return real(path);
}

// ---- Reading --------------------------------------------------------------------------------

ssize_t read(int descriptor, void* bytes, std::size_t count) {
    static const auto real = next<ssize_t (*)(int, void*, std::size_t)>("read");
    const int error = errorOf(nullptr, "read", descriptor);
    return error != 0 ? failWith(error) : real(descriptor, bytes, count);
}
ssize_t __read_chk(int descriptor, void* bytes, std::size_t count, std::size_t) {
    return read(descriptor, bytes, count);
}

struct dirent* readdir(DIR* folder) {
    static const auto real = next<struct dirent* (*)(DIR*)>("readdir");
    if (const int error = errorOf("readdir", "readdir", ::dirfd(folder))) {
        errno = error;
        return nullptr;
    }
    return real(folder);
}
struct dirent64* readdir64(DIR* folder) {
    static const auto real = next<struct dirent64* (*)(DIR*)>("readdir64");
    if (const int error = errorOf("readdir", "readdir64", ::dirfd(folder))) {
        errno = error;
        return nullptr;
    }
    return real(folder);
}
ssize_t getdents64(int folder, void* entries, std::size_t size) noexcept {
    static const auto real = next<ssize_t (*)(int, void*, std::size_t)>("getdents64");
    const int error = errorOf("readdir", "getdents64", folder);
    return error != 0 ? failWith(error) : real(folder, entries, size);
}

// ---- Writing --------------------------------------------------------------------------------

ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    static const auto real = next<ssize_t (*)(int, const void*, std::size_t)>("write");
    const ssize_t part = writable("write", descriptor, count);
    return part < 0 ? part : real(descriptor, bytes, static_cast<std::size_t>(part));
}
ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) {
    static const auto real = next<ssize_t (*)(int, const void*, std::size_t, off_t)>("pwrite");
    const ssize_t part = writable("pwrite", descriptor, count);
    return part < 0 ? part : real(descriptor, bytes, static_cast<std::size_t>(part), offset);
}
ssize_t pwrite64(int descriptor, const void* bytes, std::size_t count, off64_t offset) {
    static const auto real = next<ssize_t (*)(int, const void*, std::size_t, off64_t)>("pwrite64");
    const ssize_t part = writable("pwrite64", descriptor, count);
    return part < 0 ? part : real(descriptor, bytes, static_cast<std::size_t>(part), offset);
}
ssize_t writev(int descriptor, const struct iovec* parts, int count) {
    static const auto real = next<ssize_t (*)(int, const struct iovec*, int)>("writev");
    const int error = errorOf("write", "writev", descriptor);
    if (error > 0) {
        return failWith(error);
    }
    return real(descriptor, parts, error == shortWrite ? 1 : count);
}

int fsync(int descriptor) {
    static const auto real = next<int (*)(int)>("fsync");
    const int error = errorOf("fsync", "fsync", descriptor);
    return error != 0 ? failWith(error) : real(descriptor);
}
int fdatasync(int descriptor) {
    static const auto real = next<int (*)(int)>("fdatasync");
    const int error = errorOf("fsync", "fdatasync", descriptor);
    return error != 0 ? failWith(error) : real(descriptor);
}

// ---- Names ----------------------------------------------------------------------------------

int rename(const char* from, const char* to) noexcept {
    static const auto real = next<int (*)(const char*, const char*)>("rename");
    const int error = renameError("rename", AT_FDCWD, from, to);
    return error != 0 ? failWith(error) : real(from, to);
}
int renameat(int folder, const char* from, int toFolder, const char* to) noexcept {
    static const auto real = next<int (*)(int, const char*, int, const char*)>("renameat");
    const int error = renameError("renameat", folder, from, to);
    return error != 0 ? failWith(error) : real(folder, from, toFolder, to);
}
int renameat2(int folder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    static const auto real =
        next<int (*)(int, const char*, int, const char*, unsigned int)>("renameat2");
    const int error = renameError("renameat2", folder, from, to);
    return error != 0 ? failWith(error) : real(folder, from, toFolder, to, flags);
}
int linkat(int folder, const char* from, int toFolder, const char* to, int flags) noexcept {
    static const auto real = next<int (*)(int, const char*, int, const char*, int)>("linkat");
    const int error = renameError("linkat", folder, from, to);
    return error != 0 ? failWith(error) : real(folder, from, toFolder, to, flags);
}
int link(const char* from, const char* to) noexcept {
    static const auto real = next<int (*)(const char*, const char*)>("link");
    const int error = renameError("link", AT_FDCWD, from, to);
    return error != 0 ? failWith(error) : real(from, to);
}

// ---- Threads and memory ---------------------------------------------------------------------

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                   void* argument) noexcept {
    static const auto real =
        next<int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    const int error = faultCount == 0 ? 0
                                      : errorOf(nullptr, "pthread_create",
                                                libraryOf(__builtin_return_address(0)));
    return error != 0 ? error : real(thread, attributes, entry, argument);
}

void* malloc(std::size_t size) noexcept {
    return isAllocationRefused(size, __builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    // On overflow, the C library refuses.
    return isAllocationRefused(count * size, __builtin_return_address(0))
               ? nullptr
               : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
    return isAllocationRefused(size, __builtin_return_address(0)) ? nullptr
                                                                  : __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return isAllocationRefused(size, __builtin_return_address(0))
               ? nullptr
               : __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    void* const result = isAllocationRefused(size, __builtin_return_address(0))
                             ? nullptr
                             : __libc_memalign(alignment, size);
    if (result == nullptr) {
        return ENOMEM;
    }
    *memory = result;
    return 0;
}
}
#pragma GCC visibility pop
