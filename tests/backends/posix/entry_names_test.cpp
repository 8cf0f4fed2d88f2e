#include "backends/posix/entry_names.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "backends/posix/Descriptor.h"
#include "tests/backends/posix/PosixFileManagerBackend.h"

namespace vistrane {
namespace {

using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::UnorderedElementsAreArray;

using Implementation = std::optional<FileNames> (*)(int folder);

std::optional<FileNames> names(Implementation implementation, const std::string& path) {
    const Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return implementation(opened.number());
}

/// The fast implementation and the reference.
class EntryNames : public ::testing::TestWithParam<Implementation> {
protected:
    std::optional<FileNames> namesIn(const std::string& path) { return names(GetParam(), path); }

    PosixFileManagerBackend backend_;
    const std::string folder_ = backend_.emptyFolder();
};

TEST_P(EntryNames, OnlyTheTwoNamesOfFoldersAreLeftOut) {
    EXPECT_THAT(namesIn(folder_), Optional(IsEmpty()));
    const std::vector<std::string> all = {"...", "..a", ".b", "a", "\xff\xfe", "a\nb", ". ", ".. "};
    for (const std::string& name : all) {
        backend_.addFile(folder_ + "/" + name);
    }
    EXPECT_THAT(std::vector<std::string>(*namesIn(folder_)), UnorderedElementsAreArray(all));
}

TEST_P(EntryNames, NamesOfEveryLengthAreListedInHoweverManyReads) {
    std::vector<std::string> all;
    for (std::size_t length = 1; length <= 255; ++length) {
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            all.emplace_back(length, letter);
            backend_.addFile(folder_ + "/" + all.back());
        }
    }
    std::vector<std::string> listed = *namesIn(folder_);
    std::sort(listed.begin(), listed.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(listed, all);
}

TEST_P(EntryNames, AFolderRemovedAfterItWasOpenedHasNone) {
    const std::string path = folder_ + "/gone";
    backend_.addFolder(path);
    const Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::rmdir(path.c_str()), 0);
    EXPECT_THAT(GetParam()(opened.number()), Optional(IsEmpty()));
}

TEST_P(EntryNames, WhatIsNotAFolderHasNoListing) {
    backend_.addFile(folder_ + "/file");
    EXPECT_FALSE(namesIn(folder_ + "/file"));
    EXPECT_FALSE(GetParam()(-1));
}

INSTANTIATE_TEST_SUITE_P(, EntryNames, ::testing::Values(&entryNames, &entryNamesByReaddir),
                         [](const auto& each) { return each.index == 0 ? "Fast" : "Reference"; });

TEST(EntryNamesOfAnyFolder, BothImplementationsGiveTheSameNamesInTheSameOrder) {
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
        const auto one = names(&entryNames, folder);
        const auto other = names(&entryNamesByReaddir, folder);
        ASSERT_TRUE(one && other);
        EXPECT_GE(one->size(), 40U);
        ASSERT_TRUE(*one == *other) << "round " << round;
    }
}

} // namespace
} // namespace vistrane
