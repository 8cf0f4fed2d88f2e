#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "core/folder/frame_list.h"

namespace vistrane {

/// The reference implementation of the frame list: filters the names and sorts them.
inline std::vector<std::string> sortedFrames(const std::string& folder,
                                             const std::vector<std::string>& names,
                                             const NSLocale& locale) {
    std::vector<std::string> paths;
    for (const std::string& name : names) {
        if (name.size() >= 4 && name.compare(name.size() - 4, 4, ".png") == 0) {
            paths.push_back(folder + "/" + name);
        }
    }
    std::stable_sort(paths.begin(), paths.end(), [&](const auto& first, const auto& second) {
        return frameNameCompare(first, second, locale) == NSOrderedAscending;
    });
    return paths;
}

/// A folder's names under random changes: stamps and any bytes, added, removed, renamed, most of
/// the time a few, sometimes many or another order.
class RandomListing {
public:
    explicit RandomListing(unsigned seed) : random_(seed) { addMany(below(200)); }

    const std::vector<std::string>& names() const { return names_; }

    void change() {
        switch (below(24)) {
        case 0:
            std::shuffle(names_.begin(), names_.end(), random_);
            break;
        case 1:
            addMany(below(150));
            break;
        case 2:
            removeMany(below(150));
            break;
        case 3:
            break;
        default:
            for (auto left = 1 + below(3); left > 0; --left) {
                changeOne();
            }
        }
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    void changeOne() {
        switch (below(3)) {
        case 0:
            add();
            break;
        case 1:
            removeMany(1);
            break;
        default:
            if (!names_.empty()) {
                names_[below(names_.size())] = newName();
            }
        }
    }

    void add() {
        names_.insert(names_.begin() + static_cast<std::ptrdiff_t>(below(names_.size() + 1)),
                      newName());
    }
    void addMany(std::size_t count) {
        for (; count > 0; --count) {
            add();
        }
    }
    void removeMany(std::size_t count) {
        for (count = std::min(count, names_.size()); count > 0; --count) {
            names_.erase(names_.begin() + static_cast<std::ptrdiff_t>(below(names_.size())));
        }
    }

    /// A possible name of a file that is not there yet.
    std::string newName() {
        std::string name = randomName();
        while (name == "." || name == ".." ||
               std::find(names_.begin(), names_.end(), name) != names_.end()) {
            name.insert(0, 1, static_cast<char>('a' + below(26)));
        }
        return name;
    }

    std::string randomName() {
        static const char* const pieces[] = {"a",      "A",    "frame", "Frame", "0",  "00",
                                             "1",      "9",    "10",    "007",   "é",  "e\u0301",
                                             "\u0301", "Ａ",   "１",    "\n",    " ",  "-",
                                             "\xff",   "\xc3", "\x80",  ".",     "_b", "ß"};
        std::string name;
        if (below(3) == 0) {
            name = "26-03-0" + std::to_string(below(9)) + "-14-" + std::to_string(10 + below(50)) +
                   "-" + std::to_string(10 + below(50));
        } else {
            for (auto left = 1 + below(5); left > 0; --left) {
                name += pieces[below(std::size(pieces))];
            }
        }
        static const char* const ends[] = {".png", ".png", ".png", ".png", ".PNG", ".jpg", ""};
        return name + ends[below(std::size(ends))];
    }

    std::mt19937 random_;
    std::vector<std::string> names_;
};

} // namespace vistrane
