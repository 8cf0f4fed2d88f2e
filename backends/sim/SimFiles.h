#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

/// Folders and files in memory. A folder lists its entries in the order in which they were added.
/// Any thread; readers do not order each other.
class SimFiles final : public SimOf<NSFileManager> {
public:
    explicit SimFiles(CallLog& log) : SimOf(log, "defaultManager") {}

    struct Entry {
        std::string path;
        bool isFolder = false;
        std::optional<NSSize> pictureSize;
        std::string contents;
    };

    bool fileExistsAtPath(const std::string& path, bool& isDirectory) const override {
        call("fileExistsAtPath: %", path);
        const std::optional<Entry> entry = find(path);
        if (entry) {
            isDirectory = entry->isFolder;
        }
        return entry.has_value();
    }
    std::shared_ptr<const FileNames>
    contentsOfDirectoryAtPath(const std::string& path) const override {
        call("contentsOfDirectoryAtPath: %", path);
        const std::optional<Entry> folder = find(path);
        if (!folder || !folder->isFolder) {
            return nullptr;
        }
        const std::shared_lock lock(mutex_);
        auto names = std::make_shared<FileNames>();
        for (const Entry& entry : entries_) {
            if (entry.path != "/" && parentOf(entry.path) == path) {
                names->append(entry.path.substr(entry.path.rfind('/') + 1));
            }
        }
        return names;
    }

    void addFolder(const std::string& path) { put({path, true, std::nullopt, {}}); }
    /// A file; with the extension "png" it is a picture of 640 x 480 points.
    void addFile(const std::string& path, const std::string& contents = {}) {
        const bool isPicture = pathExtension(path) == "png";
        put({path, false, isPicture ? std::optional(NSSize{640.0, 480.0}) : std::nullopt,
             contents});
    }
    void addPicture(const std::string& path, NSSize size) { put({path, false, size, {}}); }
    /// A file that is not a picture, whatever its name.
    void addDamagedPicture(const std::string& path) { put({path, false, std::nullopt, {}}); }
    /// Removes the path and everything below it.
    void remove(const std::string& path) {
        const std::unique_lock lock(mutex_);
        std::erase_if(entries_, [&](const Entry& entry) {
            return entry.path == path || entry.path.starts_with(path + "/");
        });
    }

    /// Nothing for a path that does not exist.
    std::optional<Entry> find(const std::string& path) const {
        const std::shared_lock lock(mutex_);
        const auto found = std::find_if(entries_.begin(), entries_.end(),
                                        [&](const Entry& entry) { return entry.path == path; });
        return found == entries_.end() ? std::nullopt : std::optional(*found);
    }
    bool exists(const std::string& path) const { return find(path).has_value(); }
    std::optional<std::string> contents(const std::string& path) const {
        const std::optional<Entry> entry = find(path);
        return entry ? std::optional(entry->contents) : std::nullopt;
    }
    /// What writing a file does: it needs its folder, and replaces an older file.
    bool write(const std::string& path, const std::string& contents) {
        const std::optional<Entry> folder = find(parentOf(path));
        const std::optional<Entry> old = find(path);
        if (!folder || !folder->isFolder || (old && old->isFolder)) {
            return false;
        }
        addFile(path, contents);
        return true;
    }

private:
    static std::string parentOf(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
    }
    void put(const Entry& entry) {
        const std::unique_lock lock(mutex_);
        const auto old = std::find_if(entries_.begin(), entries_.end(),
                                      [&](const Entry& e) { return e.path == entry.path; });
        if (old == entries_.end()) {
            entries_.push_back(entry);
        } else {
            *old = entry;
        }
    }

    mutable std::shared_mutex mutex_;
    std::vector<Entry> entries_;
};

} // namespace vistrane
