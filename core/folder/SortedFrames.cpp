#include "core/folder/SortedFrames.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <mutex>
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

/// The number of bytes that both begin with.
std::size_t commonStart(std::string_view one, std::string_view other) {
    constexpr std::size_t block = 4096;
    const std::size_t most = std::min(one.size(), other.size());
    std::size_t start = 0;
    while (most - start >= block && one.substr(start, block) == other.substr(start, block)) {
        start += block;
    }
    const auto found =
        std::mismatch(one.begin() + static_cast<std::ptrdiff_t>(start), one.end(),
                      other.begin() + static_cast<std::ptrdiff_t>(start), other.end());
    return static_cast<std::size_t>(found.first - one.begin());
}

/// The number of bytes that both end with.
std::size_t commonEnd(std::string_view one, std::string_view other) {
    constexpr std::size_t block = 4096;
    const auto last = [](std::string_view bytes, std::size_t count) {
        return bytes.substr(bytes.size() - count);
    };
    const std::size_t most = std::min(one.size(), other.size());
    std::size_t end = 0;
    while (most - end >= block &&
           last(one, end + block).substr(0, block) == last(other, end + block).substr(0, block)) {
        end += block;
    }
    const auto found =
        std::mismatch(one.rbegin() + static_cast<std::ptrdiff_t>(end), one.rend(),
                      other.rbegin() + static_cast<std::ptrdiff_t>(end), other.rend());
    return static_cast<std::size_t>(found.first - one.rbegin());
}

bool endsWithName(std::string_view bytes) {
    return bytes.empty() || bytes.back() == '\0';
}

/// The names in the bytes of a listing, sorted by their bytes.
Names sortedNames(std::string_view bytes) {
    Names names;
    while (!bytes.empty()) {
        names.push_back(bytes.substr(0, bytes.find('\0')));
        bytes.remove_prefix(names.back().size() + 1);
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Compares only the names between the first and the last change: a file system lists unchanged
/// names in an unchanged order.
Difference difference(const FileNames& before, const FileNames& after) {
    std::string_view oldBytes = before.bytes();
    std::string_view newBytes = after.bytes();
    // Whole names only: npos + 1 is 0.
    const std::size_t start = oldBytes.substr(0, commonStart(oldBytes, newBytes)).rfind('\0') + 1;
    oldBytes.remove_prefix(start);
    newBytes.remove_prefix(start);
    const std::size_t end = commonEnd(oldBytes, newBytes);
    const std::string_view rest = oldBytes.substr(oldBytes.size() - end);
    oldBytes.remove_suffix(end);
    newBytes.remove_suffix(end);
    if (!endsWithName(oldBytes) || !endsWithName(newBytes)) {
        const std::size_t part = rest.find('\0') + 1;
        oldBytes = {oldBytes.data(), oldBytes.size() + part};
        newBytes = {newBytes.data(), newBytes.size() + part};
    }

    const Names oldNames = sortedNames(oldBytes);
    const Names newNames = sortedNames(newBytes);
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

/// Removes the sorted `removed` from the sorted `paths`. Returns false, and changes nothing, if
/// `paths` lacks one of them.
bool remove(const Paths& removed, Paths& paths, const NSLocale& locale) {
    std::vector<Paths::iterator> places;
    for (const std::string& path : removed) {
        const auto from = places.empty() ? paths.begin() : std::next(places.back());
        const auto place = std::lower_bound(from, paths.end(), path, frameOrder(locale));
        if (place == paths.end() || *place != path) {
            return false;
        }
        places.push_back(place);
    }
    if (places.empty()) {
        return true;
    }
    auto to = places.front();
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto end = i + 1 < places.size() ? places[i + 1] : paths.end();
        to = std::move(std::next(places[i]), end, to);
    }
    paths.erase(to, paths.end());
    return true;
}

/// Merges the sorted `added` into the sorted `paths`.
void add(const Paths& added, Paths& paths, const NSLocale& locale) {
    std::vector<std::ptrdiff_t> places;
    for (const std::string& path : added) {
        const auto from = paths.begin() + (places.empty() ? 0 : places.back());
        places.push_back(std::upper_bound(from, paths.end(), path, frameOrder(locale)) -
                         paths.begin());
    }
    auto end = static_cast<std::ptrdiff_t>(paths.size());
    paths.resize(paths.size() + added.size());
    auto to = paths.end();
    for (std::size_t i = added.size(); i-- > 0;) {
        to = std::move_backward(paths.begin() + places[i], paths.begin() + end, to);
        end = places[i];
        *--to = added[i];
    }
}

} // namespace

/// Keeps the last list that nobody uses any more.
class SortedFrames::ReleasedList {
public:
    void keep(std::unique_ptr<Paths> paths, std::uint64_t number) {
        const std::lock_guard lock(mutex_);
        paths_.swap(paths);
        number_ = number;
        // The list that it replaces is destroyed after the lock.
    }

    /// Null if the kept list has another number.
    std::unique_ptr<Paths> take(std::uint64_t number) {
        const std::lock_guard lock(mutex_);
        return number == number_ ? std::move(paths_) : nullptr;
    }

private:
    std::mutex mutex_;
    std::unique_ptr<Paths> paths_;
    std::uint64_t number_ = 0;
};

SortedFrames::SortedFrames() : released_(std::make_shared<ReleasedList>()) {}

SortedFrames::~SortedFrames() = default;

std::shared_ptr<const Paths> SortedFrames::update(const std::string& folder,
                                                  const std::shared_ptr<const FileNames>& names,
                                                  const std::shared_ptr<const NSLocale>& locale) {
    const bool isComparable = paths_ && folder == folder_ && locale == locale_;
    if (isComparable && (names == names_ || *names == *names_)) {
        names_ = names;
        return paths_;
    }
    std::optional<Change> change = isComparable ? changeTo(*names) : std::nullopt;
    folder_ = folder;
    names_ = names;
    locale_ = locale;
    if (change && change->removed.empty() && change->added.empty()) {
        return paths_;
    }
    if (auto paths = change ? listWith(*change) : nullptr) {
        publish(std::move(paths));
        lastChange_ = std::move(change);
        return paths_;
    }
    auto paths = std::make_unique<Paths>(framePaths(folder, *names));
    sortFrames(*paths, *locale);
    if (!paths_ || *paths_ != *paths) {
        publish(std::move(paths));
    }
    lastChange_.reset();
    return paths_;
}

std::optional<SortedFrames::Change> SortedFrames::changeTo(const FileNames& names) const {
    const auto [gone, come] = difference(*names_, names);
    if (gone.size() + come.size() > names.size() / searchedShare) {
        return std::nullopt;
    }
    Change change{framePaths(folder_, gone), framePaths(folder_, come)};
    sortFrames(change.removed, *locale_);
    sortFrames(change.added, *locale_);
    return change;
}

std::unique_ptr<Paths> SortedFrames::listWith(const Change& change) {
    const auto make = [this](const Change& made, Paths& paths) {
        const bool isPossible = remove(made.removed, paths, *locale_);
        if (isPossible) {
            add(made.added, paths, *locale_);
        }
        return isPossible;
    };
    auto paths = lastChange_ ? released_->take(number_ - 1) : nullptr;
    if (!paths || !make(*lastChange_, *paths)) {
        paths = std::make_unique<Paths>(*paths_);
    }
    return make(change, *paths) ? std::move(paths) : nullptr;
}

void SortedFrames::publish(std::unique_ptr<Paths> paths) {
    ++number_;
    const auto release = [released = released_, number = number_](Paths* list) {
        released->keep(std::unique_ptr<Paths>(list), number);
    };
    paths_ = std::shared_ptr<Paths>(paths.release(), release);
}

} // namespace vistrane
