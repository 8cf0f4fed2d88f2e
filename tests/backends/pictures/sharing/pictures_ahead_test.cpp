#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/pictures/PicturesAhead.h"

namespace vistrane::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

using Names = std::vector<std::string>;

/// What is loaded are names.
struct Loads {
    std::shared_ptr<const void> load(const std::string& path, PicturesAhead::Room& room) {
        std::size_t wanted = 0;
        std::function<void()> action;
        {
            const std::lock_guard lock(mutex);
            loaded.push_back(path);
            wanted = bytes.contains(path) ? bytes[path] : 10;
            action = actions[path];
        }
        if (action) {
            action();
        }
        if (!room.take(wanted)) {
            const std::lock_guard lock(mutex);
            refused.push_back(path);
            return nullptr;
        }
        auto picture = std::make_shared<const std::string>(path);
        const std::lock_guard lock(mutex);
        pictures.push_back(picture);
        return picture;
    }

    Names takeLoaded() {
        const std::lock_guard lock(mutex);
        return std::exchange(loaded, {});
    }
    Names takeRefused() {
        const std::lock_guard lock(mutex);
        return std::exchange(refused, {});
    }
    /// The names of the pictures that are still in memory.
    Names held() {
        const std::lock_guard lock(mutex);
        Names names;
        for (const auto& each : pictures) {
            if (const auto picture = each.lock()) {
                names.push_back(*picture);
            }
        }
        return names;
    }

    std::mutex mutex;
    Names loaded;
    Names refused;
    std::vector<std::weak_ptr<const std::string>> pictures;
    /// 10 where there is no number.
    std::map<std::string, std::size_t> bytes;
    /// Run before the memory is taken.
    std::map<std::string, std::function<void()>> actions;
};

class AheadOfUse : public ::testing::Test {
protected:
    static std::shared_ptr<const Names> list(const std::string& letters) {
        Names names;
        for (const char letter : letters) {
            names.emplace_back(1, letter);
        }
        return std::make_shared<const Names>(names);
    }

    /// At most three pictures and a hundred bytes.
    void make(std::size_t threads) {
        ahead_ = std::make_unique<PicturesAhead>(
            [loads = loads_](const std::string& path, ImageUse, PicturesAhead::Room& room) {
                return loads->load(path, room);
            },
            PicturesAhead::Limits{threads, threads, 3, 3, 100});
    }
    void expect(const std::shared_ptr<const Names>& paths, std::size_t first,
                ImageUse use = ImageUse::View) {
        ahead_->expect(paths, first, use);
        ahead_->waitUntilIdle();
    }

    std::shared_ptr<Loads> loads_ = std::make_shared<Loads>();
    std::unique_ptr<PicturesAhead> ahead_;
};

TEST_F(AheadOfUse, TheNextPicturesAreLoadedInTheirOrder) {
    make(1);
    expect(list("abcdefgh"), 2);
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("c", "d", "e"));
    EXPECT_EQ(ahead_->heldBytes(), 30U);
    expect(list("abcdefgh"), 6);
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("g", "h"));
}

TEST_F(AheadOfUse, ANewHintKeepsWhatItContainsAndDropsTheRestAtOnce) {
    make(2);
    const auto letters = list("abcdefghijk");
    expect(letters, 0);
    loads_->takeLoaded();
    expect(letters, 1);
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("d"));
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("b", "c", "d"));
    expect(letters, 8);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("i", "j", "k"));
    expect(letters, 6);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("g", "h", "i"));
    EXPECT_EQ(ahead_->heldBytes(), 30U);
}

TEST_F(AheadOfUse, AHintThatEndsDropsEverythingOfItsUse) {
    make(2);
    expect(list("abc"), 0);
    expect(list("xyz"), 0, ImageUse::Movie);
    ahead_->expect(nullptr, 0, ImageUse::View);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("x", "y", "z"));
    EXPECT_EQ(ahead_->heldBytes(), 30U);
    ahead_->expect(nullptr, 0, ImageUse::Movie);
    EXPECT_THAT(loads_->held(), IsEmpty());
    EXPECT_EQ(ahead_->heldBytes(), 0U);
}

TEST_F(AheadOfUse, PastTheEndOfTheListNothingIsLoaded) {
    make(2);
    expect(list("abc"), 3);
    expect(list(""), 0);
    expect(list("abc"), static_cast<std::size_t>(-1), ImageUse::Movie);
    EXPECT_THAT(loads_->takeLoaded(), IsEmpty());
}

TEST_F(AheadOfUse, OfAMovieTheFrameInUseIsHeldToo) {
    make(2);
    const auto letters = list("abcdefgh");
    expect(letters, 1, ImageUse::Movie);
    expect(letters, 2, ImageUse::Movie);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("b", "c", "d", "e"));
    expect(letters, 3, ImageUse::Movie);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("c", "d", "e", "f"));
    expect(letters, 8, ImageUse::Movie);
    EXPECT_THAT(loads_->held(), IsEmpty());
}

TEST_F(AheadOfUse, OfAnotherListOnlyWhatStandsInItsPlaceIsKept) {
    make(1);
    expect(list("abc"), 0);
    loads_->takeLoaded();
    expect(list("abcd"), 0);
    EXPECT_THAT(loads_->takeLoaded(), IsEmpty());
    expect(list("axc"), 0);
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("x"));
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("a", "x", "c"));
    expect(list("a"), 0);
    EXPECT_THAT(loads_->held(), ElementsAre("a"));
}

TEST_F(AheadOfUse, NoMoreMemoryIsTakenThanThereIs) {
    make(2);
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        loads_->bytes[name] = 40;
    }
    const auto letters = list("abcde");
    for (std::size_t first = 0; first < 4; ++first) {
        expect(letters, first);
        EXPECT_EQ(loads_->held().size(), 2U) << first;
        EXPECT_EQ(ahead_->heldBytes(), 80U) << first;
    }
    // The uses share the memory.
    expect(letters, 0, ImageUse::Movie);
    EXPECT_EQ(ahead_->heldBytes(), 80U);
    expect(nullptr, 0);
    expect(letters, 0, ImageUse::Movie);
    EXPECT_THAT(loads_->held(), UnorderedElementsAre("a", "b"));
}

TEST_F(AheadOfUse, WhatOneUseHoldsIsNotLoadedForTheOther) {
    make(1);
    const auto letters = list("abcdefgh");
    expect(letters, 0);
    const Names forTheView = loads_->takeLoaded();
    ASSERT_THAT(forTheView, Not(IsEmpty()));
    expect(letters, 0, ImageUse::Movie);
    EXPECT_THAT(loads_->takeLoaded(), IsEmpty());
    // They are free for the other use once they are dropped.
    expect(nullptr, 0);
    EXPECT_THAT(loads_->held(), Contains("a"));
    const Names forTheMovie = loads_->takeLoaded();
    expect(list("abcdefgh"), 0);
    EXPECT_THAT(loads_->takeLoaded(), Not(Contains("a")));
    EXPECT_THAT(forTheMovie, Contains("a"));
}

TEST_F(AheadOfUse, APictureThatIsLargerThanAllTheMemoryIsLeftOut) {
    make(1);
    loads_->bytes["a"] = 101;
    loads_->bytes["c"] = 100;
    const auto letters = list("abcd");
    expect(letters, 0);
    // "c" does not fit beside "b", which is no reason not to try it.
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(loads_->takeRefused(), ElementsAre("a", "c"));
    EXPECT_THAT(loads_->held(), ElementsAre("b"));
    expect(nullptr, 0);
    expect(letters, 2);
    EXPECT_THAT(loads_->held(), ElementsAre("c"));
}

TEST_F(AheadOfUse, WhatFailedIsNotTriedAgain) {
    make(1);
    loads_->actions["a"] = [] { throw std::bad_alloc(); };
    const auto letters = list("ab");
    expect(letters, 0);
    expect(letters, 0);
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("a", "b"));
    EXPECT_THAT(loads_->held(), ElementsAre("b"));
    EXPECT_EQ(ahead_->heldBytes(), 10U);
}

TEST_F(AheadOfUse, APictureThatIsDroppedWhileItLoadsGetsNoMemoryAndIsNotHeld) {
    make(1);
    std::promise<void> begun;
    std::promise<void> goOn;
    loads_->actions["a"] = [&] {
        begun.set_value();
        goOn.get_future().wait();
    };
    ahead_->expect(list("a"), 0, ImageUse::View);
    begun.get_future().wait();
    ahead_->expect(list("b"), 0, ImageUse::View);
    goOn.set_value();
    ahead_->waitUntilIdle();
    EXPECT_THAT(loads_->takeLoaded(), ElementsAre("a", "b"));
    EXPECT_THAT(loads_->takeRefused(), ElementsAre("a"));
    EXPECT_THAT(loads_->held(), ElementsAre("b"));
    EXPECT_EQ(ahead_->heldBytes(), 10U);
}

TEST_F(AheadOfUse, NobodyWaitsForAReadThatHangs) {
    std::promise<void> begun;
    std::promise<void> goOn;
    std::promise<void> ended;
    loads_->actions["a"] = [&] {
        begun.set_value();
        goOn.get_future().wait();
    };
    // Runs when the last thread lets go of what it used.
    std::shared_ptr<void> last(nullptr, [&](void*) { ended.set_value(); });
    auto ahead = std::make_unique<PicturesAhead>(
        [loads = loads_, last](const std::string& path, ImageUse, PicturesAhead::Room& room) {
            return loads->load(path, room);
        },
        PicturesAhead::Limits{2, 2, 3, 3, 100});
    ahead->expect(list("abc"), 0, ImageUse::View);
    begun.get_future().wait();
    ahead->expect(nullptr, 0, ImageUse::View);
    ahead.reset();
    goOn.set_value();
    last.reset();
    ended.get_future().wait();
    EXPECT_THAT(loads_->held(), IsEmpty());
}

TEST_F(AheadOfUse, HintsMayComeFromSeveralThreadsAtAnyMoment) {
    make(3);
    const auto give = [&](ImageUse use) {
        for (std::size_t turn = 0; turn < 2000; ++turn) {
            const std::string letters = "abcdefghijklmnopqrstuvwxyz";
            ahead_->expect(turn % 17 == 0 ? nullptr : list(letters.substr(turn % 5)), turn % 20,
                           use);
            EXPECT_LE(ahead_->heldBytes(), 100U);
        }
        ahead_->expect(nullptr, 0, use);
    };
    auto other = std::async(std::launch::async, give, ImageUse::Movie);
    give(ImageUse::View);
    other.get();
    ahead_->waitUntilIdle();
    EXPECT_THAT(loads_->held(), IsEmpty());
    EXPECT_EQ(ahead_->heldBytes(), 0U);
}

} // namespace
} // namespace vistrane::testing
