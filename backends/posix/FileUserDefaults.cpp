#include "backends/posix/FileUserDefaults.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "backends/posix/user_folders.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// Far more than the program ever writes.
constexpr off_t longestFile = 1 << 20;

/// How often another process's lock is tried, and the pause in between: writing takes less.
constexpr int lockTries = 50;
constexpr std::chrono::milliseconds lockPause(10);

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return descriptor_; }

private:
    int descriptor_;
};

/// The contents of a file; nothing, with the reason in `errno`, when it cannot be read.
std::optional<std::string> contentsOf(const std::string& path) {
    // What is no regular file may block who opens it.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat facts {};
    if (file.number() < 0 || ::fstat(file.number(), &facts) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(facts.st_mode) || facts.st_size > longestFile) {
        errno = S_ISREG(facts.st_mode) ? EFBIG : EINVAL;
        return std::nullopt;
    }
    std::string contents;
    char part[4096];
    while (contents.size() < static_cast<std::size_t>(longestFile)) {
        const ssize_t count = ::read(file.number(), part, sizeof part);
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        contents.append(part, static_cast<std::size_t>(count > 0 ? count : 0));
    }
    return contents;
}

bool writeAll(int file, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += static_cast<std::size_t>(count > 0 ? count : 0);
    }
    return true;
}

std::string folderOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

/// False, with the reason in `errno`, when the file still holds what it held.
bool replaceFile(const std::string& path, const std::string& text) {
    std::string temporary = path + ".XXXXXX";
    const Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (file.number() < 0) {
        return false;
    }
    if (!writeAll(file.number(), text) || ::fsync(file.number()) != 0 ||
        ::rename(temporary.c_str(), path.c_str()) != 0) {
        const int reason = errno;
        ::unlink(temporary.c_str());
        errno = reason;
        return false;
    }
    // The new name is to last as well. Not every file system can promise that.
    const Descriptor directory(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number() >= 0) {
        ::fsync(directory.number());
    }
    return true;
}

/// Keeps the program's other instances from writing into a folder, until it goes. It is no
/// condition: not every file system has locks, and one that nobody gives back holds nobody up.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        for (int tries = 0; tries < lockTries && isTaken(); ++tries) {
            std::this_thread::sleep_for(lockPause);
        }
    }

private:
    /// Takes the lock unless it is taken.
    bool isTaken() const {
        return ::flock(folder_.number(), LOCK_EX | LOCK_NB) != 0 &&
               (errno == EWOULDBLOCK || errno == EINTR);
    }

    const Descriptor folder_;
};

/// The file behind a link, so that the link stays one.
std::string behindLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

} // namespace

FileUserDefaults::FileUserDefaults(std::string path, Log log)
    : path_(std::move(path)), log_(std::move(log)) {
    read();
}

void FileUserDefaults::read() {
    const std::optional<std::string> text = contentsOf(path_);
    if (!text) {
        if (errno != ENOENT) {
            log_("The settings in '" + path_ + "' cannot be read: " + std::strerror(errno) +
                 ". The program goes on with its first ones and saves none.");
            isReadable_ = false;
        }
        return;
    }
    SettingsResult result = parseSettings(*text);
    if (!result.error.empty()) {
        setAside(result.error, "goes on with its first ones");
        return;
    }
    values_ = std::move(result.settings);
}

void FileUserDefaults::setAside(const std::string& reason, const std::string& remedy) {
    const std::string aside = path_ + ".damaged";
    const bool isAside = ::rename(path_.c_str(), aside.c_str()) == 0;
    log_("The settings in '" + path_ + "' are damaged (" + reason + ")" +
         (isAside ? " and were set aside as '" + aside + "'" : std::string()) + ". The program " +
         remedy + ".");
}

template <typename Type>
const Type* FileUserDefaults::find(const std::string& key) const {
    const auto entry = values_.find(key);
    return entry == values_.end() ? nullptr : std::get_if<Type>(&entry->second);
}

NSInteger FileUserDefaults::integerForKey(const std::string& key) const {
    if (const NSInteger* value = find<NSInteger>(key)) {
        return *value;
    }
    const std::optional<std::string> text = stringForKey(key);
    return text ? integerValue(*text) : 0;
}

void FileUserDefaults::setInteger(NSInteger value, const std::string& key) {
    values_[key] = value;
    changed_.insert(key);
}

std::optional<std::string> FileUserDefaults::stringForKey(const std::string& key) const {
    const auto system = systemStrings_.find(key);
    if (system != systemStrings_.end()) {
        return system->second();
    }
    const std::string* value = find<std::string>(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::vector<std::uint8_t>>
FileUserDefaults::objectForKey(const std::string& key) const {
    const auto* value = find<std::vector<std::uint8_t>>(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

void FileUserDefaults::setObject(const std::vector<std::uint8_t>& value, const std::string& key) {
    values_[key] = value;
    changed_.insert(key);
}

void FileUserDefaults::synchronize() {
    if (changed_.empty() || !isReadable_) {
        return;
    }
    std::error_code error;
    const std::string folder = folderOf(behindLinks(path_));
    std::filesystem::create_directories(folder, error);
    const FolderLock lock(folder);
    if (save()) {
        changed_.clear();
        reported_.clear();
        return;
    }
    const std::string reason = std::strerror(errno);
    if (reason != std::exchange(reported_, reason)) {
        log_("The settings cannot be written to '" + path_ + "': " + reason +
             ". They are lost when the program ends.");
    }
}

bool FileUserDefaults::save() {
    const std::optional<std::string> stored = contentsOf(path_);
    if (!stored && errno != ENOENT) {
        return false;
    }
    const std::string text = settingsText(stored ? withChanges(*stored) : values_);
    // Looked up now: a damaged file's link was set aside with it.
    return stored == text || replaceFile(behindLinks(path_), text);
}

Settings FileUserDefaults::withChanges(const std::string& text) {
    SettingsResult stored = parseSettings(text);
    if (!stored.error.empty()) {
        setAside(stored.error, "saves its own");
        return values_;
    }
    for (const std::string& key : changed_) {
        stored.settings[key] = values_.at(key);
    }
    return std::move(stored.settings);
}

void FileUserDefaults::setSystemString(const std::string& key,
                                       std::function<std::optional<std::string>()> answer) {
    systemStrings_[key] = std::move(answer);
}

std::string settingsPath() {
    return configurationFolder() + "/vistrane/settings";
}

} // namespace vistrane
