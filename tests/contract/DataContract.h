#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/NSData.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Bytes. A backend has
///
///     std::shared_ptr<NSData> data(const std::string& bytes);
///     std::string emptyFolder();                     a fresh folder's path, the same each time
///     void addFile(const std::string& path);         with bytes of its own, more than "bytes" has
///     std::optional<std::string> contents(const std::string& path);     nothing without a file
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

TYPED_TEST_P(DataContract, WritesAFileEitherWay) {
    const auto data = this->backend_.data("bytes");
    for (const bool atomically : {false, true}) {
        const std::string path = this->path(atomically ? "whole" : "in place");
        EXPECT_TRUE(data->writeToFile(path, atomically));
        EXPECT_EQ(this->backend_.contents(path), "bytes");
    }
}

TYPED_TEST_P(DataContract, ReplacesWhatTheFileHeld) {
    const auto data = this->backend_.data("bytes");
    for (const bool atomically : {false, true}) {
        const std::string path = this->path(atomically ? "whole" : "in place");
        this->backend_.addFile(path);
        EXPECT_TRUE(data->writeToFile(path, atomically));
        EXPECT_EQ(this->backend_.contents(path), "bytes");
    }
}

TYPED_TEST_P(DataContract, MayBeWrittenAgain) {
    const auto data = this->backend_.data("bytes");
    for (const char* name : {"a", "b", "a"}) {
        EXPECT_TRUE(data->writeToFile(this->path(name), false));
        EXPECT_EQ(this->backend_.contents(this->path(name)), "bytes");
    }
}

TYPED_TEST_P(DataContract, WithoutItsFolderNoFileIsWritten) {
    const auto data = this->backend_.data("bytes");
    for (const bool atomically : {false, true}) {
        EXPECT_FALSE(data->writeToFile(this->path("missing/file"), atomically));
        EXPECT_EQ(this->backend_.contents(this->path("missing/file")), std::nullopt);
    }
}

TYPED_TEST_P(DataContract, AFolderIsNotReplaced) {
    const auto data = this->backend_.data("bytes");
    for (const bool atomically : {false, true}) {
        EXPECT_FALSE(data->writeToFile(this->folder_, atomically));
    }
    EXPECT_TRUE(data->writeToFile(this->path("file"), false));
}

REGISTER_TYPED_TEST_SUITE_P(DataContract, GivesItsBytes, WritesAFileEitherWay,
                            ReplacesWhatTheFileHeld, MayBeWrittenAgain,
                            WithoutItsFolderNoFileIsWritten, AFolderIsNotReplaced);

} // namespace vistrane
