#include "core/folder/SortedFrames.h"

#include <algorithm>
#include <random>

#include "backends/sim/Sim.h"
#include "core/folder/frame_list.h"
#include "platform/foundation/NSString.h"
#include "tests/support/RandomListing.h"

#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SortedFramesTest : public ::testing::Test {
protected:
    static FileNames listing(const std::vector<std::string>& list) {
        FileNames names;
        for (const std::string& name : list) {
            names.append(name);
        }
        return names;
    }
    std::shared_ptr<const std::vector<std::string>> update(const std::vector<std::string>& list,
                                                           const std::string& folder = "/f") {
        return frames.update(folder, listing(list), locale);
    }
    /// Enough names that a change of a few is a small one.
    static std::vector<std::string> many() {
        std::vector<std::string> list;
        for (int number = 0; number < 100; ++number) {
            list.push_back(std::to_string(number * 37 % 100) + ".png");
        }
        return list;
    }

    Sim sim;
    std::shared_ptr<const NSLocale> locale = sim.platform().foundation.currentLocale();
    SortedFrames frames;
};

TEST_F(SortedFramesTest, TheFirstListingIsFilteredAndSorted) {
    EXPECT_THAT(*update({"10.png", "2.png", "x.txt", "1.png"}),
                ElementsAre("/f/1.png", "/f/2.png", "/f/10.png"));
}

TEST_F(SortedFramesTest, AnEmptyListingIsAList) {
    ASSERT_TRUE(update({}));
    EXPECT_THAT(*update({}), IsEmpty());
}

TEST_F(SortedFramesTest, TheSameFramesAreTheSameObject) {
    auto list = many();
    const auto first = update(list);
    EXPECT_EQ(update(list), first);
    list.emplace_back("x.txt");
    EXPECT_EQ(update(list), first);
    std::reverse(list.begin(), list.end());
    EXPECT_EQ(update(list), first);
}

TEST_F(SortedFramesTest, AChangeLeavesTheOldListAsItWas) {
    auto list = many();
    const auto first = update(list);
    const auto copy = *first;
    list.emplace_back("100.png");
    EXPECT_EQ(update(list)->size(), 101U);
    EXPECT_EQ(*first, copy);
}

TEST_F(SortedFramesTest, AFewNamesAreNotSortedAnew) {
    auto list = many();
    update(list);
    sim.recordGetters();
    sim.takeCalls();
    list.emplace_back("100.png");
    list[50] = "55.5.png";
    update(list);
    EXPECT_LT(sim.takeCalls().size(), 40U);
    update(list);
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
}

TEST_F(SortedFramesTest, ANameThatIsListedTwiceIsTwoFramesUntilItIsListedOnce) {
    auto list = many();
    update(list);
    list.push_back(list[30]);
    EXPECT_EQ(*update(list), sortedFrames("/f", list, *locale));
    list.push_back(list[30]);
    EXPECT_EQ(*update(list), sortedFrames("/f", list, *locale));
    list.erase(list.begin() + 30);
    EXPECT_EQ(*update(list), sortedFrames("/f", list, *locale));
    list.erase(list.end() - 2, list.end());
    EXPECT_EQ(*update(list), sortedFrames("/f", list, *locale));
}

TEST_F(SortedFramesTest, AnotherFolderWithTheSameNamesHasItsOwnPaths) {
    update(many());
    EXPECT_EQ(*update(many(), "/g"), sortedFrames("/g", many(), *locale));
    EXPECT_EQ(*update(many(), "/f"), sortedFrames("/f", many(), *locale));
}

/// Every text by its bytes, backwards.
class BackwardsLocale final : public NSLocale {
public:
    NSComparisonResult compare(const std::string& first, const std::string& second, std::uint32_t,
                               NSRange) const override {
        if (first == second) {
            return NSOrderedSame;
        }
        return first > second ? NSOrderedAscending : NSOrderedDescending;
    }
    void sort(std::vector<std::string>& texts, std::uint32_t) const override {
        std::sort(texts.begin(), texts.end(), std::greater<>());
    }
};

TEST_F(SortedFramesTest, AnotherLocaleSortsAnew) {
    update(many());
    locale = std::make_shared<BackwardsLocale>();
    EXPECT_EQ(*update(many()), sortedFrames("/f", many(), *locale));
}

TEST_F(SortedFramesTest, AnyChangesGiveWhatSortingAnewGives) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        RandomListing list(seed);
        SortedFrames kept;
        for (int step = 0; step < 300; ++step) {
            list.change();
            const auto paths = kept.update("/f", listing(list.names()), locale);
            ASSERT_EQ(*paths, sortedFrames("/f", list.names(), *locale))
                << "seed " << seed << ", step " << step;
        }
    }
}

} // namespace
} // namespace vistrane
