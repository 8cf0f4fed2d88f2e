#include "backends/pictures/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

#include "backends/pictures/picture_errors.h"
#include "backends/posix/Descriptor.h"
#include "backends/posix/file_times.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr char readAdvice[] = "check that the file exists and that you may read it";
constexpr char writeAdvice[] = "check that the folder exists, that you may write to it, and that "
                               "the disk has room";

/// The system would truncate the path at a zero byte and open another file.
bool canBeAPath(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

int openRetrying(const std::string& path, int flags) {
    if (!canBeAPath(path)) {
        errno = EINVAL;
        return -1;
    }
    // Without O_NONBLOCK, opening a named pipe blocks until its other end is opened.
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

/// Removes the file that was opened at `path`, even through links, but no other file.
void removeOpened(const std::string& path, const struct stat& opened) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    struct stat found {};
    if (real && ::lstat(real.get(), &found) == 0 && found.st_dev == opened.st_dev &&
        found.st_ino == opened.st_ino) {
        ::unlink(real.get());
    }
}

} // namespace

bool FileState::isSettled() const {
    // The longest distance between two times of a file system, that of FAT.
    constexpr std::int64_t margin = 2'000'000'000;
    return std::max(changed, touched) < timeForFiles() - margin;
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
                            "is too large; make the file smaller or remove it");
    }
    return OpenFile(std::move(file), path,
                    {state.st_dev, state.st_ino, static_cast<std::uint64_t>(state.st_size),
                     nanosecondsOf(state.st_mtim), nanosecondsOf(state.st_ctim)});
}

OpenFile::OpenFile(Descriptor descriptor, std::string path, const FileState& state)
    : descriptor_(std::move(descriptor)), path_(std::move(path)), state_(state) {}

bool OpenFile::holds(std::span<const std::uint8_t> bytes) const {
    if (state_.length != bytes.size()) {
        return false;
    }
    // Stays in the processor's cache.
    std::array<std::uint8_t, 64 << 10> part;
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t got =
            ::pread(descriptor_.number(), part.data(), std::min(part.size(), bytes.size() - at),
                    static_cast<off_t>(at));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0 || !std::equal(part.begin(), part.begin() + got, bytes.begin() + at)) {
            return false;
        }
        at += static_cast<std::size_t>(got);
    }
    return true;
}

FileBytesResult OpenFile::read(std::span<const std::uint8_t> signature) {
    FileBytesResult result;
    // Reads instead of mapping: truncating a mapped file kills its readers.
    auto bytes = ByteArray::ofLength(static_cast<std::size_t>(state_.length));
    if (!bytes) {
        result.error = outOfMemory(path_);
        return result;
    }
    // Most frames are not longer, so that looking at the signature costs them no second call.
    constexpr std::size_t firstPart = 4 << 20;
    std::size_t length = 0;
    std::size_t wanted = std::min(bytes->length(), std::max(firstPart, signature.size()));
    while (length < wanted) {
        const ssize_t got = ::read(descriptor_.number(), bytes->data() + length, wanted - length);
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
        if (length >= signature.size() &&
            std::equal(signature.begin(), signature.end(), bytes->data())) {
            wanted = bytes->length();
        }
    }
    bytes->shorten(length);
    result.bytes = std::move(*bytes);
    return result;
}

std::optional<NSError> writeFileInPlace(const std::string& path,
                                        std::span<const std::uint8_t> bytes) {
    Descriptor file(openRetrying(path, O_WRONLY | O_CREAT | O_TRUNC));
    struct stat state {};
    // a pipe without a reader, or a socket
    if (file.number() < 0 && errno == ENXIO) {
        return notAFile(path);
    }
    if (file.number() < 0 || ::fstat(file.number(), &state) != 0) {
        return systemError(errno, "Cannot create the file", path, writeAdvice);
    }
    if (!S_ISREG(state.st_mode)) {
        return notAFile(path);
    }
    int failure = writeAll(file.number(), bytes.data(), bytes.size());
    if (const int closing = file.close(); failure == 0) {
        failure = closing;
    }
    if (failure == 0) {
        return std::nullopt;
    }
    removeOpened(path, state);
    return systemError(failure, "Cannot write the file", path, writeAdvice);
}

} // namespace vistrane
