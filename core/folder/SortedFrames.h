#pragma once

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
/// a time.
class SortedFrames {
public:
    using Paths = std::vector<std::string>;

    /// The frames among `names`, a listing of `folder`, sorted by `locale`. No pointer is null.
    /// Returns the same object as the last call if the frames are the same.
    std::shared_ptr<const Paths> update(const std::string& folder,
                                        const std::shared_ptr<const FileNames>& names,
                                        const std::shared_ptr<const NSLocale>& locale);

private:
    /// Updates the last list for another listing of the same folder. Nothing if too many names have
    /// changed.
    std::optional<Paths> changed(const FileNames& names) const;

    // The arguments of the last `update`.
    std::string folder_;
    std::shared_ptr<const FileNames> names_;
    std::shared_ptr<const NSLocale> locale_;
    /// Null before the first listing.
    std::shared_ptr<const Paths> paths_;
};

} // namespace vistrane
