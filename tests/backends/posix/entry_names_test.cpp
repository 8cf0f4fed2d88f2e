#include "backends/posix/entry_names.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/backends/posix/PosixFileManagerBackend.h"

namespace vistrane {
namespace {

using Way = std::optional<FileNames> (*)(int folder);

/// Both ways to list a folder.
class EntryNames : public ::testing::TestWithParam<Way> {
protected:
    ~EntryNames() override {
        if (opened_ >= 0) {
            close(opened_);
        }
    }

    void open(const std::string& path) { opened_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }
    std::optional<FileNames> names() { return GetParam()(opened_); }

    PosixFileManagerBackend backend_;
    const std::string folder_ = backend_.emptyFolder();
    int opened_ = -1;
};

TEST_P(EntryNames, AnEmptyFolderHasNone) {
    open(folder_);
    ASSERT_TRUE(names());
    EXPECT_THAT(*names(), ::testing::IsEmpty());
}

TEST_P(EntryNames, OnlyTheTwoNamesOfFoldersAreLeftOut) {
    const std::vector<std::string> all = {"...", "..a", ".b", "a", "\xff\xfe", "a\nb", ". ", ".. "};
    for (const std::string& name : all) {
        backend_.addFile(folder_ + "/" + name);
    }
    open(folder_);
    EXPECT_THAT(std::vector<std::string>(*names()), ::testing::UnorderedElementsAreArray(all));
}

TEST_P(EntryNames, NamesOfEveryLengthAreListedHoweverManyPiecesTheyTake) {
    std::vector<std::string> all;
    for (std::size_t length = 1; length <= 255; ++length) {
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            all.emplace_back(length, letter);
            backend_.addFile(folder_ + "/" + all.back());
        }
    }
    open(folder_);
    std::vector<std::string> listed = *names();
    std::sort(listed.begin(), listed.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(listed, all);
}

TEST_P(EntryNames, AFolderRemovedMeanwhileHasNone) {
    backend_.addFolder(folder_ + "/gone");
    open(folder_ + "/gone");
    ASSERT_EQ(rmdir((folder_ + "/gone").c_str()), 0);
    ASSERT_TRUE(names());
    EXPECT_THAT(*names(), ::testing::IsEmpty());
}

TEST_P(EntryNames, WhatIsNoFolderHasNoListing) {
    backend_.addFile(folder_ + "/file");
    open(folder_ + "/file");
    EXPECT_FALSE(names());
    EXPECT_FALSE(GetParam()(-1));
}

INSTANTIATE_TEST_SUITE_P(, EntryNames, ::testing::Values(&entryNames, &entryNamesByReaddir),
                         [](const auto& way) {
                             return way.index == 0 ? "TheSystems" : "TheLibrarys";
                         });

TEST(EntryNamesOfAnyFolder, BothWaysGiveTheSameNamesInTheSameOrder) {
    PosixFileManagerBackend backend;
    const std::string folder = backend.emptyFolder();
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        for (int file = 0; file < 40; ++file) {
            std::string name;
            for (auto left = 1 + random() % 40; left > 0; --left) {
                const char byte = static_cast<char>(1 + random() % 255);
                name += byte == '/' ? '.' : byte;
            }
            backend.addFile(folder + "/x" + name);
        }
        const int first = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
        const int second = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
        const auto one = entryNames(first);
        const auto other = entryNamesByReaddir(second);
        close(first);
        close(second);
        ASSERT_TRUE(one && other);
        EXPECT_GE(one->size(), 40U);
        ASSERT_TRUE(*one == *other) << "round " << round;
    }
}

} // namespace
} // namespace vistrane
