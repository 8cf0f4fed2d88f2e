#include "core/folder/SortedFrames.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "backends/sim/SimFoundation.h"
#include "core/app/Published.h"
#include "core/folder/frame_list.h"
#include "tests/support/RandomListing.h"

#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::ElementsAre;

/// Every text by its bytes, backwards.
class BackwardsLocale final : public NSLocale {
public:
    NSComparisonResult compare(const std::string& first, const std::string& second, std::uint32_t,
                               NSRange) const override {
        return first > second   ? NSOrderedAscending
               : first < second ? NSOrderedDescending
                                : NSOrderedSame;
    }
    void sort(std::vector<std::string>& texts, std::uint32_t) const override {
        std::sort(texts.begin(), texts.end(), std::greater<>());
    }
};

/// The sim's order.
class CountingLocale final : public NSLocale {
public:
    NSComparisonResult compare(const std::string& first, const std::string& second,
                               std::uint32_t options, NSRange range) const override {
        ++comparisons;
        lastOptions = options;
        lastRange = range;
        return order_.compare(first, second, options, range);
    }
    void sort(std::vector<std::string>& texts, std::uint32_t options) const override {
        std::stable_sort(texts.begin(), texts.end(), [&](const auto& a, const auto& b) {
            return compare(a, b, options, {0, a.size()}) == NSOrderedAscending;
        });
    }

    mutable int comparisons = 0;
    mutable std::uint32_t lastOptions = 0;
    mutable NSRange lastRange;

private:
    SimLocale order_;
};

TEST(FrameNameCompare, ComparesTheWholeNameWithTheFourOptions) {
    const CountingLocale locale;
    EXPECT_EQ(frameNameCompare("/f/b.png", "/f/a10.png", locale), NSOrderedDescending);
    EXPECT_EQ(locale.lastOptions, 833U);
    EXPECT_EQ(locale.lastRange.location, 0U);
    EXPECT_EQ(locale.lastRange.length, 8U);
    locale.lastOptions = 0;
    std::vector<std::string> paths = {"/f/b.png", "/f/a10.png"};
    sortFrames(paths, locale);
    EXPECT_EQ(locale.lastOptions, 833U);
    EXPECT_THAT(paths, ElementsAre("/f/a10.png", "/f/b.png"));
}

class SortedFramesTest : public ::testing::Test {
protected:
    static std::shared_ptr<const FileNames> listing(const std::vector<std::string>& list) {
        auto names = std::make_shared<FileNames>();
        for (const std::string& name : list) {
            names->append(name);
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

    std::shared_ptr<const NSLocale> locale = std::make_shared<SimLocale>();
    SortedFrames frames;
};

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
    const auto counting = std::make_shared<CountingLocale>();
    locale = counting;
    auto list = many();
    update(list);
    counting->comparisons = 0;
    list.emplace_back("100.png");
    list[50] = "55.5.png";
    update(list);
    EXPECT_LT(std::exchange(counting->comparisons, 0), 40);
    update(list);
    EXPECT_EQ(counting->comparisons, 0);
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

TEST_F(SortedFramesTest, AnotherLocaleSortsAnew) {
    update(many());
    locale = std::make_shared<BackwardsLocale>();
    EXPECT_EQ(*update(many()), sortedFrames("/f", many(), *locale));
}

TEST_F(SortedFramesTest, AnyChangesGiveWhatTheReferenceImplementationGives) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        RandomListing list(seed);
        SortedFrames kept;
        for (int step = 0; step < 150; ++step) {
            list.change();
            const auto paths = kept.update("/f", listing(list.names()), locale);
            ASSERT_EQ(*paths, sortedFrames("/f", list.names(), *locale))
                << "seed " << seed << ", step " << step;
        }
    }
}

/// A list that nobody uses any more is used for the next one but one.
TEST_F(SortedFramesTest, NoListChangesWhileAnotherThreadReadsIt) {
    constexpr std::size_t first = 200;
    std::vector<std::string> list;
    for (std::size_t number = 0; number < first; ++number) {
        list.push_back(std::to_string(1000 + number) + ".png");
    }
    Published<const SortedFrames::Paths> shared;
    shared.store(update(list));
    std::atomic<bool> isOver{false};
    std::atomic<int> wrong{0};
    std::thread reader([&] {
        while (!isOver) {
            const auto read = shared.load();
            // Each list has the frames 1000, 1001, ... without a gap.
            std::size_t number = 1000;
            for (const std::string& path : *read) {
                wrong += path != "/f/" + std::to_string(number++) + ".png";
            }
        }
    });
    for (std::size_t number = first; number < first + 500; ++number) {
        if (number % 7 == 0) {
            list.resize(list.size() - 2);
        }
        list.push_back(std::to_string(1000 + list.size()) + ".png");
        shared.store(update(list));
    }
    isOver = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(*shared.load(), sortedFrames("/f", list, *locale));
}

} // namespace
} // namespace vistrane
