#include "platform/FileNames.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

FileNames namesOf(std::initializer_list<std::string_view> list) {
    FileNames names;
    for (const std::string_view name : list) {
        names.append(name);
    }
    return names;
}

TEST(FileNames, AreInitiallyEmpty) {
    const FileNames names;
    EXPECT_THAT(names, IsEmpty());
    EXPECT_EQ(names.size(), 0U);
    EXPECT_TRUE(names.begin() == names.end());
}

TEST(FileNames, KeepTheirOrderAndBytes) {
    const FileNames names = namesOf({"b", "a\n.png", "\xff\xfe", "b"});
    EXPECT_THAT(names, ElementsAre("b", "a\n.png", "\xff\xfe", "b"));
    EXPECT_EQ(names.size(), 4U);
}

TEST(FileNames, AreEqualOnlyWithTheSameNamesInTheSameOrder) {
    EXPECT_TRUE(namesOf({"a", "b"}) == namesOf({"a", "b"}));
    EXPECT_FALSE(namesOf({"a", "b"}) == namesOf({"b", "a"}));
    EXPECT_FALSE(namesOf({"a", "b"}) == namesOf({"ab"}));
    EXPECT_FALSE(namesOf({"a", "b"}) == namesOf({"a"}));
    EXPECT_FALSE(namesOf({"ab", "c"}) == namesOf({"a", "bc"}));
    EXPECT_TRUE(FileNames() == FileNames());
}

TEST(FileNames, MovedAndCopiedNamesAreReadable) {
    for (const std::size_t length : {1U, 1000U}) {
        FileNames first;
        first.append(std::string(length, 'x'));
        const FileNames copy = first;
        const FileNames moved = std::move(first);
        EXPECT_THAT(copy, ElementsAre(std::string(length, 'x')));
        EXPECT_THAT(moved, ElementsAre(std::string(length, 'x')));
    }
}

} // namespace
} // namespace vistrane
