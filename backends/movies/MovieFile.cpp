#include "backends/movies/MovieFile.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "backends/movies/exclusive_rename.h"
#include "backends/movies/movie_errors.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr std::string_view hiddenSuffix = ".vistrane-part";

/// A descriptor that is closed at the end of its scope, unless it is let go.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    int letGo() { return std::exchange(number_, -1); }

private:
    int number_;
};

struct PathParts {
    std::string folder;
    std::string name;
};

PathParts splitPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return {".", path};
    }
    return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

/// FNV-1a, 64 bits, in hexadecimal.
std::string nameHash(const std::string& name) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : name) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

/// The hidden name depends on the movie's name only, so that it reserves it. A long name is
/// shortened, between two characters where it is UTF-8: the hidden one is longer than it, and
/// some file systems allow far less than 255 bytes.
std::string hiddenNameFor(const std::string& name) {
    constexpr std::size_t longest = 100;
    constexpr std::size_t kept = 64;
    std::string hidden = "." + name;
    if (name.size() > longest) {
        std::size_t end = kept;
        while (end > kept - 4 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        hidden = "." + name.substr(0, end) + "-" + nameHash(name);
    }
    return hidden += hiddenSuffix;
}

bool isHiddenName(std::string_view name) {
    return name.size() > hiddenSuffix.size() + 1 && name.front() == '.' &&
           name.substr(name.size() - hiddenSuffix.size()) == hiddenSuffix;
}

bool isNameTaken(int folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isSameFile(int folder, const std::string& name, int file) {
    struct stat named {};
    struct stat opened {};
    return ::fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(file, &opened) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

/// Removes a hidden file that no living writer holds. The lock tells: it ends with its process.
void removeIfLeftover(int folder, const std::string& name) {
    const Descriptor file(
        ::openat(folder, name.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    if (::flock(file.number(), LOCK_EX | LOCK_NB) == 0 && isSameFile(folder, name, file.number())) {
        ::unlinkat(folder, name.c_str(), 0);
    }
}

void removeLeftovers(int folder) {
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (own < 0) {
        return;
    }
    DIR* const listing = ::fdopendir(own);
    if (listing == nullptr) {
        ::close(own);
        return;
    }
    std::vector<std::string> names;
    while (const dirent* const entry = ::readdir(listing)) {
        if (isHiddenName(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    ::closedir(listing);
    for (const std::string& name : names) {
        removeIfLeftover(folder, name);
    }
}

struct Reservation {
    int file = -1;
    int number = 0; // the error number when there is no file
};

/// Makes and locks the hidden file. Between the two another process may take the file for a
/// leftover and remove it: then it is made again.
Reservation reserveOnce(int folder, const std::string& hiddenName) {
    Descriptor file(::openat(folder, hiddenName.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file.isOpen()) {
        return {-1, errno};
    }
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return {-1, EAGAIN};
    }
    if (!isSameFile(folder, hiddenName, file.number())) {
        return {-1, EAGAIN};
    }
    return {file.letGo(), 0};
}

Reservation reserve(int folder, const std::string& hiddenName) {
    Reservation reservation;
    for (int attempt = 0; attempt < 50; ++attempt) {
        reservation = reserveOnce(folder, hiddenName);
        if (reservation.number != EAGAIN) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return reservation;
}

NSError nameTakenError(const std::string& path) {
    return movieError(AVErrorFileAlreadyExists,
                      "The movie cannot be made: something with its name is already there (" +
                          shownText(path) + "). Move it away or rename it, then compile again");
}

NSError nameReservedError(const std::string& path) {
    return movieError(AVErrorFileAlreadyExists,
                      "The movie cannot be made: it is being written already (" + shownText(path) +
                          "). Wait until that is done, then compile again");
}

NSError givenUpError(const std::string& path) {
    return movieError(AVErrorOperationCancelled, "The movie was given up before it was whole (" +
                                                     shownText(path) + "). Compile again");
}

} // namespace

MovieFileResult MovieFile::create(const std::string& path) {
    const PathParts parts = splitPath(path);
    if (parts.name.empty() || path.find('\0') != std::string::npos) {
        return {nullptr,
                movieError(AVErrorUnknown, "The movie cannot be made: it has no usable "
                                           "path (" +
                                               shownText(path) + "). Choose a project folder")};
    }
    Descriptor folder(::open(parts.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return {nullptr, systemError(errno, "The movie's folder cannot be opened", parts.folder)};
    }
    if (isNameTaken(folder.number(), parts.name)) {
        return {nullptr, nameTakenError(path)};
    }
    if (errno != ENOENT) {
        return {nullptr, systemError(errno, "The movie cannot be made", path)};
    }
    removeLeftovers(folder.number());
    const std::string hiddenName = hiddenNameFor(parts.name);
    const Reservation reservation = reserve(folder.number(), hiddenName);
    if (reservation.number == EEXIST || reservation.number == EAGAIN) {
        return {nullptr, nameReservedError(path)};
    }
    if (reservation.number != 0) {
        return {nullptr, systemError(reservation.number, "The movie cannot be made", path)};
    }
    std::unique_ptr<MovieFile> file(
        new MovieFile(path, folder.letGo(), reservation.file, hiddenName, parts.name));
    // Another writer may have finished a movie of that name since the first look.
    if (isNameTaken(file->folder_, file->name_)) {
        return {nullptr, nameTakenError(path)};
    }
    return {std::move(file), std::nullopt};
}

MovieFile::MovieFile(std::string path, int folder, int file, std::string hiddenName,
                     std::string name)
    : path_(std::move(path)), folder_(folder), file_(file), hiddenName_(std::move(hiddenName)),
      name_(std::move(name)) {}

MovieFile::~MovieFile() {
    giveUp();
    ::close(file_);
    ::close(folder_);
}

std::optional<NSError> MovieFile::write(const void* bytes, std::size_t count) {
    if (auto error = writeAt(size_, bytes, count)) {
        return error;
    }
    size_ += count;
    return std::nullopt;
}

std::optional<NSError> MovieFile::writeAt(std::uint64_t offset, const void* bytes,
                                          std::size_t count) {
    const auto* next = static_cast<const unsigned char*>(bytes);
    while (count > 0) {
        const ssize_t written = ::pwrite(file_, next, count, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return writeFailure(written < 0 ? errno : ENOSPC);
        }
        next += written;
        offset += static_cast<std::uint64_t>(written);
        count -= static_cast<std::size_t>(written);
    }
    return std::nullopt;
}

std::optional<NSError> MovieFile::giveName() {
    while (::fsync(file_) != 0) {
        if (errno == EINTR) {
            continue;
        }
        if (errno == EINVAL) { // a file system that has nothing to bring to a disk
            break;
        }
        return writeFailure(errno);
    }
    if (auto error = rename()) {
        return error;
    }
    ::fsync(folder_); // the movie is whole either way; some file systems refuse this for a folder
    return std::nullopt;
}

std::optional<NSError> MovieFile::rename() {
    const std::lock_guard lock(mutex_);
    if (place_ != Place::hidden) {
        return givenUpError(path_);
    }
    const int number = renameWithoutReplacing(folder_, hiddenName_, name_);
    if (number == 0) {
        place_ = Place::named;
        return std::nullopt;
    }
    removeHiddenFile();
    return number == EEXIST ? nameTakenError(path_)
                            : systemError(number, "The finished movie cannot get its name", path_);
}

void MovieFile::giveUp() {
    const std::lock_guard lock(mutex_);
    if (place_ == Place::hidden) {
        removeHiddenFile();
    }
}

NSError MovieFile::writeFailure(int number) const {
    return systemError(number, "The movie cannot be written", path_);
}

void MovieFile::removeHiddenFile() {
    ::unlinkat(folder_, hiddenName_.c_str(), 0);
    place_ = Place::gone;
}

} // namespace vistrane
