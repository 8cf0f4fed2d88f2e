#pragma once

#include <string>

#include <gmock/gmock.h>

#include "platform/foundation/NSFileManager.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The file system. A backend has
///
///     NSFileManager& fileManager();
///     std::string emptyFolder();                   a fresh folder's path
///     void addFile(const std::string& path);
///     void addFolder(const std::string& path);
///     void removeAll(const std::string& path);     a file, or a folder with its contents
///     void settle();                               waits until an unchanged folder need not be
///     read
///                                                  again, if the backend keeps listings
template <typename Backend>
class FileManagerContract : public ::testing::Test {
protected:
    NSFileManager& manager() { return backend_.fileManager(); }

    Backend backend_;
    std::string folder_ = backend_.emptyFolder();
};

TYPED_TEST_SUITE_P(FileManagerContract);

TYPED_TEST_P(FileManagerContract, EveryNameOfAFolderIsListedAndNoDots) {
    const auto none = this->manager().contentsOfDirectoryAtPath(this->folder_);
    ASSERT_TRUE(none);
    EXPECT_THAT(*none, ::testing::IsEmpty());
    this->backend_.addFile(this->folder_ + "/b.png");
    this->backend_.addFile(this->folder_ + "/.hidden.png");
    this->backend_.addFile(this->folder_ + "/...");
    this->backend_.addFile(this->folder_ + "/\xff\xfe.png");
    this->backend_.addFolder(this->folder_ + "/folder.png");
    this->backend_.addFile(this->folder_ + "/folder.png/deep.png");
    const auto names = this->manager().contentsOfDirectoryAtPath(this->folder_);
    ASSERT_TRUE(names);
    EXPECT_THAT(*names, ::testing::UnorderedElementsAre("b.png", ".hidden.png", "...",
                                                        "\xff\xfe.png", "folder.png"));
}

TYPED_TEST_P(FileManagerContract, AListingStaysAsItIsAndTheNextHasEveryChange) {
    const auto list = [this] { return this->manager().contentsOfDirectoryAtPath(this->folder_); };
    const auto first = list();
    this->backend_.addFile(this->folder_ + "/a.png");
    this->backend_.settle();
    const auto second = list();
    const auto third = list();
    this->backend_.addFolder(this->folder_ + "/b.png");
    const auto fourth = list();
    this->backend_.settle();
    list();
    this->backend_.removeAll(this->folder_ + "/a.png");
    const auto fifth = list();
    this->backend_.settle();
    list();
    this->backend_.removeAll(this->folder_);
    EXPECT_FALSE(list());
    this->backend_.addFolder(this->folder_);
    const auto sixth = list();
    ASSERT_TRUE(first && second && third && fourth && fifth && sixth);
    EXPECT_THAT(*first, ::testing::IsEmpty());
    EXPECT_THAT(*second, ::testing::ElementsAre("a.png"));
    EXPECT_THAT(*third, ::testing::ElementsAre("a.png"));
    EXPECT_THAT(*fourth, ::testing::UnorderedElementsAre("a.png", "b.png"));
    EXPECT_THAT(*fifth, ::testing::ElementsAre("b.png"));
    EXPECT_THAT(*sixth, ::testing::IsEmpty());
}

TYPED_TEST_P(FileManagerContract, WhatIsNoFolderGivesNoListing) {
    this->backend_.addFile(this->folder_ + "/file");
    EXPECT_FALSE(this->manager().contentsOfDirectoryAtPath(this->folder_ + "/file"));
    EXPECT_FALSE(this->manager().contentsOfDirectoryAtPath(this->folder_ + "/missing"));
    EXPECT_FALSE(this->manager().contentsOfDirectoryAtPath(""));
}

TYPED_TEST_P(FileManagerContract, ExistingPathsAreToldApart) {
    this->backend_.addFile(this->folder_ + "/file");
    bool isDirectory = false;
    EXPECT_TRUE(this->manager().fileExistsAtPath(this->folder_, isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_TRUE(this->manager().fileExistsAtPath(this->folder_ + "/file", isDirectory));
    EXPECT_FALSE(isDirectory);
}

TYPED_TEST_P(FileManagerContract, AMissingPathLeavesTheFlagAlone) {
    for (const bool before : {false, true}) {
        bool isDirectory = before;
        EXPECT_FALSE(this->manager().fileExistsAtPath(this->folder_ + "/missing", isDirectory));
        EXPECT_EQ(isDirectory, before);
    }
}

REGISTER_TYPED_TEST_SUITE_P(FileManagerContract, EveryNameOfAFolderIsListedAndNoDots,
                            AListingStaysAsItIsAndTheNextHasEveryChange,
                            WhatIsNoFolderGivesNoListing, ExistingPathsAreToldApart,
                            AMissingPathLeavesTheFlagAlone);

} // namespace vistrane
