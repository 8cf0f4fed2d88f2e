#include "backends/movies/MovieFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "backends/movies/MovieIndex.h"
#include "backends/movies/exclusive_rename.h"
#include "backends/movies/movie_errors.h"
#include "backends/posix/entry_names.h"
#include "platform/shown_text.h"

namespace vistrane {

namespace {

constexpr std::string_view hiddenSuffix = ".vistrane-part";

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

/// The hidden name depends only on the movie's name, so it reserves that name. A long name is
/// shortened, at a UTF-8 character boundary, because the hidden name adds bytes and some file
/// systems allow far fewer than 255.
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

bool isRegularFile(int folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode);
}

bool isSameFile(int folder, const std::string& name, int file) {
    struct stat named {};
    struct stat opened {};
    return ::fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(file, &opened) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

/// Renames `hidden` to the first free one of "NAME-2.mov", "NAME-3.mov" and so on. Returns that
/// name, or nothing if the file system refuses.
std::optional<std::string> renameToFreeName(int folder, const std::string& hidden,
                                            const std::string& name) {
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    for (int number = 2; number < 1000; ++number) {
        const std::string free =
            name.substr(0, dot) + "-" + std::to_string(number) + name.substr(dot);
        const int error = renameWithoutReplacing(folder, hidden, free);
        if (error != EEXIST) {
            return error == 0 ? std::optional(free) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// Renames `hidden`, in the place of a file of that name. Returns 0 or the error number.
int replaceFile(int folder, const std::string& hidden, const std::string& name) {
    const auto rename = [&] { return ::renameat(folder, hidden.c_str(), folder, name.c_str()); };
    return uninterrupted(rename) == 0 ? 0 : errno;
}

/// Whether the size of the media box was written, which is the last thing to be written.
bool isComplete(int file) {
    std::array<std::uint8_t, 8> size{};
    return ::pread(file, size.data(), size.size(), mediaBoxSizeOffset) ==
               static_cast<ssize_t>(size.size()) &&
           size != std::array<std::uint8_t, 8>{};
}

/// Publishes a complete movie that was never renamed, if the file system allows it.
void recover(int folder, const std::string& hidden) {
    constexpr std::string_view extension = ".mov";
    std::string name = hidden.substr(1, hidden.size() - hiddenSuffix.size() - 1);
    if (!name.ends_with(extension)) { // a long name was shortened
        name += extension;
    }
    if (renameWithoutReplacing(folder, hidden, name) == EEXIST) {
        renameToFreeName(folder, hidden, name);
    }
}

/// Removes a hidden file that no process has locked: a lock ends with its process.
void removeIfLeftover(int folder, const std::string& name) {
    const Descriptor file(
        ::openat(folder, name.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0 ||
        !isSameFile(folder, name, file.number())) {
        return;
    }
    if (isComplete(file.number())) {
        recover(folder, name);
    } else {
        ::unlinkat(folder, name.c_str(), 0);
    }
}

void removeLeftovers(int folder) {
    const Descriptor listing(uninterrupted(
        [folder] { return ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    const std::optional<FileNames> names = entryNames(listing.number());
    if (!names) {
        return;
    }
    for (const std::string_view name : *names) {
        if (isHiddenName(name)) {
            removeIfLeftover(folder, std::string(name));
        }
    }
}

struct Reservation {
    Descriptor file;
    int error = 0; // the error number if there is no file
};

/// Creates and locks the hidden file. The result is EAGAIN if a signal interrupted that, or if
/// another process took the file for a leftover before it was locked.
Reservation reserveOnce(int folder, const std::string& hiddenName) {
    Descriptor file(::openat(folder, hiddenName.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file.isOpen()) {
        return {Descriptor(), errno == EINTR ? EAGAIN : errno};
    }
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return {Descriptor(), EAGAIN};
    }
    if (!isSameFile(folder, hiddenName, file.number())) {
        return {Descriptor(), EAGAIN};
    }
    return {std::move(file), 0};
}

Reservation reserve(int folder, const std::string& hiddenName) {
    for (int attempt = 1; attempt < 50; ++attempt) {
        Reservation reservation = reserveOnce(folder, hiddenName);
        if (reservation.error != EAGAIN) {
            return reservation;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return reserveOnce(folder, hiddenName);
}

NSError nameTakenError(const std::string& path) {
    return movieError(AVErrorFileAlreadyExists,
                      "The movie cannot be made: something with its name is already there (" +
                          shownText(path) + "). Move it away or rename it");
}

NSError nameReservedError(const std::string& path) {
    return movieError(AVErrorFileAlreadyExists,
                      "The movie cannot be made: it is being written already (" + shownText(path) +
                          "). Wait until that is done");
}

} // namespace

MovieFileResult MovieFile::create(const std::string& path, bool replaces) {
    const PathParts parts = splitPath(path);
    if (parts.name.empty() || path.find('\0') != std::string::npos) {
        return {nullptr, movieError(AVErrorUnknown, "The movie cannot be made: it has no usable "
                                                    "path (" +
                                                        shownText(path) + "). Choose a folder")};
    }
    Descriptor folder(uninterrupted(
        [&parts] { return ::open(parts.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder.isOpen()) {
        return {nullptr, systemError(errno, "The movie's folder cannot be opened", parts.folder)};
    }
    const auto isRefused = [&] {
        return isNameTaken(folder.number(), parts.name) &&
               !(replaces && isRegularFile(folder.number(), parts.name));
    };
    if (isRefused()) {
        return {nullptr, nameTakenError(path)};
    }
    if (!replaces && errno != ENOENT) {
        return {nullptr, systemError(errno, "The movie cannot be made", path)};
    }
    removeLeftovers(folder.number());
    const std::string hiddenName = hiddenNameFor(parts.name);
    Reservation reservation = reserve(folder.number(), hiddenName);
    if (reservation.error == EEXIST || reservation.error == EAGAIN) {
        return {nullptr, nameReservedError(path)};
    }
    if (reservation.error != 0) {
        return {nullptr, systemError(reservation.error, "The movie cannot be made", path)};
    }
    // Another writer may have finished a movie of that name since the first check.
    const bool isTaken = isRefused();
    std::unique_ptr<MovieFile> file(new MovieFile(
        path, replaces, std::move(folder), std::move(reservation.file), hiddenName, parts.name));
    if (isTaken) {
        return {nullptr, nameTakenError(path)};
    }
    return {std::move(file), std::nullopt};
}

MovieFile::MovieFile(std::string path, bool replaces, Descriptor folder, Descriptor file,
                     std::string hiddenName, std::string name)
    : path_(std::move(path)), replaces_(replaces), folder_(std::move(folder)),
      file_(std::move(file)), hiddenName_(std::move(hiddenName)), name_(std::move(name)) {}

MovieFile::~MovieFile() {
    discard();
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
    const int error = writeAll(file_.number(), bytes, count, static_cast<std::int64_t>(offset));
    return error != 0 ? std::optional(writeFailure(error)) : std::nullopt;
}

std::optional<NSError> MovieFile::publish(std::uint64_t offset,
                                          std::span<const std::uint8_t> mediaSize) {
    // Twice, so that the mark of a complete file never reaches the disk before its content.
    int number = syncToDisk(file_.number());
    if (auto error = writeAt(offset, mediaSize.data(), mediaSize.size())) {
        return error;
    }
    setComplete();
    if (number == 0) {
        number = syncToDisk(file_.number());
    }
    auto error = number != 0 ? unsyncedError(number) : rename();
    // Ends the lock before the outcome is reported: a kept movie is for the next writer to publish.
    file_.close();
    if (!error) {
        // Ignores failures: the movie is complete, and some file systems cannot flush folders.
        syncToDisk(folder_.number());
    }
    return error;
}

void MovieFile::setComplete() {
    const std::lock_guard lock(mutex_);
    isComplete_ = true;
}

std::optional<NSError> MovieFile::unsyncedError(int number) {
    const std::lock_guard lock(mutex_);
    if (place_ != Place::hidden) {
        return cancelledError(path_);
    }
    return posixError(number, "The finished movie cannot be brought to the disk",
                      keep() + ". See that it plays, and copy it to another disk");
}

std::optional<NSError> MovieFile::rename() {
    const std::lock_guard lock(mutex_);
    if (place_ != Place::hidden) {
        return cancelledError(path_);
    }
    const int number = replaces_ ? replaceFile(folder_.number(), hiddenName_, name_)
                                 : renameWithoutReplacing(folder_.number(), hiddenName_, name_);
    if (number == 0) {
        place_ = Place::published;
        return std::nullopt;
    }
    return number == EEXIST ? movieError(AVErrorFileAlreadyExists,
                                         "Something with the finished movie's name is already "
                                         "there (" +
                                             shownText(path_) + "). " + keep())
                            : posixError(number, "The finished movie cannot be renamed", keep());
}

NSError MovieFile::posixError(int number, const std::string& what,
                              const std::string& remedy) const {
    return {"NSPOSIXErrorDomain", number,
            what + " (" + shownText(path_) + "): " + std::generic_category().message(number) +
                ". " + remedy};
}

/// Keeps the complete movie under another name. Returns a sentence that says which. Requires the
/// lock.
std::string MovieFile::keep() {
    place_ = Place::published;
    if (!isSameFile(folder_.number(), hiddenName_, file_.number())) {
        return "Its unfinished file was removed meanwhile. Compile again";
    }
    const std::string name =
        renameToFreeName(folder_.number(), hiddenName_, name_).value_or(hiddenName_);
    return "It was kept as '" + shownText(name) + "' in the same folder";
}

void MovieFile::discard() {
    const std::lock_guard lock(mutex_);
    if (place_ == Place::hidden && !isComplete_) {
        removeHiddenFile();
    }
}

NSError MovieFile::writeFailure(int number) const {
    return systemError(number, "The movie cannot be written", path_);
}

void MovieFile::removeHiddenFile() {
    ::unlinkat(folder_.number(), hiddenName_.c_str(), 0);
    place_ = Place::removed;
}

} // namespace vistrane
