#pragma once

#include <string>

#include "tests/contract/contract.h"

namespace vistrane {

/// Bookmarks. A backend has
///
///     Foundation& foundation();
template <typename Backend>
class BookmarkContract : public ::testing::Test {
protected:
    BookmarkDataResult make(const NSURL& url) {
        return backend_.foundation().bookmarkDataWithOptions(
            url, NSURLBookmarkCreationWithSecurityScope);
    }
    BookmarkURLResult resolve(const std::vector<std::uint8_t>& data) {
        return backend_.foundation().URLByResolvingBookmarkData(
            data, NSURLBookmarkResolutionWithSecurityScope);
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(BookmarkContract);

TYPED_TEST_P(BookmarkContract, AFolderIsFoundAgain) {
    for (const char* path : {"/Users/a/Frames", "/", "/with space/\xc3\xa4", "/not/text/\xff"}) {
        const NSURL url = NSURL::fileURLWithPath(path);
        const BookmarkDataResult bookmark = this->make(url);
        ASSERT_FALSE(bookmark.error) << path;
        const BookmarkURLResult found = this->resolve(bookmark.data);
        EXPECT_FALSE(found.error) << path;
        EXPECT_EQ(found.url, url) << path;
    }
}

TYPED_TEST_P(BookmarkContract, OtherBytesGiveAnErrorAndNoAddress) {
    for (const std::vector<std::uint8_t>& bytes :
         {std::vector<std::uint8_t>{}, {0}, {'/', 't', 'm', 'p'}}) {
        const BookmarkURLResult found = this->resolve(bytes);
        EXPECT_FALSE(found.url);
        ASSERT_TRUE(found.error);
        EXPECT_FALSE(found.error->localizedDescription.empty());
    }
}

REGISTER_TYPED_TEST_SUITE_P(BookmarkContract, AFolderIsFoundAgain,
                            OtherBytesGiveAnErrorAndNoAddress);

} // namespace vistrane
