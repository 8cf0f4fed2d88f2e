#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "backends/pictures/PictureSource.h"
#include "backends/pictures/SharedPicture.h"
#include "backends/pictures/file_bytes.h"

namespace vistrane {

/// Shares a file's picture between all users that have loaded the same state of the file. Holds
/// only weak references: a picture lives as long as one of its users. Any thread.
class PictureCache {
public:
    using Loading = std::function<PictureSourceResult()>;

    /// Returns the picture of the file at `path` in `state`. Shares that of another user, waits for
    /// a thread that is loading it, or calls `load`. A failure or exception of `load` affects only
    /// this call; waiting threads then load the file themselves.
    PictureSourceResult picture(const std::string& path, const FileState& state,
                                const Loading& load);

private:
    struct Entry {
        std::string path;
        FileState state;
        /// Empty while the picture is being loaded.
        std::weak_ptr<SharedDecoding> decoding;
        bool isLoading = true;
    };

    class Turn;

    std::vector<Entry>::iterator find(const std::string& path, const FileState& state);
    PictureSourceResult loaded(const std::string& path, const FileState& state,
                               const Loading& load);
    void conclude(const std::string& path, const FileState& state,
                  const std::shared_ptr<SharedDecoding>& decoding);

    const std::shared_ptr<ViewSize> viewSize_ = std::make_shared<ViewSize>();
    std::mutex mutex_;
    std::condition_variable changed_;
    /// Few entries: the pictures in use, and some that were in use recently.
    std::vector<Entry> entries_;
};

} // namespace vistrane
