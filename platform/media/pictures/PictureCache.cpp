#include "platform/media/pictures/PictureCache.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace vistrane {

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

    const PictureSourceResult result = load();
    const auto* const source = std::get_if<std::shared_ptr<const PictureSource>>(&result);
    auto decoding = source != nullptr ? std::make_shared<SharedDecoding>(*source) : nullptr;

    lock.lock();
    const auto entry = find(path, state);
    if (decoding) {
        entry->decoding = decoding;
        entry->isLoading = false;
    } else {
        entries_.erase(entry);
    }
    changed_.notify_all();
    lock.unlock();
    return decoding ? std::make_shared<SharedPicture>(std::move(decoding)) : result;
}

} // namespace vistrane
