#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/NSData.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Tests file data. A backend has
///
///     std::shared_ptr<NSData> data(const std::string& bytes);
///     std::string emptyFolder();                     a fresh folder's path, the same each time
///     void addFile(const std::string& path);         with other content, longer than "bytes"
///     std::optional<std::string> contents(const std::string& path);     null without a file
template <typename Backend>
class DataContract : public ::testing::Test {
protected:
    std::string path(const std::string& name) { return folder_ + "/" + name; }

    Backend backend_;
    std::string folder_ = backend_.emptyFolder();
};

TYPED_TEST_SUITE_P(DataContract);

TYPED_TEST_P(DataContract, GivesItsBytes) {
    const auto data = this->backend_.data("bytes");
    ASSERT_EQ(data->length(), 5U);
    EXPECT_TRUE(std::equal(data->bytes(), data->bytes() + 5, "bytes"));
}

TYPED_TEST_P(DataContract, ReplacesTheContentOfAFile) {
    this->backend_.addFile(this->path("file"));
    EXPECT_TRUE(this->backend_.data("bytes")->writeToFile(this->path("file"), false));
    EXPECT_EQ(this->backend_.contents(this->path("file")), "bytes");
}

TYPED_TEST_P(DataContract, WritesAFileAndMayBeWrittenAgain) {
    const auto data = this->backend_.data("bytes");
    for (const char* name : {"a", "b", "a"}) {
        EXPECT_TRUE(data->writeToFile(this->path(name), false));
        EXPECT_EQ(this->backend_.contents(this->path(name)), "bytes");
    }
}

TYPED_TEST_P(DataContract, WithoutItsFolderNoFileIsWritten) {
    EXPECT_FALSE(this->backend_.data("bytes")->writeToFile(this->path("missing/file"), false));
    EXPECT_EQ(this->backend_.contents(this->path("missing/file")), std::nullopt);
}

TYPED_TEST_P(DataContract, AFolderIsNotReplaced) {
    const auto data = this->backend_.data("bytes");
    EXPECT_FALSE(data->writeToFile(this->folder_, false));
    EXPECT_TRUE(data->writeToFile(this->path("file"), false));
}

REGISTER_TYPED_TEST_SUITE_P(DataContract, GivesItsBytes, ReplacesTheContentOfAFile,
                            WritesAFileAndMayBeWrittenAgain, WithoutItsFolderNoFileIsWritten,
                            AFolderIsNotReplaced);

} // namespace vistrane
