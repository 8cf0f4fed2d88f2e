#include "backends/posix/bookmark.h"

#include <map>
#include <random>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

std::vector<std::uint8_t> bookmarkOf(const char* path) {
    return makeBookmark(NSURL::fileURLWithPath(path)).data;
}

TEST(Bookmark, IsMadeOfAbsoluteFilePathsOnly) {
    for (const NSURL& url :
         {NSURL::fileURLWithPath(""), NSURL::fileURLWithPath("relative"),
          NSURL::fileURLWithPath(std::string("/a\0b", 4)), NSURL::URLWithString("mailto:a")}) {
        const BookmarkDataResult result = makeBookmark(url);
        ASSERT_TRUE(result.error);
        EXPECT_TRUE(result.data.empty());
    }
}

TEST(Bookmark, OfAnotherVersionOrWithADamagedPathIsRefused) {
    const std::vector<std::uint8_t> whole = bookmarkOf("/abc");
    ASSERT_EQ(resolveBookmark(whole).url->path(), "/abc");
    for (const auto& [at, byte] : std::map<std::size_t, std::uint8_t>{{4, 2}, {5, 'x'}, {7, 0}}) {
        std::vector<std::uint8_t> bytes = whole;
        bytes[at] = byte;
        EXPECT_TRUE(resolveBookmark(bytes).error) << at;
    }
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
