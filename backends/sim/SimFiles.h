#pragma once

#include <optional>
#include <set>
#include <shared_mutex>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSFileManager.h"

namespace vistrane {

/// Folders and files in memory. A folder lists its entries in the order in which they came. Any
/// thread.
class SimFiles final : public NSFileManager, public SimObject {
public:
    explicit SimFiles(CallLog& log) : SimObject(log, "defaultManager") {}

    bool fileExistsAtPath(const std::string& path, bool& isDirectory) const override;
    std::optional<FileNames> contentsOfDirectoryAtPath(const std::string& path) const override;

    void addFolder(const std::string& path);
    /// A file; when its name ends in ".png" it is a picture of 640 x 480 points.
    void addFile(const std::string& path, const std::string& contents = {});
    void addPicture(const std::string& path, NSSize size);
    /// A file that is no picture, whatever its name.
    void addDamagedPicture(const std::string& path);
    /// Removes the path and all below it.
    void remove(const std::string& path);

    /// Whether listing that folder fails although it is there.
    void failListing(const std::string& path, bool fails);
    void failWrites(bool fail);

    bool exists(const std::string& path) const;
    std::optional<std::string> contents(const std::string& path) const;
    /// The size of the picture in that file; nothing when it cannot be read as one.
    std::optional<NSSize> pictureSize(const std::string& path) const;
    /// What writing a file does: it needs its folder, and replaces what is there.
    bool write(const std::string& path, const std::string& contents);

private:
    struct Entry {
        std::string path;
        bool isFolder = false;
        std::optional<NSSize> pictureSize;
        std::string contents;
    };

    const Entry* find(const std::string& path) const;
    void put(Entry entry);

    mutable std::shared_mutex mutex_;
    std::vector<Entry> entries_;
    std::set<std::string> unlistable_;
    bool failWrites_ = false;
};

} // namespace vistrane
