#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileNames.h"
#include "platform/foundation/NSLocale.h"

namespace vistrane {

/// The frames of a folder as full paths in the order of frames, kept from one listing to the next.
///
/// The result always equals that of filtering and sorting the whole listing. An unchanged listing
/// costs one comparison, and a few changed names a binary search each. One thread at a time.
class SortedFrames {
public:
    using Paths = std::vector<std::string>;

    /// The frames among `names`, a listing of `folder`, in the order of `locale`. Returns the same
    /// object as the last time when the frames are the same.
    std::shared_ptr<const Paths> update(const std::string& folder, FileNames names,
                                        const std::shared_ptr<const NSLocale>& locale);

private:
    /// The list for changed names of the same folder, made from the last one; nothing when too many
    /// names have changed.
    std::optional<Paths> changed(const FileNames& names) const;

    // What `paths_` was made from.
    std::string folder_;
    FileNames names_;
    std::shared_ptr<const NSLocale> locale_;
    /// Null before the first listing.
    std::shared_ptr<const Paths> paths_;
};

} // namespace vistrane
