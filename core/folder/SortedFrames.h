#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileNames.h"
#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// The frames of a folder, as sorted full paths. Updated from one listing to the next.
///
/// The result always equals that of filtering and sorting the whole listing. The same listing costs
/// nothing, an equal one a comparison, and a few changed names a binary search each. One thread at
/// a time; the returned lists may be released on any thread.
class SortedFrames {
public:
    using Paths = std::vector<std::string>;

    SortedFrames();
    ~SortedFrames();
    SortedFrames(const SortedFrames&) = delete;
    SortedFrames& operator=(const SortedFrames&) = delete;

    /// The frames among `names`, a listing of `folder`, sorted by `locale`. No pointer is null.
    /// Returns the same object as the last call if the frames are the same.
    std::shared_ptr<const Paths> update(const std::string& folder,
                                        const std::shared_ptr<const FileNames>& names,
                                        const std::shared_ptr<const NSLocale>& locale);

private:
    class ReleasedList;

    /// The frames that only one of two lists has, sorted.
    struct Change {
        Paths removed;
        Paths added;
    };

    /// The change to another listing of the same folder. Nothing if too many names have changed.
    std::optional<Change> changeTo(const FileNames& names) const;
    /// The last list with that change. Null if it cannot have had that change.
    std::unique_ptr<Paths> listWith(const Change& change);
    void publish(std::unique_ptr<Paths> paths);

    // The arguments of the last `update`.
    std::string folder_;
    std::shared_ptr<const FileNames> names_;
    std::shared_ptr<const NSLocale> locale_;
    /// Null before the first listing.
    std::shared_ptr<const Paths> paths_;
    /// Counts the lists.
    std::uint64_t number_ = 0;
    /// What made `paths_` of the list before it. Nothing if the whole listing was sorted.
    std::optional<Change> lastChange_;
    /// The next list is made of the one before `paths_`, once nobody uses it: to copy 100,000
    /// paths, and to free as many, takes several milliseconds.
    const std::shared_ptr<ReleasedList> released_;
};

} // namespace vistrane
