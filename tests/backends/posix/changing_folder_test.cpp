#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "backends/posix/PosixFileManager.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

/// A folder that changes at every phase of the kernel's clock tick. Its names are known without
/// listing it.
class ChangingFolder {
public:
    explicit ChangingFolder(std::string path) : path_(std::move(path)) {
        std::filesystem::create_directory(path_);
        stat(path_.c_str(), &first_);
    }

    void change() {
        const std::string name = std::to_string(random_() % 40) + ".png";
        if (!names_.contains(name)) {
            std::ofstream(path_ + "/" + name) << "content";
            names_.insert(name);
        } else if (random_() % 2 == 0) {
            std::filesystem::remove(path_ + "/" + name);
            names_.erase(name);
        } else {
            // Also over another frame.
            const std::string other = std::to_string(random_() % 40) + ".png";
            std::filesystem::rename(path_ + "/" + name, path_ + "/" + other);
            names_.erase(name);
            names_.insert(other);
        }
        if (random_() % 4 == 0) {
            const timespec times[] = {first_.st_atim, first_.st_mtim};
            utimensat(AT_FDCWD, path_.c_str(), times, 0);
        }
    }

    /// For up to 25 ms, mostly much less: in a fifth of all cases a listing becomes settled.
    void wait() {
        static constexpr int longest[] = {0, 0, 100, 4000, 25000};
        const std::chrono::microseconds time(random_() % (longest[random_() % 5] + 1));
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
    }

    const std::string& path() const { return path_; }
    const std::set<std::string>& names() const { return names_; }

private:
    const std::string path_;
    std::set<std::string> names_;
    std::mt19937 random_{20};
    struct stat first_ {};
};

/// VISTRANE_LISTING_FOLDERS has more folders, separated by colons, on other file systems; the first
/// is the one for temporary files.
std::vector<std::string> parents(const WorkFolder& work) {
    std::vector<std::string> result{work.path()};
    if (const char* more = std::getenv("VISTRANE_LISTING_FOLDERS")) {
        std::istringstream folders(more);
        for (std::string folder; std::getline(folders, folder, ':');) {
            result.push_back(folder);
        }
    }
    return result;
}

int changes() {
    const char* count = std::getenv("VISTRANE_LISTING_CHANGES");
    return count != nullptr ? std::atoi(count) : 5000;
}

/// Lists the folder as the program does.
class Listings {
public:
    explicit Listings(const ChangingFolder& folder) : folder_(folder) {}

    /// Compares two listings with the names that the folder has.
    void compare() {
        for (int times = 0; times < 2; ++times) {
            const auto listing = manager_.contentsOfDirectoryAtPath(folder_.path());
            kept_ += listing == last_;
            last_ = listing;
            ASSERT_EQ(std::set<std::string>(listing->begin(), listing->end()), folder_.names());
        }
    }

    /// How many answers were the listing before.
    int kept() const { return kept_; }

private:
    const ChangingFolder& folder_;
    const PosixFileManager manager_;
    std::shared_ptr<const FileNames> last_;
    int kept_ = 0;
};

TEST(ChangingFolder, EveryListingHasEveryChange) {
    const WorkFolder work;
    for (const std::string& parent : parents(work)) {
        SCOPED_TRACE(parent);
        ChangingFolder folder(parent + "/changing");
        Listings listings(folder);
        for (int change = 0; change < changes(); ++change) {
            SCOPED_TRACE(change);
            folder.change();
            folder.wait();
            ASSERT_NO_FATAL_FAILURE(listings.compare());
        }
        // Listings of a file system with coarse times are kept only after some seconds.
        for (int change = 0; change < 10 && listings.kept() < 10; ++change) {
            std::this_thread::sleep_for(std::chrono::milliseconds(4100));
            ASSERT_NO_FATAL_FAILURE(listings.compare());
            folder.change();
            ASSERT_NO_FATAL_FAILURE(listings.compare());
        }
        std::filesystem::remove_all(folder.path());
        // Otherwise the test shows nothing.
        EXPECT_GT(listings.kept(), 0);
    }
}

} // namespace
} // namespace vistrane
