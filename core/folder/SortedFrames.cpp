#include "core/folder/SortedFrames.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "core/folder/frame_list.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

using Paths = SortedFrames::Paths;
using Names = std::vector<std::string_view>;

/// If more than 1/16 of the names have changed, the whole listing is sorted, which is then no
/// slower than a binary search for each changed name.
constexpr std::size_t searchedShare = 16;

/// Only the extension counts, and its case matters: hidden files and folders are frames too, ".PNG"
/// is not.
bool isFrameName(std::string_view name) {
    return pathExtension(name) == "png";
}

template <typename SomeNames>
Paths framePaths(const std::string& folder, const SomeNames& names) {
    Paths paths;
    for (const std::string_view name : names) {
        if (isFrameName(name)) {
            std::string& path = paths.emplace_back();
            path.reserve(folder.size() + 1 + name.size());
            path.append(folder).append(1, '/').append(name);
        }
    }
    return paths;
}

/// The names that only one of two listings has, in byte order. A listing may have a name twice, if
/// the folder changed meanwhile; such a name counts twice.
struct Difference {
    Names removed;
    Names added;
};

/// Compares only the names between the first and the last change: a file system lists unchanged
/// names in an unchanged order.
Difference difference(const FileNames& before, const FileNames& after) {
    const auto [oldStart, newStart] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    Names oldNames(oldStart, before.end());
    Names newNames(newStart, after.end());
    const auto [oldEnd, newEnd] =
        std::mismatch(oldNames.rbegin(), oldNames.rend(), newNames.rbegin(), newNames.rend());
    oldNames.erase(oldEnd.base(), oldNames.end());
    newNames.erase(newEnd.base(), newNames.end());

    std::sort(oldNames.begin(), oldNames.end());
    std::sort(newNames.begin(), newNames.end());
    Difference result;
    std::set_difference(oldNames.begin(), oldNames.end(), newNames.begin(), newNames.end(),
                        std::back_inserter(result.removed));
    std::set_difference(newNames.begin(), newNames.end(), oldNames.begin(), oldNames.end(),
                        std::back_inserter(result.added));
    return result;
}

auto frameOrder(const NSLocale& locale) {
    return [&locale](const std::string& first, const std::string& second) {
        return frameNameCompare(first, second, locale) == NSOrderedAscending;
    };
}

/// The sorted `paths` without the sorted `removed`; nothing if `paths` lacks one of them.
std::optional<Paths> without(const Paths& removed, const Paths& paths, const NSLocale& locale) {
    Paths rest;
    rest.reserve(paths.size());
    auto next = paths.begin();
    for (const std::string& path : removed) {
        const auto place = std::lower_bound(next, paths.end(), path, frameOrder(locale));
        if (place == paths.end() || *place != path) {
            return std::nullopt;
        }
        rest.insert(rest.end(), next, place);
        next = std::next(place);
    }
    rest.insert(rest.end(), next, paths.end());
    return rest;
}

/// Merges the sorted `added` into the sorted `paths`.
Paths with(Paths added, Paths paths, const NSLocale& locale) {
    Paths all;
    all.reserve(paths.size() + added.size());
    auto next = paths.begin();
    const auto takeUpTo = [&](Paths::iterator end) {
        all.insert(all.end(), std::make_move_iterator(next), std::make_move_iterator(end));
        next = end;
    };
    for (std::string& path : added) {
        takeUpTo(std::upper_bound(next, paths.end(), path, frameOrder(locale)));
        all.push_back(std::move(path));
    }
    takeUpTo(paths.end());
    return all;
}

} // namespace

std::shared_ptr<const Paths> SortedFrames::update(const std::string& folder,
                                                  const std::shared_ptr<const FileNames>& names,
                                                  const std::shared_ptr<const NSLocale>& locale) {
    const bool isComparable = paths_ && folder == folder_ && locale == locale_;
    if (isComparable && (names == names_ || *names == *names_)) {
        names_ = names;
        return paths_;
    }
    std::optional<Paths> paths = isComparable ? changed(*names) : std::nullopt;
    if (!paths) {
        paths = framePaths(folder, *names);
        sortFrames(*paths, *locale);
    }
    folder_ = folder;
    names_ = names;
    locale_ = locale;
    if (!paths_ || *paths_ != *paths) {
        paths_ = std::make_shared<const Paths>(std::move(*paths));
    }
    return paths_;
}

std::optional<Paths> SortedFrames::changed(const FileNames& names) const {
    const auto [gone, come] = difference(*names_, names);
    if (gone.size() + come.size() > names.size() / searchedShare) {
        return std::nullopt;
    }
    Paths removed = framePaths(folder_, gone);
    Paths added = framePaths(folder_, come);
    sortFrames(removed, *locale_);
    sortFrames(added, *locale_);
    std::optional<Paths> rest = without(removed, *paths_, *locale_);
    return rest ? std::optional(with(std::move(added), std::move(*rest), *locale_)) : std::nullopt;
}

} // namespace vistrane
