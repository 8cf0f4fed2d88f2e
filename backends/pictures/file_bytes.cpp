#include "backends/pictures/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <memory>
#include <utility>

#include "backends/pictures/picture_errors.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr char readAdvice[] = "check that the file is there and may be read";
constexpr char writeAdvice[] = "check that the folder is there and may be written to, and that "
                               "the disk has room";

/// An open file, closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }

    int number() const { return number_; }
    /// It is the caller's to close.
    int release() { return std::exchange(number_, -1); }

    /// The system's number of an error that only closing brings to light (a quota, a remote
    /// disk), else 0. An interrupted close has closed.
    int close() {
        const int result = ::close(std::exchange(number_, -1));
        return result != 0 && errno != EINTR ? errno : 0;
    }

private:
    int number_;
};

/// A path with a zero byte would be cut there by the system and name another file.
bool canBeAPath(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

int openRetrying(const std::string& path, int flags) {
    if (!canBeAPath(path)) {
        errno = EINVAL;
        return -1;
    }
    // Without O_NONBLOCK, opening a named pipe waits for its other end.
    int number = -1;
    do {
        number = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666);
    } while (number < 0 && errno == EINTR);
    return number;
}

std::optional<NSError> notAFile(const std::string& path) {
    return NSError{pictureErrorDomain, static_cast<std::int64_t>(PictureFault::NotAFile),
                   shownText(path) + " is not a regular file; choose another name or remove it"};
}

std::int64_t nanosecondsOf(const struct timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// The system's error number, or 0 when all bytes were written.
int writeAll(int number, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const std::size_t part = bytes.size() < SSIZE_MAX ? bytes.size() : SSIZE_MAX;
        const ssize_t written = ::write(number, bytes.data(), part);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        if (written == 0) {
            return EIO;
        }
        if (written > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
    }
    return 0;
}

/// Removes the file that was opened under `path`, also through links, and no other file.
void removeOpened(const std::string& path, const struct stat& opened) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    struct stat found {};
    if (real && ::lstat(real.get(), &found) == 0 && found.st_dev == opened.st_dev &&
        found.st_ino == opened.st_ino) {
        ::unlink(real.get());
    }
}

/// A hidden name in the folder of `path` that no other caller uses now.
std::string siblingName(const std::string& path) {
    static std::atomic<unsigned> last{0};
    const auto slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".vistrane-" + std::to_string(::getpid()) + "-" + std::to_string(++last) +
           ".part";
}

} // namespace

bool FileState::isSettled() const {
    using namespace std::chrono;
    constexpr nanoseconds margin = seconds(2);
    const auto now = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
    return std::max(changed, touched) < now - margin.count();
}

std::variant<OpenFile, NSError> OpenFile::at(const std::string& path, std::uint64_t largestFile) {
    Descriptor file(openRetrying(path, O_RDONLY));
    struct stat state {};
    if (file.number() < 0 || ::fstat(file.number(), &state) != 0) {
        return systemError(errno, "Cannot open the picture", path, readAdvice);
    }
    if (!S_ISREG(state.st_mode)) {
        return pictureError(PictureFault::NotAFile, path,
                            "cannot be used: it is not a regular file; remove it");
    }
    if (static_cast<std::uint64_t>(state.st_size) > largestFile) {
        return pictureError(PictureFault::TooLarge, path,
                            "is too large a file; make it smaller or remove it");
    }
    return OpenFile(file.release(), path,
                    {state.st_dev, state.st_ino, static_cast<std::uint64_t>(state.st_size),
                     nanosecondsOf(state.st_mtim), nanosecondsOf(state.st_ctim)});
}

OpenFile::OpenFile(int descriptor, std::string path, const FileState& state)
    : descriptor_(descriptor), path_(std::move(path)), state_(state) {}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)),
      state_(other.state_) {}

OpenFile::~OpenFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

FileBytesResult OpenFile::read() {
    FileBytesResult result;
    // Read, not mapped: a mapped file that somebody shortens kills its reader.
    auto bytes = ByteArray::ofLength(static_cast<std::size_t>(state_.length));
    if (!bytes) {
        result.error = pictureError(PictureFault::NoMemory, path_,
                                    "needs more memory than there is; close other programs");
        return result;
    }
    std::size_t length = 0;
    while (length < bytes->length()) {
        const ssize_t got = ::read(descriptor_, bytes->data() + length, bytes->length() - length);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            result.error = systemError(errno, "Cannot read the picture", path_, readAdvice);
            return result;
        }
        if (got == 0) {
            break;
        }
        length += static_cast<std::size_t>(got);
    }
    bytes->shorten(length);
    result.bytes = std::move(*bytes);
    return result;
}

std::optional<NSError> writeFileInPlace(const std::string& path,
                                        std::span<const std::uint8_t> bytes) {
    Descriptor file(openRetrying(path, O_WRONLY | O_CREAT | O_TRUNC));
    struct stat state {};
    // A pipe that nobody reads, or a socket.
    if (file.number() < 0 && errno == ENXIO) {
        return notAFile(path);
    }
    if (file.number() < 0 || ::fstat(file.number(), &state) != 0) {
        return systemError(errno, "Cannot create the file", path, writeAdvice);
    }
    if (!S_ISREG(state.st_mode)) {
        return notAFile(path);
    }
    int failure = writeAll(file.number(), bytes);
    if (const int closing = file.close(); failure == 0) {
        failure = closing;
    }
    if (failure == 0) {
        return std::nullopt;
    }
    removeOpened(path, state);
    return systemError(failure, "Cannot write the file", path, writeAdvice);
}

std::optional<NSError> replaceFile(const std::string& path, std::span<const std::uint8_t> bytes) {
    struct stat old {};
    if (canBeAPath(path) && ::lstat(path.c_str(), &old) == 0 && !S_ISREG(old.st_mode) &&
        !S_ISLNK(old.st_mode)) {
        return notAFile(path);
    }
    // A name that exists is a leftover of a process with the same number: take the next one.
    std::string sibling;
    int number = -1;
    for (int attempt = 0; attempt < 100 && number < 0; ++attempt) {
        sibling = canBeAPath(path) ? siblingName(path) : path;
        number = openRetrying(sibling, O_WRONLY | O_CREAT | O_EXCL);
        if (number < 0 && errno != EEXIST) {
            break;
        }
    }
    Descriptor file(number);
    if (file.number() < 0) {
        return systemError(errno, "Cannot create the file", path, writeAdvice);
    }
    int failure = writeAll(file.number(), bytes);
    if (failure == 0 && ::fsync(file.number()) != 0) {
        failure = errno;
    }
    if (const int closing = file.close(); failure == 0) {
        failure = closing;
    }
    if (failure == 0 && ::rename(sibling.c_str(), path.c_str()) != 0) {
        failure = errno;
    }
    if (failure == 0) {
        return std::nullopt;
    }
    ::unlink(sibling.c_str());
    return systemError(failure, "Cannot write the file", path, writeAdvice);
}

} // namespace vistrane
