#include "backends/posix/entry_names.h"

#include <algorithm>
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

/// The fast implementation and the reference.
class EntryNames : public ::testing::TestWithParam<Implementation> {
protected:
    std::optional<FileNames> namesIn(const std::string& path) {
        const Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        return GetParam()(opened.number());
    }

    PosixFileManagerBackend backend_;
    const std::string folder_ = backend_.emptyFolder();
};

TEST_P(EntryNames, OnlyTheTwoNamesOfFoldersAreLeftOut) {
    EXPECT_THAT(namesIn(folder_), Optional(IsEmpty()));
    const std::vector<std::string> all = {"...", "..a", ".b",    "a",    "\xff\xfe", "a\nb",
                                          ". ",  ".. ", ".\x01", "\x80", "\x7f"};
    for (const std::string& name : all) {
        backend_.addFile(folder_ + "/" + name);
    }
    EXPECT_THAT(*namesIn(folder_), UnorderedElementsAreArray(all));
}

TEST_P(EntryNames, NamesOfEveryLengthAreListedInHoweverManyReads) {
    std::vector<std::string> all;
    for (std::size_t length = 1; length <= 255; ++length) {
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            all.emplace_back(length, letter);
            backend_.addFile(folder_ + "/" + all.back());
        }
    }
    const FileNames names = *namesIn(folder_);
    std::vector<std::string> listed(names.begin(), names.end());
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

} // namespace
} // namespace vistrane
