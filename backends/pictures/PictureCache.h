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

/// Lets those who load the same state of the same file at one time share what was read of it. It
/// keeps nothing: a picture is there as long as one of those who have loaded it. Any thread.
class PictureCache {
public:
    using Loading = std::function<PictureSourceResult()>;

    /// The picture of the file at `path`, of which `state` is what the open file says: shared with
    /// those who have it already, or are just reading it (that is waited for), else loaded. A
    /// failure is nobody's but the caller's, as is an exception of `load`.
    PictureSourceResult picture(const std::string& path, const FileState& state,
                                const Loading& load);

private:
    struct Entry {
        std::string path;
        FileState state;
        /// Empty while it is loaded.
        std::weak_ptr<SharedDecoding> decoding;
        bool isLoading = true;
    };

    class Turn;

    std::vector<Entry>::iterator find(const std::string& path, const FileState& state);
    PictureSourceResult loaded(const std::string& path, const FileState& state,
                               const Loading& load);
    void conclude(const std::string& path, const FileState& state,
                  const std::shared_ptr<SharedDecoding>& decoding);

    std::mutex mutex_;
    std::condition_variable changed_;
    /// Few: one for each that is alive or was lately.
    std::vector<Entry> entries_;
};

} // namespace vistrane
