#include "backends/posix/bookmark.h"

#include <random>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

std::vector<std::uint8_t> bookmarkOf(const char* path) {
    return makeBookmark(NSURL::fileURLWithPath(path)).data;
}

TEST(Bookmark, ComesBackAsTheSamePath) {
    EXPECT_EQ(resolveBookmark(bookmarkOf("/Users/a/Frames")).url->path(), "/Users/a/Frames");
    EXPECT_EQ(resolveBookmark(bookmarkOf("/\xff\xfe/ b")).url->path(), "/\xff\xfe/ b");
}

TEST(Bookmark, IsNotMadeOfWhatIsNoAbsoluteFilePath) {
    for (const NSURL& url :
         {NSURL::fileURLWithPath(""), NSURL::fileURLWithPath("relative"),
          NSURL::fileURLWithPath(std::string("/a\0b", 4)), NSURL::URLWithString("mailto:a")}) {
        const BookmarkDataResult result = makeBookmark(url);
        ASSERT_TRUE(result.error);
        EXPECT_TRUE(result.data.empty());
    }
}

TEST(Bookmark, OfAnotherVersionIsRefused) {
    std::vector<std::uint8_t> bytes = bookmarkOf("/a");
    ++bytes[4];
    EXPECT_TRUE(resolveBookmark(bytes).error);
}

TEST(Bookmark, WithADamagedPathIsRefused) {
    std::vector<std::uint8_t> bytes = bookmarkOf("/abc");
    bytes[5] = 'x';
    EXPECT_TRUE(resolveBookmark(bytes).error);
    bytes = bookmarkOf("/abc");
    bytes[7] = 0;
    EXPECT_TRUE(resolveBookmark(bytes).error);
}

TEST(Bookmark, OfAnyBytesGivesAnAbsolutePathOrAnError) {
    std::mt19937 random(7);
    const std::vector<std::uint8_t> whole = bookmarkOf("/some/folder");
    for (int round = 0; round < 5000; ++round) {
        std::vector<std::uint8_t> bytes(whole.begin(), whole.begin() + random() % whole.size());
        for (auto left = random() % 4; left > 0 && !bytes.empty(); --left) {
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        }
        const BookmarkURLResult result = resolveBookmark(bytes);
        EXPECT_NE(result.url.has_value(), result.error.has_value());
        if (result.url) {
            EXPECT_EQ(result.url->path().front(), '/');
        }
    }
}

} // namespace
} // namespace vistrane
