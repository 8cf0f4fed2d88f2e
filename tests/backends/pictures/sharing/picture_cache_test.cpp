#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "backends/pictures/PictureCache.h"
#include "tests/backends/pictures/sharing/CountedPicture.h"
#include "tests/backends/pictures/sharing/FailingAllocation.h"
#include "tests/support/WorkFolder.h"

namespace vistrane::testing {
namespace {

class PictureCaches : public ::testing::Test {
protected:
    static void put(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }
    /// Both of its times count, of which only one can be set.
    void setTime(std::int64_t seconds) const {
        const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ::utimensat(AT_FDCWD, path_.c_str(), times, 0);
    }
    FileState state() const {
        auto file = OpenFile::at(path_, 1000);
        return std::get<OpenFile>(file).state();
    }

    /// Counts what is loaded, each time another picture.
    std::shared_ptr<const PictureSource> load(const FileState& state) {
        const auto result = cache_.picture(path_, state, [this]() -> PictureSourceResult {
            ++loaded_;
            if (fails_) {
                return NSError{"test", 1, "no picture"};
            }
            return std::make_shared<CountedPicture>();
        });
        const auto* source = std::get_if<std::shared_ptr<const PictureSource>>(&result);
        return source != nullptr ? *source : nullptr;
    }
    std::shared_ptr<const PictureSource> load() { return load(state()); }

    /// What a second user gets who comes while the first one loads. That load ends with `outcome`.
    std::shared_ptr<const PictureSource>
    loadDuring(const std::function<PictureSourceResult()>& outcome) {
        put(path_, "one");
        const FileState same = state();
        std::promise<void> begun;
        std::promise<void> goOn;
        // Holds the first user's picture until the second one has it.
        std::optional<PictureSourceResult> first;
        std::thread loader([&] {
            try {
                first = cache_.picture(path_, same, [&] {
                    begun.set_value();
                    goOn.get_future().wait();
                    return outcome();
                });
            } catch (const std::bad_alloc&) {
                hasThrown_ = true;
            }
        });
        begun.get_future().wait();
        auto second = std::async(std::launch::async, [&] { return load(same); });
        goOn.set_value();
        auto source = second.get();
        loader.join();
        return source;
    }

    const WorkFolder folder_;
    std::string path_ = folder_ / "frame.png";
    PictureCache cache_;
    std::atomic<int> loaded_{0};
    bool fails_ = false;
    bool hasThrown_ = false;
};

TEST_F(PictureCaches, OneStateOfAFileIsLoadedOnceForAllWhoHoldIt) {
    put(path_, "one");
    const auto first = load();
    const auto second = load();
    EXPECT_TRUE(first && second);
    EXPECT_EQ(loaded_, 1);
}

TEST_F(PictureCaches, NothingIsKeptForOneWhoComesLater) {
    put(path_, "one");
    load();
    load();
    EXPECT_EQ(loaded_, 2);
    const auto held = load();
    load();
    EXPECT_EQ(loaded_, 3);
}

TEST_F(PictureCaches, AnotherFileUnderTheSameNameIsLoadedAnew) {
    put(path_, "one");
    setTime(1000);
    const auto first = load();
    const std::string other = folder_ / "other.png";
    put(other, "two");
    ASSERT_EQ(::rename(other.c_str(), path_.c_str()), 0);
    setTime(1000);
    const auto second = load();
    EXPECT_EQ(loaded_, 2);
}

TEST_F(PictureCaches, AFileOfAnotherLengthOrTimeIsLoadedAnew) {
    put(path_, "one");
    setTime(1000);
    const FileState before = state();
    put(path_, "three");
    setTime(1001);
    ASSERT_NE(state().length, before.length);
    ASSERT_EQ(state().changed - before.changed, 1'000'000'000);
    FileState longer = before;
    longer.length = state().length;
    FileState later = before;
    later.changed = state().changed;
    [[maybe_unused]] const auto held = {load(before), load(longer), load(later)};
    EXPECT_EQ(loaded_, 3);
}

/// As copying with the times of the original leaves it.
TEST_F(PictureCaches, AFileThatWasGivenItsOldTimeIsLoadedAnew) {
    put(path_, "one");
    setTime(1000);
    const auto first = load();
    // The time of the last change of anything is the clock's, whose steps may be coarse.
    const FileState before = state();
    while (state().touched == before.touched) {
        put(path_, "two");
        setTime(1000);
    }
    EXPECT_EQ(state().changed, before.changed);
    const auto second = load();
    EXPECT_EQ(loaded_, 2);
}

TEST_F(PictureCaches, AnotherNameIsLoadedByItself) {
    put(path_, "one");
    const FileState same = state();
    const auto first = load(same);
    path_ = folder_ / "link.png";
    const auto second = load(same);
    EXPECT_EQ(loaded_, 2);
}

TEST_F(PictureCaches, AFailureIsNotShared) {
    put(path_, "one");
    fails_ = true;
    EXPECT_FALSE(load());
    EXPECT_FALSE(load());
    EXPECT_EQ(loaded_, 2);
    fails_ = false;
    EXPECT_TRUE(load());
}

TEST_F(PictureCaches, AUserWhoComesDuringALoadSharesItsPicture) {
    EXPECT_TRUE(loadDuring([] { return std::make_shared<CountedPicture>(); }));
    EXPECT_EQ(loaded_, 0);
}

TEST_F(PictureCaches, AUserWhoComesDuringALoadThatFailsOrThrowsLoadsItself) {
    EXPECT_TRUE(loadDuring([] { return NSError{"test", 1, "no picture"}; }));
    EXPECT_EQ(loaded_, 1);
    EXPECT_TRUE(loadDuring([]() -> PictureSourceResult { throw std::bad_alloc(); }));
    EXPECT_TRUE(hasThrown_);
    EXPECT_EQ(loaded_, 2);
}

/// Whichever of its own allocations fails.
TEST_F(PictureCaches, AfterALackOfMemoryTheNextIsLoaded) {
    put(path_, "one");
    const FileState same = state();
    int failures = 0;
    for (bool hasFailed = true; hasFailed; ++failures) {
        {
            const FailingAllocation failing(failures);
            try {
                load(same);
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(failing.hasFailed());
            }
            hasFailed = failing.hasFailed();
        }
        EXPECT_TRUE(load(same)) << failures;
    }
    EXPECT_GT(failures, 3);
}

TEST(FileStates, AFileThatWasChangedAMomentAgoIsNotSettled) {
    const auto now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    constexpr std::int64_t hour = 3'600'000'000'000;
    EXPECT_TRUE((FileState{1, 1, 1, now - hour, now - hour}.isSettled()));
    EXPECT_FALSE((FileState{1, 1, 1, now + hour, now - hour}.isSettled()));
    EXPECT_FALSE((FileState{1, 1, 1, now - hour, now + hour}.isSettled()));
}

} // namespace
} // namespace vistrane::testing
