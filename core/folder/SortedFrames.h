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
/// They are always what filtering and sorting the listing gives. But a listing that is the same as
/// the last one costs no more than their comparison, and a few other names no more than finding
/// their places. One thread at a time.
class SortedFrames {
public:
    using Paths = std::vector<std::string>;

    /// The frames among `names`, a listing of `folder`: the same object as the last time when they
    /// are the same. `locale` has the order.
    std::shared_ptr<const Paths> update(const std::string& folder, FileNames names,
                                        const std::shared_ptr<const NSLocale>& locale);

private:
    /// The list for other names of the same folder, from that for the last ones; nothing when too
    /// much has changed.
    std::optional<Paths> changed(const FileNames& names) const;

    // What `paths_` was made from.
    std::string folder_;
    FileNames names_;
    std::shared_ptr<const NSLocale> locale_;
    /// Null before the first listing.
    std::shared_ptr<const Paths> paths_;
};

} // namespace vistrane
