#include "backends/pictures/PictureCache.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace vistrane {

/// The scope of a load. Its end, even by an exception, wakes the threads that wait for the picture.
class PictureCache::Turn {
public:
    Turn(PictureCache& cache, const std::string& path, const FileState& state)
        : cache_(cache), path_(path), state_(state) {}
    ~Turn() { cache_.conclude(path_, state_, decoding); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// Null after a failure.
    std::shared_ptr<SharedDecoding> decoding;

private:
    PictureCache& cache_;
    const std::string& path_;
    const FileState& state_;
};

std::vector<PictureCache::Entry>::iterator PictureCache::find(const std::string& path,
                                                              const FileState& state) {
    return std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.state == state && entry.path == path;
    });
}

PictureSourceResult PictureCache::picture(const std::string& path, const FileState& state,
                                          const Loading& load) {
    std::unique_lock lock(mutex_);
    std::erase_if(entries_,
                  [](const Entry& entry) { return !entry.isLoading && entry.decoding.expired(); });
    changed_.wait(lock, [&] {
        const auto entry = find(path, state);
        return entry == entries_.end() || !entry->isLoading;
    });
    if (const auto entry = find(path, state); entry != entries_.end()) {
        if (auto decoding = entry->decoding.lock()) {
            return std::make_shared<SharedPicture>(std::move(decoding));
        }
        entries_.erase(entry);
    }
    entries_.push_back({path, state, {}, true});
    lock.unlock();
    return loaded(path, state, load);
}

PictureSourceResult PictureCache::loaded(const std::string& path, const FileState& state,
                                         const Loading& load) {
    Turn turn(*this, path, state);
    PictureSourceResult result = load();
    const auto* const source = std::get_if<std::shared_ptr<const PictureSource>>(&result);
    if (source == nullptr) {
        return result;
    }
    turn.decoding = std::make_shared<SharedDecoding>(*source, viewSize_);
    return std::make_shared<SharedPicture>(turn.decoding);
}

void PictureCache::conclude(const std::string& path, const FileState& state,
                            const std::shared_ptr<SharedDecoding>& decoding) {
    const std::lock_guard lock(mutex_);
    const auto entry = find(path, state);
    if (decoding) {
        entry->decoding = decoding;
        entry->isLoading = false;
    } else {
        entries_.erase(entry);
    }
    changed_.notify_all();
}

} // namespace vistrane
