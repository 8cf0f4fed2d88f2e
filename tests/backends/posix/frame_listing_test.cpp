#include <filesystem>
#include <fstream>
#include <set>

#include <gmock/gmock.h>

#include "backends/icu/IcuLocale.h"
#include "core/folder/SortedFrames.h"
#include "tests/backends/posix/PosixFileManagerBackend.h"
#include "tests/support/RandomListing.h"

namespace vistrane {
namespace {

/// A folder whose files can be made those of a list.
class Folder {
public:
    explicit Folder(std::string path) : path_(std::move(path)) {}

    void become(const std::vector<std::string>& names) {
        const std::set<std::string> wanted(names.begin(), names.end());
        for (const std::string& name : names_) {
            if (wanted.count(name) == 0) {
                std::filesystem::remove(path_ + "/" + name);
            }
        }
        for (const std::string& name : wanted) {
            if (names_.count(name) == 0) {
                std::ofstream(path_ + "/" + name).put('x');
            }
        }
        names_ = wanted;
    }

private:
    const std::string path_;
    std::set<std::string> names_;
};

TEST(FrameListing, ARealFolderUnderAnyChangesGivesWhatSortingAnewGives) {
    PosixFileManagerBackend backend;
    const std::string path = backend.emptyFolder();
    const auto locale = std::make_shared<const IcuLocale>("en_US");
    Folder folder(path);
    RandomListing list(42);
    SortedFrames frames;
    for (int step = 0; step < 150; ++step) {
        list.change();
        folder.become(list.names());
        const auto paths =
            frames.update(path, *backend.manager.contentsOfDirectoryAtPath(path), locale);
        ASSERT_EQ(*paths, sortedFrames(path, list.names(), *locale)) << "step " << step;
    }
}

TEST(FrameListing, AnyListingsInAnyLocaleGiveWhatSortingAnewGives) {
    for (const char* name :
         {"en_US", "en_US_POSIX", "de@collation=phonebook", "fr_CA", "ja_JP", "th_TH", "tr_TR"}) {
        const auto locale = std::make_shared<const IcuLocale>(name);
        RandomListing list(7);
        SortedFrames frames;
        for (int step = 0; step < 500; ++step) {
            list.change();
            FileNames names;
            for (const std::string& each : list.names()) {
                names.append(each);
            }
            const auto paths = frames.update("/f\xff/\u0301", std::move(names), locale);
            ASSERT_EQ(*paths, sortedFrames("/f\xff/\u0301", list.names(), *locale))
                << name << ", step " << step;
        }
    }
}

} // namespace
} // namespace vistrane
