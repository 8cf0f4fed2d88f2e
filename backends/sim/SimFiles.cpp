#include "backends/sim/SimFiles.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <utility>

namespace vistrane {

namespace {

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string nameIn(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

bool endsIn(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::optional<NSSize> usualPictureSize(const std::string& path) {
    return endsIn(path, ".png") ? std::optional(NSSize{640.0, 480.0}) : std::nullopt;
}

} // namespace

bool SimFiles::fileExistsAtPath(const std::string& path, bool& isDirectory) const {
    call("fileExistsAtPath: " + path);
    const std::shared_lock lock(mutex_);
    const Entry* entry = find(path);
    if (entry) {
        isDirectory = entry->isFolder;
    }
    return entry != nullptr;
}

std::optional<FileNames> SimFiles::contentsOfDirectoryAtPath(const std::string& path) const {
    call("contentsOfDirectoryAtPath: " + path);
    const std::shared_lock lock(mutex_);
    const Entry* folder = find(path);
    if (!folder || !folder->isFolder || unlistable_.count(path) != 0) {
        return std::nullopt;
    }
    FileNames names;
    for (const Entry& entry : entries_) {
        if (entry.path != "/" && parentOf(entry.path) == path) {
            names.append(nameIn(entry.path));
        }
    }
    return names;
}

void SimFiles::addFolder(const std::string& path) {
    put({path, true, std::nullopt, {}});
}

void SimFiles::addFile(const std::string& path, const std::string& contents) {
    put({path, false, usualPictureSize(path), contents});
}

void SimFiles::addPicture(const std::string& path, NSSize size) {
    put({path, false, size, {}});
}

void SimFiles::addDamagedPicture(const std::string& path) {
    put({path, false, std::nullopt, {}});
}

void SimFiles::remove(const std::string& path) {
    const std::unique_lock lock(mutex_);
    const std::string below = path + "/";
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) {
                                      return entry.path == path ||
                                             entry.path.compare(0, below.size(), below) == 0;
                                  }),
                   entries_.end());
}

void SimFiles::failListing(const std::string& path, bool fails) {
    const std::unique_lock lock(mutex_);
    if (fails) {
        unlistable_.insert(path);
    } else {
        unlistable_.erase(path);
    }
}

void SimFiles::failWrites(bool fail) {
    const std::unique_lock lock(mutex_);
    failWrites_ = fail;
}

bool SimFiles::exists(const std::string& path) const {
    const std::shared_lock lock(mutex_);
    return find(path) != nullptr;
}

std::optional<std::string> SimFiles::contents(const std::string& path) const {
    const std::shared_lock lock(mutex_);
    const Entry* entry = find(path);
    return entry && !entry->isFolder ? std::optional(entry->contents) : std::nullopt;
}

std::optional<NSSize> SimFiles::pictureSize(const std::string& path) const {
    const std::shared_lock lock(mutex_);
    const Entry* entry = find(path);
    return entry ? entry->pictureSize : std::nullopt;
}

bool SimFiles::write(const std::string& path, const std::string& contents) {
    {
        const std::shared_lock lock(mutex_);
        const Entry* folder = find(parentOf(path));
        const Entry* old = find(path);
        if (failWrites_ || !folder || !folder->isFolder || (old && old->isFolder)) {
            return false;
        }
    }
    addFile(path, contents);
    return true;
}

const SimFiles::Entry* SimFiles::find(const std::string& path) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.path == path; });
    return found == entries_.end() ? nullptr : &*found;
}

void SimFiles::put(Entry entry) {
    const std::unique_lock lock(mutex_);
    const auto old = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& e) { return e.path == entry.path; });
    if (old == entries_.end()) {
        entries_.push_back(std::move(entry));
    } else {
        *old = std::move(entry);
    }
}

} // namespace vistrane
